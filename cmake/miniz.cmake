# miniz reads ZIP archives (and writes them for the publisher). Uses an installed package if there is one, else builds
# the sources that tools/setup has put into PATCHER_MINIZ_DIR.
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
# miniz spends half of its unpacking time on its byte-wise CRC-32 and has no option to replace it. So this renames the
# function in a copy of the source and uses zlib's instead. zlib is linked statically, so that the Windows program
# needs no further library.
find_library(PATCHER_ZLIB NAMES libz.a REQUIRED)
file(READ "${PATCHER_MINIZ_DIR}/miniz.c" source)
set(signature "mz_crc32(mz_ulong crc, const mz_uint8 *ptr, size_t buf_len)\n{")
string(REPLACE "mz_ulong ${signature}" "static mz_ulong bytewise_${signature}" source "${source}")
if(NOT source MATCHES "bytewise_mz_crc32")
  message(FATAL_ERROR "miniz.c is not the expected one: no mz_crc32 to replace")
endif()
file(CONFIGURE OUTPUT "${CMAKE_BINARY_DIR}/miniz/miniz.c" CONTENT "${source}" @ONLY)
add_library(patcher_miniz STATIC "${CMAKE_BINARY_DIR}/miniz/miniz.c" "${CMAKE_SOURCE_DIR}/Patcher/platform/miniz_crc32.c")
target_link_libraries(patcher_miniz PRIVATE "${PATCHER_ZLIB}")
set_source_files_properties("${CMAKE_BINARY_DIR}/miniz/miniz.c" PROPERTIES COMPILE_OPTIONS -Wno-unused-function)
target_include_directories(patcher_miniz SYSTEM PUBLIC "${PATCHER_MINIZ_DIR}")
# MINIZ_NO_TIME: extracted files have the time of their extraction, and miniz does not need the narrow utime().
target_compile_definitions(patcher_miniz PUBLIC MINIZ_NO_TIME PRIVATE _LARGEFILE64_SOURCE=1)
if(WIN32)
  # miniz opens files with narrow names; this header makes them UTF-8.
  target_compile_options(patcher_miniz PRIVATE -include "${CMAKE_SOURCE_DIR}/Patcher/platform/windows/utf8_fopen.h")
endif()
