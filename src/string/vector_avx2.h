// Sixteen units of wide text at a time: what the kernels of this folder are written in.

#ifndef KEST_SRC_STRING_VECTOR_AVX2_H
#define KEST_SRC_STRING_VECTOR_AVX2_H

#include <immintrin.h>

#include "cpu/level.h"

// What the headers of kernels carry and live in.
#define KEST_FOR_KERNEL KEST_FOR_AVX2
#define KEST_KERNELS KernelsAvx2

namespace KEST::KEST_KERNELS {

using Vector = __m256i;
// How many bits stand for a unit where each stands for some.
constexpr unsigned int kBitsOfUnit = 2;

KEST_FOR_AVX2 KEST_READS_PAST_END inline Vector Load(const unsigned short* s) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(s));
}

KEST_FOR_AVX2 KEST_READS_PAST_END inline Vector LoadAligned(const unsigned short* s) {
  return _mm256_load_si256(reinterpret_cast<const __m256i*>(s));
}

KEST_FOR_AVX2 inline void Store(unsigned short* s, Vector v) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(s), v);
}

KEST_FOR_AVX2 inline Vector Broadcast(unsigned short unit) {
  return _mm256_set1_epi16(static_cast<short>(unit));
}

// 0 where the units are equal.
KEST_FOR_AVX2 inline Vector Differences(Vector a, Vector b) { return _mm256_xor_si256(a, b); }

KEST_FOR_AVX2 inline Vector Either(Vector a, Vector b) { return _mm256_or_si256(a, b); }

// The units of a that b has too, 0 for the others.
KEST_FOR_AVX2 inline Vector Common(Vector a, Vector b) {
  return _mm256_and_si256(a, _mm256_cmpeq_epi16(a, b));
}

// 0 where v is 0 or a and b are equal, not 0 elsewhere.
KEST_FOR_AVX2 inline Vector AlsoZero(Vector v, Vector a, Vector b) {
  return _mm256_andnot_si256(_mm256_cmpeq_epi16(a, b), v);
}

// With the other case for the letters from first on. They become the smallest units that comparison
// with a sign knows.
KEST_FOR_AVX2 inline Vector WithOtherCase(Vector v, unsigned short first) {
  const Vector moved = _mm256_sub_epi16(v, Broadcast(static_cast<unsigned short>(first - 0x8000)));
  const Vector letters = _mm256_cmpgt_epi16(Broadcast(0x8000 + 26), moved);
  return _mm256_xor_si256(v, _mm256_and_si256(letters, Broadcast(u'a' ^ u'A')));
}

// The smaller unit of each pair.
KEST_FOR_AVX2 inline Vector Least(Vector a, Vector b) { return _mm256_min_epu16(a, b); }

// The bits of the units that are 0.
KEST_FOR_AVX2 inline unsigned int Zeros(Vector v) {
  return static_cast<unsigned int>(
      _mm256_movemask_epi8(_mm256_cmpeq_epi16(v, _mm256_setzero_si256())));
}

// Whether any unit of four vectors is 0.
KEST_FOR_AVX2 inline bool HasZero(Vector a, Vector b, Vector c, Vector d) {
  return Zeros(Least(Least(a, b), Least(c, d))) != 0;
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_VECTOR_AVX2_H
