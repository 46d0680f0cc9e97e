// The Internet checksum, RFC 1071: the complement of the one's complement sum of big-endian 16-bit
// words.

#include "kest/digest.h"

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TInetChecksum, 8, 8);

TInetChecksum::TInetChecksum() {
  KEST_FIELD_AT(TInetChecksum, sum, 0, 0);
  KEST_FIELD_AT(TInetChecksum, odd, 4, 4);
  Reset();
}

// The carries gather in the upper half of sum, which more than 128 KiB can overflow.
void TInetChecksum::Update(const unsigned char* data, int length) {
  if (length < 0) return;
  // The byte is taken with a length of 0 too, on purpose.
  if (odd) {
    sum += *data++;
    --length;
  }
  for (; length > 1; data += 2, length -= 2) sum += data[0] * 256u + data[1];
  odd = length > 0;
  if (odd) sum += data[0] * 256u;
  while (sum > 0xffff) sum = (sum >> 16) + (sum & 0xffff);
}

unsigned short TInetChecksum::GetCurrent() const { return static_cast<unsigned short>(~sum); }

void TInetChecksum::SetCurrent(unsigned short checksum, int length) {
  sum = static_cast<unsigned short>(~checksum);
  odd = length % 2 != 0;
}

unsigned short TInetChecksum::Finish() {
  const unsigned short checksum = GetCurrent();
  Reset();
  return checksum;
}

void TInetChecksum::Reset() {
  sum = 0;
  odd = false;
}

}  // namespace KEST

extern "C" unsigned short KestComputeChecksum(const unsigned char* data, int length) {
  KEST::TInetChecksum checksum;
  checksum.Update(data, length);
  return checksum.Finish();
}
