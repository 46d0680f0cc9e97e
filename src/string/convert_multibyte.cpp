// Text in bytes, one a unit: ISO 8859-1.

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include <algorithm>

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/convert_levels.h"
#include "string/overlap.h"

namespace KEST {

namespace {

// The length that -1 stands for: the text with its terminator.
int WithTerminator(size_t length) {
  return static_cast<int>(std::min<size_t>(length, INT_MAX - 1) + 1);
}

constexpr SVersions<void(const unsigned short*, int, char*)> kNarrow = {
    NarrowPlain, NarrowSse2, nullptr, NarrowAvx2, NarrowAvx512};
constexpr TDispatch<kNarrow> Narrow;

constexpr SVersions<void(const char*, int, unsigned short*)> kWiden = {
    WidenPlain, WidenSse2, nullptr, WidenAvx2, WidenAvx512};
constexpr TDispatch<kWiden> Widen;

bool ShareMemory(const unsigned short* units, const char* bytes, int count) {
  const size_t size = static_cast<size_t>(count);
  return Overlap(units, 2 * size, bytes, size);
}

}  // namespace

void NarrowPlain(const unsigned short* src, int count, char* dest) {
  std::transform(src, src + count, dest, [](unsigned short unit) {
    return unit <= kLastOfBytes ? static_cast<char>(unit) : '?';
  });
}

void WidenPlain(const char* src, int count, unsigned short* dest) {
  std::transform(src, src + count, dest,
                 [](char byte) { return static_cast<unsigned char>(byte); });
}

}  // namespace KEST

extern "C" {

int KestUnicodeToMultibyte(const unsigned short* src, int length, char* dest, int size) {
  if (src == nullptr || dest == nullptr || size <= 0) return 0;
  if (length == -1) length = KEST::WithTerminator(KEST::ucslen(src));
  const int count = std::clamp(length, 0, size);
  if (KEST::ShareMemory(src, dest, count)) {
    KEST::NarrowPlain(src, count, dest);
  } else {
    KEST::Narrow(src, count, dest);
  }
  return count;
}

int KestMultibyteToUnicode(const char* src, int length, unsigned short* dest, int size) {
  if (src == nullptr || dest == nullptr || size <= 0) return 0;
  if (length == -1) length = KEST::WithTerminator(strlen(src));
  const int count = std::clamp(length, 0, size);
  if (KEST::ShareMemory(dest, src, count)) {
    KEST::WidenPlain(src, count, dest);
  } else {
    KEST::Widen(src, count, dest);
  }
  return count;
}

}  // extern "C"
