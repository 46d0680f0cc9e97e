// Which of the named encodings hold a TBstr, and in how many bytes.

#include <limits.h>

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "kest/text.h"
#include "string/encoding_levels.h"

namespace KEST {

namespace {

constexpr unsigned int kLastOfAscii = 0x7F;
constexpr unsigned int kLastOfLatin1 = 0xFF;

constexpr SVersions<unsigned int(const unsigned short*, int)> kBitsOfUnits = {
    BitsOfUnitsPlain, BitsOfUnitsSse2, nullptr, BitsOfUnitsAvx2};
constexpr TDispatch<kBitsOfUnits> BitsOfUnits;

// 0 for more bytes than an int counts.
int IntOf(unsigned int bytes) { return bytes <= INT_MAX ? static_cast<int>(bytes) : 0; }

}  // namespace

int TBstr::GetEncodedByteLength(const unsigned short* encoding) const {
  if (encoding == nullptr || ucsicmp(encoding, kAsciiEncoding) == 0 ||
      ucsicmp(encoding, kLatin1Encoding) == 0) {
    return GetLength();
  }
  if (ucsicmp(encoding, kUtf8Encoding) == 0) return IntOf(KestStringUtf8ByteLen(string));
  if (ucsicmp(encoding, kUnicodeEncoding) == 0) return IntOf(KestStringByteLen(string));
  return 0;
}

TBstr TBstr::GetBestEncoding() const {
  const unsigned int bits = BitsOfUnits(string, GetLength());
  if (bits > kLastOfLatin1) return TBstr(kUtf8Encoding);
  return TBstr(bits > kLastOfAscii ? kLatin1Encoding : kAsciiEncoding);
}

unsigned int BitsOfUnitsPlain(const unsigned short* units, int count) {
  unsigned int bits = 0;
  for (int i = 0; i < count && bits <= kLastOfLatin1; ++i) bits |= units[i];
  return bits;
}

}  // namespace KEST
