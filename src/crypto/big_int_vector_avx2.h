// Lanes of 64 bits, four at a time: what the kernels on big integers are written in.

#ifndef KEST_SRC_CRYPTO_BIG_INT_VECTOR_AVX2_H
#define KEST_SRC_CRYPTO_BIG_INT_VECTOR_AVX2_H

#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/big_int_words.h"

// What the headers of kernels carry and live in.
#define KEST_FOR_KERNEL KEST_FOR_AVX2
#define KEST_KERNELS BigIntAvx2

namespace KEST::KEST_KERNELS {

using Vector = __m256i;

KEST_FOR_AVX2 inline Vector Zero() { return _mm256_setzero_si256(); }
KEST_FOR_AVX2 inline Vector Load(const void* lanes) {
  return _mm256_load_si256(static_cast<const Vector*>(lanes));
}
KEST_FOR_AVX2 inline Vector LoadUnaligned(const void* lanes) {
  return _mm256_loadu_si256(static_cast<const Vector*>(lanes));
}
KEST_FOR_AVX2 inline void Store(void* lanes, Vector v) {
  _mm256_store_si256(static_cast<Vector*>(lanes), v);
}
KEST_FOR_AVX2 inline Vector Add(Vector a, Vector b) { return _mm256_add_epi64(a, b); }
KEST_FOR_AVX2 inline Vector And(Vector a, Vector b) { return _mm256_and_si256(a, b); }
KEST_FOR_AVX2 inline Vector Or(Vector a, Vector b) { return _mm256_or_si256(a, b); }
KEST_FOR_AVX2 inline Vector Multiply(Vector a, Vector b) { return _mm256_mul_epu32(a, b); }
KEST_FOR_AVX2 inline Vector Broadcast(Word word) { return _mm256_set1_epi64x(word); }

template <int kBits>
KEST_FOR_AVX2 inline Vector ShiftRight(Vector v) {
  return _mm256_srli_epi64(v, kBits);
}
template <int kBits>
KEST_FOR_AVX2 inline Vector ShiftLeft(Vector v) {
  return _mm256_slli_epi64(v, kBits);
}
template <int kLane>
KEST_FOR_AVX2 inline Vector BroadcastLane(Vector v) {
  return _mm256_permute4x64_epi64(v, kLane * 0x55);
}
KEST_FOR_AVX2 inline Vector LowestLane(Vector v) {
  return _mm256_blend_epi32(_mm256_setzero_si256(), v, 3);
}

// The lanes one up, the lowest from the top of those before.
KEST_FOR_AVX2 inline Vector MoveUp(Vector v, Vector before) {
  return _mm256_alignr_epi8(v, _mm256_permute2x128_si256(before, v, 0x21), 8);
}
KEST_FOR_AVX2 inline Vector MoveDownTwo(Vector v, Vector next) {
  return _mm256_permute2x128_si256(v, next, 0x21);
}

// The sums of each one's lanes.
KEST_FOR_AVX2 inline void StoreSums(DoubleWord (&sums)[2], Vector a, Vector b) {
  const Vector both = _mm256_add_epi64(_mm256_unpacklo_epi64(a, b), _mm256_unpackhi_epi64(a, b));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(sums),
                   _mm_add_epi64(_mm256_castsi256_si128(both), _mm256_extracti128_si256(both, 1)));
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_CRYPTO_BIG_INT_VECTOR_AVX2_H
