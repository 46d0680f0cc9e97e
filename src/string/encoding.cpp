// Which of the named encodings hold a TBstr, and in how many bytes.

#include <limits.h>

#include <algorithm>

#include "kest/string.h"
#include "kest/text.h"

namespace KEST {

namespace {

constexpr unsigned short kLastOfAscii = 0x7F;
constexpr unsigned short kLastOfLatin1 = 0xFF;

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
  const int length = GetLength();
  unsigned short largest = 0;
  for (int i = 0; i < length && largest <= kLastOfLatin1; ++i) {
    largest = std::max(largest, string[i]);
  }
  if (largest > kLastOfLatin1) return TBstr(kUtf8Encoding);
  return TBstr(largest > kLastOfAscii ? kLatin1Encoding : kAsciiEncoding);
}

}  // namespace KEST
