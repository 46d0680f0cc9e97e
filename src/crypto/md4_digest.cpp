// MD4, RFC 1320 section 3.4.

#include "kest/digest.h"

#include <stddef.h>

#include "crypto/mdx_transform.h"
#include "crypto/transforms.h"
#include "frame/layout.h"

namespace {

// By round: the added constant, the rotations of four steps in turn, the order of the words.
constexpr unsigned int kConstant[3] = {0, 0x5a827999, 0x6ed9eba1};
constexpr int kShift[3][4] = {{3, 7, 11, 19}, {3, 5, 9, 13}, {3, 9, 11, 15}};
constexpr size_t kOrder[3][16] = {
    {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15},
    {0, 4, 8, 12, 1, 5, 9, 13, 2, 6, 10, 14, 3, 7, 11, 15},
    {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15},
};

// sum + F, G or H. What does not need b is added first; G, where two of three bits agree, is made
// of halves that have no bit in common.
template <size_t kRound>
constexpr unsigned int Add(unsigned int sum, unsigned int b, unsigned int c, unsigned int d) {
  if constexpr (kRound == 0) return sum + (d ^ (b & (c ^ d)));
  if constexpr (kRound == 1) return sum + (c & d) + (b & (c ^ d));
  if constexpr (kRound == 2) return sum + (b ^ (c ^ d));
}

struct SMd4 {
  static constexpr size_t kSteps = 48;

  template <size_t kStep>
  static constexpr size_t kWord = kOrder[kStep / 16][kStep % 16];

  template <size_t kStep>
  static constexpr unsigned int Next(unsigned int sum, unsigned int b, unsigned int c,
                                     unsigned int d) {
    constexpr size_t kRound = kStep / 16;
    return KEST::RotateLeft(Add<kRound>(sum + kConstant[kRound], b, c, d),
                            kShift[kRound][kStep % 4]);
  }
};

}  // namespace

namespace KEST {

KEST_SIZE_IS(TMd4Digest, 96, 104);

void TMd4Digest::Transform(unsigned int* words, const unsigned char* block) {
  Md4Blocks(words, block, 1);
}

void Md4Blocks(unsigned int* state, const unsigned char* blocks, size_t count) {
  MdxBlocks<SMd4>(state, blocks, count);
}

void Md4Pair(unsigned int* state, const unsigned char* block, unsigned int* otherState,
             const unsigned char* otherBlock) {
  MdxPair<SMd4>(state, block, otherState, otherBlock);
}

}  // namespace KEST
