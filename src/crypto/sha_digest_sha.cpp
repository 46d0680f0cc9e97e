// SHA-1 with the instructions made for it: each does four steps, or four words of the schedule.

#include <immintrin.h>
#include <stddef.h>

#include <utility>

#include "cpu/level.h"
#include "crypto/sha_levels.h"
#include "crypto/sha_steps.h"

namespace {

// Vectors hold their words from the last down: A, or the first of four words of the schedule, is in
// the top lane.
struct SWork {
  __m128i abcd;
  __m128i before;  // what abcd was four steps ago: its A, rotated, is E; in a block's first steps E
  __m128i w[4];
};

using AllGroups = std::make_index_sequence<KEST::kShaSteps / 4>;

KEST_FOR_SHA inline __m128i TurnWords(__m128i words) { return _mm_shuffle_epi32(words, 0x1b); }

KEST_FOR_SHA inline __m128i TopWord(unsigned int word) {
  return _mm_set_epi32(static_cast<int>(word), 0, 0, 0);
}

// The words are loaded one by one, because a caller that starts a message has just stored them so,
// and a load of all four would have to wait until those stores are done.
[[gnu::always_inline]] KEST_FOR_SHA inline void Begin(SWork& work, const unsigned int* state) {
  __m128i each[4];
  for (int i = 0; i < 4; ++i) each[i] = _mm_cvtsi32_si128(static_cast<int>(state[i]));
  work.abcd = _mm_unpacklo_epi64(_mm_unpacklo_epi32(each[3], each[2]),
                                 _mm_unpacklo_epi32(each[1], each[0]));
  work.before = TopWord(state[4]);
}

[[gnu::always_inline]] KEST_FOR_SHA inline void TakeBlock(SWork& work, const unsigned char* block) {
  const __m128i turned = _mm_set_epi8(0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15);
  const __m128i* const from = reinterpret_cast<const __m128i*>(block);
  for (int i = 0; i < 4; ++i) work.w[i] = _mm_shuffle_epi8(_mm_loadu_si128(from + i), turned);
}

template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SHA inline void DoFourSteps(SWork& work) {
  __m128i(&w)[4] = work.w;
  __m128i& words = w[kGroup % 4];
  if constexpr (kGroup >= 4) {
    const __m128i older =
        _mm_xor_si128(_mm_sha1msg1_epu32(words, w[(kGroup + 1) % 4]), w[(kGroup + 2) % 4]);
    words = _mm_sha1msg2_epu32(older, w[(kGroup + 3) % 4]);
  }
  const __m128i sum =
      kGroup == 0 ? _mm_add_epi32(work.before, words) : _mm_sha1nexte_epu32(work.before, words);
  work.before = work.abcd;
  work.abcd = _mm_sha1rnds4_epu32(work.abcd, sum, kGroup / 5);
}

template <size_t... kEach>
[[gnu::always_inline]] KEST_FOR_SHA inline void DoSteps(SWork& work,
                                                        std::index_sequence<kEach...>) {
  (DoFourSteps<kEach>(work), ...);
}

template <size_t... kEach>
[[gnu::always_inline]] KEST_FOR_SHA inline void DoStepsOfTwo(SWork& work, SWork& other,
                                                             std::index_sequence<kEach...>) {
  ((DoFourSteps<kEach>(work), DoFourSteps<kEach>(other)), ...);
}

// What the block began with waits in state. With a copy in registers there would be one vector too
// many, and the next block would begin with one that comes from the stack.
[[gnu::always_inline]] KEST_FOR_SHA inline void EndBlock(SWork& work, unsigned int* state) {
  __m128i* const first = reinterpret_cast<__m128i*>(state);
  work.abcd = _mm_add_epi32(work.abcd, TurnWords(_mm_loadu_si128(first)));
  work.before = _mm_sha1nexte_epu32(work.before, TopWord(state[4]));
  _mm_storeu_si128(first, TurnWords(work.abcd));
  state[4] = static_cast<unsigned int>(_mm_extract_epi32(work.before, 3));
}

}  // namespace

namespace KEST {

KEST_FOR_SHA KEST_REALIGN void ShaBlocksSha(unsigned int* state, const unsigned char* blocks,
                                            size_t count) {
  SWork work;
  Begin(work, state);
  for (; count != 0; --count, blocks += 64) {
    TakeBlock(work, blocks);
    DoSteps(work, AllGroups());
    EndBlock(work, state);
  }
}

KEST_FOR_SHA KEST_REALIGN void ShaPairSha(unsigned int* state, const unsigned char* block,
                                          unsigned int* otherState,
                                          const unsigned char* otherBlock) {
  SWork work, other;
  Begin(work, state);
  Begin(other, otherState);
  TakeBlock(work, block);
  TakeBlock(other, otherBlock);
  DoStepsOfTwo(work, other, AllGroups());
  EndBlock(work, state);
  EndBlock(other, otherState);
}

}  // namespace KEST
