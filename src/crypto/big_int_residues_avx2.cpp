#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/big_int_words.h"

#define KEST_FOR_KERNEL KEST_FOR_AVX2
#define KEST_KERNELS Residues28Avx2

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

}  // namespace KEST::KEST_KERNELS

#include "crypto/big_int_residues_28.h"

namespace KEST {

const SResidueLevel* ResiduesAvx2() { return &KEST_KERNELS::kLevel; }

}  // namespace KEST
