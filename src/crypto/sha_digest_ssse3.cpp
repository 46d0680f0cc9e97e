// SHA-1 with a schedule of four words at a time, ahead of the steps that take them. Processors of a
// higher level mostly have the SHA instructions too, so that this is the last version without them.

#include <immintrin.h>
#include <stddef.h>

#include <utility>

#include "cpu/level.h"
#include "crypto/sha_levels.h"
#include "crypto/sha_steps.h"

namespace {

// Groups of four steps.
constexpr size_t kGroups = KEST::kShaSteps / 4;

struct SSchedule {
  __m128i words[8];                   // of the last eight groups
  alignas(16) unsigned int sums[16];  // words and K(t), of the next four groups
};

template <int kCount>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline __m128i Rotate(__m128i words) {
  return _mm_or_si128(_mm_slli_epi32(words, kCount), _mm_srli_epi32(words, 32 - kCount));
}

template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline void Enter(SSchedule& schedule, __m128i words) {
  const __m128i constant = _mm_set1_epi32(static_cast<int>(KEST::kShaConstant[kGroup / 5]));
  schedule.words[kGroup % 8] = words;
  _mm_store_si128(reinterpret_cast<__m128i*>(schedule.sums + kGroup % 4 * 4),
                  _mm_add_epi32(words, constant));
}

template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline void EnterBlock(SSchedule& schedule,
                                                             const unsigned char* block) {
  const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(block + 16 * kGroup));
  const __m128i turned = _mm_set_epi8(12, 13, 14, 15, 8, 9, 10, 11, 4, 5, 6, 7, 0, 1, 2, 3);
  Enter<kGroup>(schedule, _mm_shuffle_epi8(bytes, turned));
}

// W(t) = rol(W(t-3) ^ W(t-8) ^ W(t-14) ^ W(t-16), 1), from step 16 on.
template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline __m128i NearWords(const __m128i (&w)[8]) {
  const __m128i ago3 = _mm_srli_si128(w[(kGroup + 7) % 8], 4);  // lacks the one made here
  const __m128i ago8 = w[(kGroup + 6) % 8];
  const __m128i ago14 = _mm_alignr_epi8(w[(kGroup + 5) % 8], w[(kGroup + 4) % 8], 8);
  const __m128i ago16 = w[(kGroup + 4) % 8];
  const __m128i mixed = _mm_xor_si128(_mm_xor_si128(ago8, _mm_xor_si128(ago14, ago16)), ago3);
  // The last of the four is three steps after the first, whose bits reach it rotated once more.
  return _mm_xor_si128(Rotate<1>(mixed), Rotate<2>(_mm_slli_si128(mixed, 12)));
}

// The same put into itself, W(t) = rol(W(t-6) ^ W(t-16) ^ W(t-28) ^ W(t-32), 2), from step 32 on:
// none of the four needs another.
template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline __m128i FarWords(const __m128i (&w)[8]) {
  const __m128i ago6 = _mm_alignr_epi8(w[(kGroup + 7) % 8], w[(kGroup + 6) % 8], 8);
  const __m128i ago16 = w[(kGroup + 4) % 8];
  const __m128i ago28 = w[(kGroup + 1) % 8];
  const __m128i ago32 = w[kGroup % 8];
  // The newest words come last, because the chain goes through them.
  return Rotate<2>(_mm_xor_si128(_mm_xor_si128(_mm_xor_si128(ago28, ago32), ago16), ago6));
}

template <size_t kGroup>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline void DoGroup(unsigned int (&v)[5],
                                                          SSchedule& schedule) {
  const unsigned int* const sums = schedule.sums + kGroup % 4 * 4;
  KEST::ShaStep<4 * kGroup>(v, sums[0]);
  KEST::ShaStep<4 * kGroup + 1>(v, sums[1]);
  KEST::ShaStep<4 * kGroup + 2>(v, sums[2]);
  KEST::ShaStep<4 * kGroup + 3>(v, sums[3]);
  constexpr size_t kAhead = kGroup + 4;
  if constexpr (kAhead < 8) {
    Enter<kAhead>(schedule, NearWords<kAhead>(schedule.words));
  } else if constexpr (kAhead < kGroups) {
    Enter<kAhead>(schedule, FarWords<kAhead>(schedule.words));
  }
}

template <size_t... kEach>
[[gnu::always_inline]] KEST_FOR_SSSE3 inline void DoGroups(unsigned int (&v)[5],
                                                           SSchedule& schedule,
                                                           std::index_sequence<kEach...>) {
  (DoGroup<kEach>(v, schedule), ...);
}

}  // namespace

namespace KEST {

KEST_FOR_SSSE3 KEST_REALIGN void ShaBlocksSsse3(unsigned int* state, const unsigned char* blocks,
                                                size_t count) {
  for (; count != 0; --count, blocks += 64) {
    SSchedule schedule;
    EnterBlock<0>(schedule, blocks);
    EnterBlock<1>(schedule, blocks);
    EnterBlock<2>(schedule, blocks);
    EnterBlock<3>(schedule, blocks);
    unsigned int v[5] = {state[0], state[1], state[2], state[3], state[4]};
    DoGroups(v, schedule, std::make_index_sequence<kGroups>());
    for (int i = 0; i < 5; ++i) state[i] += v[i];
  }
}

}  // namespace KEST
