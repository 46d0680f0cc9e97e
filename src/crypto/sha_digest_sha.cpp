// SHA-1 with the instructions made for it: each does four steps, or four words of the schedule.

#include <immintrin.h>
#include <stddef.h>

#include <utility>

#include "cpu/level.h"
#include "crypto/sha_levels.h"

namespace {

constexpr size_t kSteps = 80;

// Vectors hold their words from the last down: A, or the first of four words of the schedule, is in
// the top lane.
KEST_FOR_SHA inline __m128i TurnWords(__m128i words) { return _mm_shuffle_epi32(words, 0x1b); }

KEST_FOR_SHA inline __m128i TopWord(unsigned int word) {
  return _mm_set_epi32(static_cast<int>(word), 0, 0, 0);
}

// Word by word, because a caller that starts a message has just stored them so, and a load of all
// four would have to wait until those stores are done.
KEST_FOR_SHA inline __m128i GatherWords(const unsigned int* words) {
  __m128i each[4];
  for (int i = 0; i < 4; ++i) each[i] = _mm_cvtsi32_si128(static_cast<int>(words[i]));
  return _mm_unpacklo_epi64(_mm_unpacklo_epi32(each[3], each[2]),
                            _mm_unpacklo_epi32(each[1], each[0]));
}

KEST_FOR_SHA inline __m128i LoadWords(const unsigned char* bytes) {
  const __m128i words = _mm_loadu_si128(reinterpret_cast<const __m128i*>(bytes));
  return _mm_shuffle_epi8(words,
                          _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15));
}

// Four steps. before is what abcd was four steps ago; its A, rotated, is the E of these.
template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SHA inline void DoFourSteps(__m128i& abcd, __m128i& before,
                                                            __m128i (&w)[4]) {
  __m128i& words = w[kGroup % 4];
  if constexpr (kGroup >= 4) {
    const __m128i older =
        _mm_xor_si128(_mm_sha1msg1_epu32(words, w[(kGroup + 1) % 4]), w[(kGroup + 2) % 4]);
    words = _mm_sha1msg2_epu32(older, w[(kGroup + 3) % 4]);
  }
  // The first four get E itself.
  const __m128i sum =
      kGroup == 0 ? _mm_add_epi32(before, words) : _mm_sha1nexte_epu32(before, words);
  before = abcd;
  abcd = _mm_sha1rnds4_epu32(abcd, sum, kGroup / 5);
}

template <size_t... kEach>
[[gnu::always_inline]] KEST_FOR_SHA inline void DoSteps(__m128i& abcd, __m128i& before,
                                                        __m128i (&w)[4],
                                                        std::index_sequence<kEach...>) {
  (DoFourSteps<kEach>(abcd, before, w), ...);
}

}  // namespace

namespace KEST {

KEST_FOR_SHA KEST_REALIGN void ShaBlocksSha(unsigned int* state, const unsigned char* blocks,
                                            size_t count) {
  __m128i* const first = reinterpret_cast<__m128i*>(state);
  __m128i abcd = GatherWords(state);
  __m128i e = TopWord(state[4]);
  for (; count != 0; --count, blocks += 64) {
    __m128i w[4];
    for (int i = 0; i < 4; ++i) w[i] = LoadWords(blocks + 16 * i);
    DoSteps(abcd, e, w, std::make_index_sequence<kSteps / 4>());
    // What the block began with waits in state: with a copy in registers there would be one vector
    // too many, and the next block would begin with one that comes from the stack.
    abcd = _mm_add_epi32(abcd, TurnWords(_mm_loadu_si128(first)));
    e = _mm_sha1nexte_epu32(e, TopWord(state[4]));
    _mm_storeu_si128(first, TurnWords(abcd));
    state[4] = static_cast<unsigned int>(_mm_extract_epi32(e, 3));
  }
}

}  // namespace KEST
