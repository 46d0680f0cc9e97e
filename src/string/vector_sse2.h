// Eight units of wide text at a time: what the kernels of this folder are written in.

#ifndef KEST_SRC_STRING_VECTOR_SSE2_H
#define KEST_SRC_STRING_VECTOR_SSE2_H

#include <immintrin.h>

#include "cpu/level.h"

// What the headers of kernels carry and live in.
#define KEST_FOR_KERNEL KEST_FOR_SSE2
#define KEST_KERNELS KernelsSse2

namespace KEST::KEST_KERNELS {

using Vector = __m128i;
// How many bits stand for a unit where each stands for some.
constexpr unsigned int kBitsOfUnit = 2;

KEST_FOR_SSE2 KEST_READS_PAST_END inline Vector Load(const unsigned short* s) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(s));
}

KEST_FOR_SSE2 KEST_READS_PAST_END inline Vector LoadAligned(const unsigned short* s) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(s));
}

KEST_FOR_SSE2 inline void Store(unsigned short* s, Vector v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(s), v);
}

KEST_FOR_SSE2 inline Vector Broadcast(unsigned short unit) {
  return _mm_set1_epi16(static_cast<short>(unit));
}

// 0 where the units are equal.
KEST_FOR_SSE2 inline Vector Differences(Vector a, Vector b) { return _mm_xor_si128(a, b); }

KEST_FOR_SSE2 inline Vector Either(Vector a, Vector b) { return _mm_or_si128(a, b); }

// The units of a that b has too, 0 for the others.
KEST_FOR_SSE2 inline Vector Common(Vector a, Vector b) {
  return _mm_and_si128(a, _mm_cmpeq_epi16(a, b));
}

// 0 where v is 0 or a and b are equal, not 0 elsewhere.
KEST_FOR_SSE2 inline Vector AlsoZero(Vector v, Vector a, Vector b) {
  return _mm_andnot_si128(_mm_cmpeq_epi16(a, b), v);
}

// With the other case for the letters from first on. They become the smallest units that comparison
// with a sign knows.
KEST_FOR_SSE2 inline Vector WithOtherCase(Vector v, unsigned short first) {
  const Vector moved = _mm_sub_epi16(v, Broadcast(static_cast<unsigned short>(first - 0x8000)));
  const Vector letters = _mm_cmplt_epi16(moved, Broadcast(0x8000 + 26));
  return _mm_xor_si128(v, _mm_and_si128(letters, Broadcast(u'a' ^ u'A')));
}

// The smaller unit of each pair.
KEST_FOR_SSE2 inline Vector Least(Vector a, Vector b) {
  return _mm_sub_epi16(a, _mm_subs_epu16(a, b));
}

// The bits of the units that are 0.
KEST_FOR_SSE2 inline unsigned int Zeros(Vector v) {
  return static_cast<unsigned int>(_mm_movemask_epi8(_mm_cmpeq_epi16(v, _mm_setzero_si128())));
}

// Whether any unit of four vectors is 0. Packing with saturation keeps what is 0 and what is not.
KEST_FOR_SSE2 inline bool HasZero(Vector a, Vector b, Vector c, Vector d) {
  const Vector least = _mm_min_epu8(_mm_packs_epi16(a, b), _mm_packs_epi16(c, d));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(least, _mm_setzero_si128())) != 0;
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_VECTOR_SSE2_H
