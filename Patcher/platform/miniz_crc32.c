/* CRC-32 for miniz by zlib, which folds many bytes at a time. The two headers claim the same names, hence the
   declaration by hand: it is that of miniz.h. */

#include <stddef.h>
#include <zlib.h>

unsigned long mz_crc32(unsigned long crc, const unsigned char* data, size_t size);

unsigned long mz_crc32(unsigned long crc, const unsigned char* data, size_t size) {
  return crc32_z(crc, data, size);
}
