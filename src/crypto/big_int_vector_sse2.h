// Lanes of 64 bits, two at a time: what the kernels on big integers are written in.

#ifndef KEST_SRC_CRYPTO_BIG_INT_VECTOR_SSE2_H
#define KEST_SRC_CRYPTO_BIG_INT_VECTOR_SSE2_H

#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/big_int_words.h"

// What the headers of kernels carry and live in.
#define KEST_FOR_KERNEL KEST_FOR_SSE2
#define KEST_KERNELS BigIntSse2

namespace KEST::KEST_KERNELS {

using Vector = __m128i;

KEST_FOR_SSE2 inline Vector Zero() { return _mm_setzero_si128(); }
KEST_FOR_SSE2 inline Vector Load(const void* lanes) {
  return _mm_load_si128(static_cast<const Vector*>(lanes));
}
KEST_FOR_SSE2 inline Vector LoadUnaligned(const void* lanes) {
  return _mm_loadu_si128(static_cast<const Vector*>(lanes));
}
KEST_FOR_SSE2 inline void Store(void* lanes, Vector v) {
  _mm_store_si128(static_cast<Vector*>(lanes), v);
}
KEST_FOR_SSE2 inline Vector Add(Vector a, Vector b) { return _mm_add_epi64(a, b); }
KEST_FOR_SSE2 inline Vector And(Vector a, Vector b) { return _mm_and_si128(a, b); }
KEST_FOR_SSE2 inline Vector Or(Vector a, Vector b) { return _mm_or_si128(a, b); }
KEST_FOR_SSE2 inline Vector Multiply(Vector a, Vector b) { return _mm_mul_epu32(a, b); }
KEST_FOR_SSE2 inline Vector Broadcast(Word word) {
  return _mm_set_epi32(0, static_cast<int>(word), 0, static_cast<int>(word));
}

template <int kBits>
KEST_FOR_SSE2 inline Vector ShiftRight(Vector v) {
  return _mm_srli_epi64(v, kBits);
}
template <int kBits>
KEST_FOR_SSE2 inline Vector ShiftLeft(Vector v) {
  return _mm_slli_epi64(v, kBits);
}
template <int kLane>
KEST_FOR_SSE2 inline Vector BroadcastLane(Vector v) {
  return _mm_shuffle_epi32(v, kLane == 0 ? 0x44 : 0xEE);
}
KEST_FOR_SSE2 inline Vector LowestLane(Vector v) { return _mm_move_epi64(v); }

// The lanes one up, the lowest from the top of those before.
KEST_FOR_SSE2 inline Vector MoveUp(Vector v, Vector before) {
  return _mm_castpd_si128(_mm_shuffle_pd(_mm_castsi128_pd(before), _mm_castsi128_pd(v), 1));
}
KEST_FOR_SSE2 inline Vector MoveDownTwo(Vector, Vector next) { return next; }

// The sums of each one's lanes.
KEST_FOR_SSE2 inline void StoreSums(DoubleWord (&sums)[2], Vector a, Vector b) {
  _mm_storeu_si128(reinterpret_cast<Vector*>(sums),
                   _mm_add_epi64(_mm_unpacklo_epi64(a, b), _mm_unpackhi_epi64(a, b)));
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_CRYPTO_BIG_INT_VECTOR_SSE2_H
