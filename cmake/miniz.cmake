# miniz reads ZIP archives (and writes them for the publisher). An installed package is preferred;
# otherwise the sources that tools/setup has put into PATCHER_MINIZ_DIR are built here.
find_package(miniz CONFIG QUIET)
if(TARGET miniz::miniz)
  add_library(patcher_miniz INTERFACE)
  target_link_libraries(patcher_miniz INTERFACE miniz::miniz)
  return()
endif()

set(PATCHER_MINIZ_DIR "${CMAKE_SOURCE_DIR}/build/deps/miniz" CACHE PATH "Folder with miniz.c and miniz.h")
if(NOT EXISTS "${PATCHER_MINIZ_DIR}/miniz.c")
  message(FATAL_ERROR "miniz is missing: run tools/setup, or set PATCHER_MINIZ_DIR")
endif()
add_library(patcher_miniz STATIC "${PATCHER_MINIZ_DIR}/miniz.c")
target_include_directories(patcher_miniz SYSTEM PUBLIC "${PATCHER_MINIZ_DIR}")
# MINIZ_NO_TIME: extracted files carry the time of their extraction, and miniz needs no narrow utime().
target_compile_definitions(patcher_miniz PUBLIC MINIZ_NO_TIME PRIVATE _LARGEFILE64_SOURCE=1)
if(WIN32)
  # miniz hands names to the narrow C runtime; the header turns them into UTF-8 names.
  target_compile_options(patcher_miniz PRIVATE -include "${CMAKE_SOURCE_DIR}/Patcher/platform/windows/utf8_fopen.h")
endif()
