// Products of numbers in limbs of 52 bits, a column of the result at a time.

#include <string.h>
#include <algorithm>

#include "crypto/big_int_limbs_avx512.h"
#include "crypto/big_int_words_levels.h"
#include "crypto/wipe.h"

namespace KEST {

namespace {

// What is unpacked at a time: longer numbers are multiplied in blocks.
constexpr int kBlockColumns = 8;
constexpr int kBlockWords = kBlockColumns * kColumnWords;
// Numbers of fewer words are multiplied in words.
constexpr int kFewestWords = 6;

using Limb = unsigned long long;

int CountLimbs(int words) { return (words * kWordBits + kLimbBits - 1) / kLimbBits; }

// Returns where columns of zeros may follow.
KEST_FOR_AVX512 Limb* UnpackAll(Limb* limbs, const Word* words, int count) {
  for (; count > 0; count -= kColumnWords, words += kColumnWords, limbs += kColumnLimbs) {
    _mm512_store_si512(limbs, UnpackColumn(words, count));
  }
  return limbs;
}

// The sum of a's limbs from first to last, each times the limbs of b that end where its own begins.
KEST_FOR_AVX512 inline __m512i AddColumn(const Limb* a, int first, int last, const Limb* b) {
  __m512i low = _mm512_setzero_si512(), high = low;
  __m512i limbs = _mm512_loadu_si512(b - first);
  for (int i = first; i <= last; ++i) {
    const __m512i factor = _mm512_set1_epi64(static_cast<long long>(a[i]));
    low = _mm512_madd52lo_epu64(low, factor, limbs);
    limbs = _mm512_loadu_si512(b - i - 1);
    high = _mm512_madd52hi_epu64(high, factor, limbs);
  }
  return _mm512_add_epi64(low, high);
}

// Two numbers in limbs, neither longer than a block.
class Blocks {
 public:
  Blocks() = default;
  ~Blocks() { Wipe(this, sizeof *this); }
  Blocks(const Blocks&) = delete;
  Blocks& operator=(const Blocks&) = delete;

  // r = a * b.
  KEST_FOR_AVX512 void Multiply(Word* r, const Word* a, int aCount, const Word* b, int bCount) {
    const int aLimbs = CountLimbs(aCount), bLimbs = CountLimbs(bCount);
    const __m512i zero = _mm512_setzero_si512();
    Limb* limbs = bLanes + kColumnLimbs;
    UnpackAll(aLanes, a, aCount);
    _mm512_store_si512(bLanes, zero);
    Limb* end = UnpackAll(limbs, b, bCount);
    _mm512_store_si512(end, zero);
    _mm512_store_si512(end + kColumnLimbs, zero);

    __m512i carried = zero;
    unsigned int carry = 0;
    int column = 0;
    for (int words = aCount + bCount; words > 0; words -= kColumnWords, column += kColumnLimbs) {
      const int first = std::max(column - bLimbs, 0);
      const int last = std::min(column + kColumnLimbs, aLimbs) - 1;
      const __m512i sum = AddColumn(aLanes, first, last, limbs + column);
      PackColumn(r, words, Settle<kLimbBits>(Carry<kLimbBits>(sum, carried), carry));
      r += kColumnWords;
    }
  }

 private:
  alignas(64) Limb aLanes[kBlockColumns * kColumnLimbs];
  // With a column of zeros before it and two after, for limbs that the number has not.
  alignas(64) Limb bLanes[(kBlockColumns + 3) * kColumnLimbs];
};

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN void MultiplyWordsAvx512(Word* r, const Word* a, int aCount,
                                                      const Word* b, int bCount) {
  if (std::min(aCount, bCount) < kFewestWords) return MultiplyWordsPlain(r, a, aCount, b, bCount);
  Blocks blocks;
  if (std::max(aCount, bCount) <= kBlockWords) return blocks.Multiply(r, a, aCount, b, bCount);
  Word product[2 * kBlockWords];
  std::fill_n(r, aCount + bCount, 0u);
  for (int i = 0; i < aCount; i += kBlockWords) {
    const int rows = std::min(aCount - i, kBlockWords);
    for (int j = 0; j < bCount; j += kBlockWords) {
      const int places = std::min(bCount - j, kBlockWords);
      blocks.Multiply(product, a + i, rows, b + j, places);
      AddWordsAt(r + i + j, product, rows + places);
    }
  }
  Wipe(product, sizeof product);
}

}  // namespace KEST
