// Products of words, a word of the result at a time: the products that it is the sum of lie side by
// side once one number is turned round. Included by the file of each level, which says what a
// vector is.

#ifndef KEST_SRC_CRYPTO_BIG_INT_MULTIPLY_32_H
#define KEST_SRC_CRYPTO_BIG_INT_MULTIPLY_32_H

#include <algorithm>

#include "crypto/big_int_words_levels.h"
#include "crypto/wipe.h"

namespace KEST::KEST_KERNELS {

// What is spread over lanes at a time: longer numbers are multiplied in blocks.
constexpr int kBlockWords = 64;
// Numbers of fewer words are multiplied a word at a time.
constexpr int kFewestWords = 6;
constexpr int kLanes = sizeof(Vector) / sizeof(DoubleWord);

struct SBlocks {
  // Both have zeros where there are no words, which are a vector more on either side.
  alignas(32) DoubleWord a[kBlockWords + kLanes];
  DoubleWord turned[kLanes + kBlockWords + kLanes];
  DoubleWord halves[2 * kBlockWords][2];  // sums of the lower and upper halves of products
};

// r = a * b, neither longer than a block.
KEST_FOR_KERNEL inline void MultiplyBlocks(Word* r, const Word* a, int aCount, const Word* b,
                                           int bCount, SBlocks& blocks) {
  std::fill_n(std::copy_n(a, aCount, blocks.a), kLanes, 0u);
  DoubleWord* turned = blocks.turned + kLanes;
  std::fill_n(blocks.turned, kLanes, 0u);
  std::fill_n(std::reverse_copy(b, b + bCount, turned), kLanes, 0u);

  const Vector lower = Broadcast(~Word{0});
  const int count = aCount + bCount;
  for (int word = 0; word < count; ++word) {
    const int first = std::max(word - bCount + 1, 0) / kLanes * kLanes;
    const int end = std::min(word + 1, aCount);
    Vector low = Zero(), high = low;
    for (int i = first; i < end; i += kLanes) {
      const Vector product =
          Multiply(Load(blocks.a + i), LoadUnaligned(turned + (bCount - 1 - word + i)));
      low = Add(low, And(product, lower));
      high = Add(high, ShiftRight<kWordBits>(product));
    }
    StoreSums(blocks.halves[word], low, high);
  }

  DoubleWord sum = 0;
  for (int word = 0; word < count; ++word) {
    sum += blocks.halves[word][0];
    r[word] = static_cast<Word>(sum);
    sum = (sum >> kWordBits) + blocks.halves[word][1];
  }
}

KEST_FOR_KERNEL inline void MultiplyInBlocks(Word* r, const Word* a, int aCount, const Word* b,
                                             int bCount) {
  if (std::min(aCount, bCount) < kFewestWords) return MultiplyWordsPlain(r, a, aCount, b, bCount);
  SBlocks blocks;
  if (std::max(aCount, bCount) <= kBlockWords) {
    MultiplyBlocks(r, a, aCount, b, bCount, blocks);
  } else {
    Word product[2 * kBlockWords];
    std::fill_n(r, aCount + bCount, 0u);
    for (int i = 0; i < aCount; i += kBlockWords) {
      const int rows = std::min(aCount - i, kBlockWords);
      for (int j = 0; j < bCount; j += kBlockWords) {
        const int places = std::min(bCount - j, kBlockWords);
        MultiplyBlocks(product, a + i, rows, b + j, places, blocks);
        AddWordsAt(r + i + j, product, rows + places);
      }
    }
    Wipe(product, sizeof product);
  }
  Wipe(&blocks, sizeof blocks);
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_CRYPTO_BIG_INT_MULTIPLY_32_H
