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

// The smaller unit of each pair.
KEST_FOR_AVX512 inline Vector Least(Vector a, Vector b) { return _mm512_min_epu16(a, b); }

// The bits of the units that are 0.
KEST_FOR_AVX512 inline unsigned int Zeros(Vector v) { return _mm512_testn_epi16_mask(v, v); }

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_VECTOR_AVX512_H
