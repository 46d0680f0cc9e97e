#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/big_int_words.h"

#define KEST_FOR_KERNEL KEST_FOR_SSE2
#define KEST_KERNELS Residues28Sse2

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

}  // namespace KEST::KEST_KERNELS

#include "crypto/big_int_residues_28.h"

namespace KEST {

const SResidueLevel* ResiduesSse2() { return &KEST_KERNELS::kLevel; }

}  // namespace KEST
