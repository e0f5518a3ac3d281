/* CRC-32 for miniz by zlib, which folds many bytes at a time. miniz.h and zlib.h define the same names, so
   the function is declared here, as in miniz.h. */

#include <stddef.h>
#include <zlib.h>

unsigned long mz_crc32(unsigned long crc, const unsigned char* data, size_t size);

unsigned long mz_crc32(unsigned long crc, const unsigned char* data, size_t size) {
  return crc32_z(crc, data, size);
}
