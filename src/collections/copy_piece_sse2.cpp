// As many vectors from the start as from the end; they overlap unless the count is what they hold.

#include <immintrin.h>

#include "collections/copy_piece.h"
#include "cpu/level.h"

namespace KEST {

namespace {

constexpr size_t kVector = sizeof(__m128i);
static_assert(kMinPiece == kVector && kMaxPiece == 4 * kVector, "one or two from each end");

KEST_FOR_SSE2 inline __m128i Load(const unsigned char* from) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(from));
}

KEST_FOR_SSE2 inline void Store(unsigned char* to, __m128i bytes) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(to), bytes);
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN void CopyPieceSse2(unsigned char* dest, const unsigned char* source,
                                              size_t count) {
  const unsigned char* sourceEnd = source + count;
  unsigned char* destEnd = dest + count;
  const __m128i first = Load(source);
  const __m128i last = Load(sourceEnd - kVector);
  if (count > 2 * kVector) {
    const __m128i second = Load(source + kVector);
    const __m128i lastButOne = Load(sourceEnd - 2 * kVector);
    Store(dest + kVector, second);
    Store(destEnd - 2 * kVector, lastButOne);
  }
  Store(dest, first);
  Store(destEnd - kVector, last);
}

}  // namespace KEST
