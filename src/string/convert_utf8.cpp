// UTF-8 to and from 16-bit units; convert_utf8_plain.cpp has the rules.

#include <limits.h>
#include <stdint.h>

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr SVersions<int(const unsigned short*, int, char*, int)> kEncode = {
    EncodeUtf8Plain, EncodeUtf8Sse2, nullptr, nullptr, EncodeUtf8Avx512};
constexpr TDispatch<kEncode> EncodeBest;

constexpr SVersions<int(const char*, int, unsigned short*, int)> kDecode = {
    DecodeUtf8Plain, DecodeUtf8Sse2, nullptr, nullptr, DecodeUtf8Avx512};
constexpr TDispatch<kDecode> DecodeBest;

constexpr SVersions<uint64_t(const unsigned short*)> kLength = {Utf8LengthPlain, nullptr, nullptr,
                                                                Utf8LengthAvx2, Utf8LengthAvx512};
constexpr TDispatch<kLength> LengthBest;

}  // namespace

}  // namespace KEST

extern "C" {

unsigned int KestStringUtf8ByteLen(const unsigned short* s) {
  if (s == nullptr) return 0;
  const uint64_t bytes = KEST::LengthBest(s);
  return bytes <= UINT_MAX ? static_cast<unsigned int>(bytes) : 0;
}

int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size) {
  if (src == nullptr || dest == nullptr || length <= 0 || size <= 0) return 0;
  return KEST::EncodeBest(src, length, dest, size);
}

int KestUtf8ToString(const char* src, int length, unsigned short* dest, int size) {
  if (src == nullptr || dest == nullptr || length <= 0 || size <= 0) return 0;
  return KEST::DecodeBest(src, length, dest, size);
}

}  // extern "C"
