// Text in bytes, one a unit: ISO 8859-1.

#include <limits.h>
#include <string.h>

#include <algorithm>

#include "kest/string.h"

namespace {

// The length that -1 stands for: the text with its terminator.
int WithTerminator(size_t length) {
  return static_cast<int>(std::min<size_t>(length, INT_MAX - 1) + 1);
}

}  // namespace

extern "C" {

int KestUnicodeToMultibyte(const unsigned short* src, int length, char* dest, int size) {
  if (src == nullptr || dest == nullptr || size <= 0) return 0;
  if (length == -1) length = WithTerminator(KEST::ucslen(src));
  const int count = std::clamp(length, 0, size);
  std::transform(src, src + count, dest,
                 [](unsigned short unit) { return unit < 256 ? static_cast<char>(unit) : '?'; });
  return count;
}

int KestMultibyteToUnicode(const char* src, int length, unsigned short* dest, int size) {
  if (src == nullptr || dest == nullptr || size <= 0) return 0;
  if (length == -1) length = WithTerminator(strlen(src));
  const int count = std::clamp(length, 0, size);
  std::transform(src, src + count, dest,
                 [](char byte) { return static_cast<unsigned char>(byte); });
  return count;
}

}  // extern "C"
