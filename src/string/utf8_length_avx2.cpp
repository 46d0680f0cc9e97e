// The size of UTF-8, in aligned vectors of 16 units.

#include <immintrin.h>
#include <stdint.h>

#include "cpu/level.h"
#include "string/convert_levels.h"

namespace KEST {

namespace {

constexpr unsigned int kBlock = 16;
constexpr uintptr_t kVectorBytes = 32;

// What is known of a vector's units, two bits each.
struct SUnits {
  unsigned int zero, oneByte, upToTwo;

  KEST_FOR_AVX2 explicit SUnits(__m256i units)
      : zero(EqualToZero(units)),
        oneByte(UpTo(kLastOfOneByte, units)),
        upToTwo(UpTo(kLastOfTwoBytes, units)) {}

  // The bytes of the units in mask, of which there are count.
  KEST_FOR_AVX2 unsigned int Bytes(unsigned int mask, unsigned int count) const {
    const int less = _mm_popcnt_u32(oneByte & mask) + _mm_popcnt_u32(upToTwo & mask);
    return 3 * count - static_cast<unsigned int>(less) / 2;
  }

 private:
  KEST_FOR_AVX2 static unsigned int EqualToZero(__m256i units) {
    return static_cast<unsigned int>(
        _mm256_movemask_epi8(_mm256_cmpeq_epi16(units, _mm256_setzero_si256())));
  }
  KEST_FOR_AVX2 static unsigned int UpTo(unsigned int last, __m256i units) {
    return EqualToZero(_mm256_subs_epu16(units, _mm256_set1_epi16(static_cast<short>(last))));
  }
};

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN KEST_READS_PAST_END uint64_t Utf8LengthAvx2(const unsigned short* s) {
  const uintptr_t before = reinterpret_cast<uintptr_t>(s) % kVectorBytes;
  if (before % 2 != 0) return Utf8LengthPlain(s);
  const auto* vector = reinterpret_cast<const __m256i*>(reinterpret_cast<uintptr_t>(s) - before);
  unsigned int mask = ~0u << before;
  unsigned int count = kBlock - static_cast<unsigned int>(before) / 2;
  uint64_t bytes = 0;
  for (;; ++vector) {
    const SUnits units(_mm256_load_si256(vector));
    const unsigned int end = units.zero & mask;
    if (end != 0) {
      mask &= _blsmsk_u32(end) >> 1;
      return bytes + units.Bytes(mask, static_cast<unsigned int>(_mm_popcnt_u32(mask)) / 2);
    }
    bytes += units.Bytes(mask, count);
    mask = ~0u;
    count = kBlock;
  }
}

}  // namespace KEST
