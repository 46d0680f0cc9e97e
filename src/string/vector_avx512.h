// Thirty-two units of wide text at a time: what the kernels of this folder are written in.

#ifndef KEST_SRC_STRING_VECTOR_AVX512_H
#define KEST_SRC_STRING_VECTOR_AVX512_H

#include <immintrin.h>

#include "cpu/level.h"

// What the headers of kernels carry and live in.
#define KEST_FOR_KERNEL KEST_FOR_AVX512
#define KEST_KERNELS KernelsAvx512

namespace KEST::KEST_KERNELS {

using Vector = __m512i;
// How many bits stand for a unit where each stands for some.
constexpr unsigned int kBitsOfUnit = 1;

KEST_FOR_AVX512 KEST_READS_PAST_END inline Vector Load(const unsigned short* s) {
  return _mm512_loadu_si512(s);
}

KEST_FOR_AVX512 KEST_READS_PAST_END inline Vector LoadAligned(const unsigned short* s) {
  return _mm512_load_si512(s);
}

KEST_FOR_AVX512 inline void Store(unsigned short* s, Vector v) { _mm512_storeu_si512(s, v); }

KEST_FOR_AVX512 inline Vector Broadcast(unsigned short unit) {
  return _mm512_set1_epi16(static_cast<short>(unit));
}

// 0 where the units are equal.
KEST_FOR_AVX512 inline Vector Differences(Vector a, Vector b) { return _mm512_xor_si512(a, b); }

KEST_FOR_AVX512 inline Vector Either(Vector a, Vector b) { return _mm512_or_si512(a, b); }

// The units of a that b has too, 0 for the others.
KEST_FOR_AVX512 inline Vector Common(Vector a, Vector b) {
  return _mm512_maskz_mov_epi16(_mm512_cmpeq_epi16_mask(a, b), a);
}

// 0 where v is 0 or a and b are equal, not 0 elsewhere.
KEST_FOR_AVX512 inline Vector AlsoZero(Vector v, Vector a, Vector b) {
  return _mm512_min_epu16(v, _mm512_xor_si512(a, b));
}

// With the other case for the letters from first on.
KEST_FOR_AVX512 inline Vector WithOtherCase(Vector v, unsigned short first) {
  const __mmask32 letters =
      _mm512_cmplt_epu16_mask(_mm512_sub_epi16(v, Broadcast(first)), Broadcast(26));
  return _mm512_xor_si512(v, _mm512_maskz_mov_epi16(letters, Broadcast(u'a' ^ u'A')));
}

// The smaller unit of each pair.
KEST_FOR_AVX512 inline Vector Least(Vector a, Vector b) { return _mm512_min_epu16(a, b); }

// The bits of the units that are 0.
KEST_FOR_AVX512 inline unsigned int Zeros(Vector v) { return _mm512_testn_epi16_mask(v, v); }

// Whether any unit of four vectors is 0.
KEST_FOR_AVX512 inline bool HasZero(Vector a, Vector b, Vector c, Vector d) {
  return Zeros(Least(Least(a, b), Least(c, d))) != 0;
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_VECTOR_AVX512_H
