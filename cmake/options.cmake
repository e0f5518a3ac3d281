option(PATCHER_WARNINGS_AS_ERRORS "Warnings of the compiler are errors (the presets set this)" OFF)

# Compiler options for all targets of this project: link `project_options`.
add_library(project_options INTERFACE)
target_compile_features(project_options INTERFACE cxx_std_20)
target_compile_options(project_options INTERFACE
  $<$<COMPILE_LANGUAGE:CXX>:-Wall;-Wextra;-Wpedantic;-Wshadow;-Wconversion;-Wnon-virtual-dtor;-Woverloaded-virtual>
  # Checks the annotations of platform/mutex.h.
  $<$<COMPILE_LANG_AND_ID:CXX,Clang>:-Wthread-safety>
  $<$<AND:$<COMPILE_LANGUAGE:CXX>,$<BOOL:${PATCHER_WARNINGS_AS_ERRORS}>>:-Werror>
  # g++ 12 warns about overlapping copies in its own std::string at -O3.
  $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-restrict>)

set(PATCHER_SANITIZE "" CACHE STRING "Sanitizers, as in -fsanitize=LIST; empty for none")
if(PATCHER_SANITIZE)
  add_compile_options(-fsanitize=${PATCHER_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${PATCHER_SANITIZE})
  # With sanitizers, g++ 12 warns about uninitialized members in its standard library.
  target_compile_options(project_options INTERFACE $<$<COMPILE_LANG_AND_ID:CXX,GNU>:-Wno-maybe-uninitialized>)
endif()

if(WIN32)
  # Windows 10 is the oldest system with the web view. The program uses the system's UTF-16 functions.
  target_compile_definitions(project_options INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN WINVER=0x0A00 _WIN32_WINNT=0x0A00 __USE_MINGW_ANSI_STDIO=1)
  # Large addresses, ASLR, DEP; Windows Vista and later. No symbols, because the built program is published unchanged.
  target_link_options(project_options INTERFACE -static
    LINKER:--large-address-aware,--dynamicbase,--nxcompat
    LINKER:--major-os-version=6,--minor-os-version=0,--major-subsystem-version=6,--minor-subsystem-version=0
    $<$<CONFIG:Release>:-s>)
else()
  # Position-independent programs with read-only relocation tables.
  add_compile_options(-fstack-protector-strong $<$<NOT:$<STREQUAL:$<TARGET_PROPERTY:TYPE>,MODULE_LIBRARY>>:-fPIE>)
  add_link_options($<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-pie> LINKER:-z,relro,-z,now)
  if(PATCHER_SANITIZE)
    add_compile_definitions(_GLIBCXX_ASSERTIONS)
  else()
    # Buffer checks of the library need optimized code.
    add_compile_options($<$<CONFIG:Release,RelWithDebInfo,MinSizeRel>:-U_FORTIFY_SOURCE$<SEMICOLON>-D_FORTIFY_SOURCE=2>)
  endif()
endif()
