// The Internet checksum, RFC 1071: the complement of the one's complement sum of big-endian 16-bit
// words.

#include "kest/digest.h"

#include "cpu/dispatch.h"
#include "crypto/inet_checksum_levels.h"
#include "frame/layout.h"

namespace KEST {

namespace {

constexpr SVersions<unsigned int(const unsigned char*, unsigned int)> kSumOfWords = {
    SumOfWordsPlain, SumOfWordsSse2, nullptr, SumOfWordsAvx2, SumOfWordsAvx512};
constexpr TDispatch<kSumOfWords> SumOfWords;

// To at most 0xffff, which no sum but 0 makes 0.
unsigned int Fold(unsigned int sum) {
  sum = (sum >> 16) + (sum & 0xffff);
  return (sum >> 16) + (sum & 0xffff);
}

// The carries gather in the upper half of sum, which more than 128 KiB can overflow.
inline unsigned int Add(unsigned int sum, const unsigned char* data, int length) {
  sum += SumOfWords(data, static_cast<unsigned int>(length) / 2);
  if (length % 2 != 0) sum += data[length - 1] * 256u;
  return Fold(sum);
}

unsigned short Complement(unsigned int sum) { return static_cast<unsigned short>(~sum); }

}  // namespace

unsigned int SumOfWordsPlain(const unsigned char* data, unsigned int words) {
  unsigned int sum = 0;
  for (; words > 0; data += 2, --words) sum += data[0] * 256u + data[1];
  return sum;
}

KEST_SIZE_IS(TInetChecksum, 8, 8);

TInetChecksum::TInetChecksum() {
  KEST_FIELD_AT(TInetChecksum, sum, 0, 0);
  KEST_FIELD_AT(TInetChecksum, odd, 4, 4);
  Reset();
}

void TInetChecksum::Update(const unsigned char* data, int length) {
  if (length < 0) return;
  // The byte is taken with a length of 0 too, on purpose.
  if (odd) {
    sum += *data++;
    --length;
  }
  odd = length > 0 && length % 2 != 0;
  sum = length > 0 ? Add(sum, data, length) : Fold(sum);
}

unsigned short TInetChecksum::GetCurrent() const { return Complement(sum); }

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
  return KEST::Complement(length > 0 ? KEST::Add(0, data, length) : 0);
}
