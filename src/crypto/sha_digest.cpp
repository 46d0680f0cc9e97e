// SHA-1, FIPS 180-1: section 7 as in its alternate method of section 8, with a schedule of 16
// words.

#include "kest/digest.h"

#include <stddef.h>

#include <utility>

#include "cpu/dispatch.h"
#include "crypto/padding.h"
#include "crypto/sha_levels.h"
#include "crypto/sha_steps.h"
#include "crypto/transforms.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace {

// W(t). From step 16 on it takes the place of W(t - 16).
template <size_t kStep>
[[gnu::always_inline]] inline unsigned int NextWord(unsigned int (&w)[16]) {
  unsigned int& word = w[kStep % 16];
  if constexpr (kStep >= 16) {
    word = KEST::RotateLeft(w[(kStep + 13) % 16] ^ w[(kStep + 8) % 16] ^ w[(kStep + 2) % 16] ^ word,
                            1);
  }
  return word;
}

template <size_t... kEach>
[[gnu::always_inline]] inline void DoSteps(unsigned int (&v)[5], unsigned int (&w)[16],
                                           std::index_sequence<kEach...>) {
  (KEST::ShaStep<kEach>(v, NextWord<kEach>(w) + KEST::kShaConstant[kEach / 20]), ...);
}

void ShaBlocksPlain(unsigned int* state, const unsigned char* blocks, size_t count) {
  for (; count != 0; --count, blocks += 64) {
    unsigned int w[16];
    for (int i = 0; i < 16; ++i) w[i] = KEST::LoadBigEndian(blocks + 4 * i);
    unsigned int v[5] = {state[0], state[1], state[2], state[3], state[4]};
    DoSteps(v, w, std::make_index_sequence<KEST::kShaSteps>());
    for (int i = 0; i < 5; ++i) state[i] += v[i];
  }
}

// Without its own instructions SHA-1 keeps the processor busy with one block.
void ShaPairPlain(unsigned int* state, const unsigned char* block, unsigned int* otherState,
                  const unsigned char* otherBlock) {
  KEST::ShaBlocks(state, block, 1);
  KEST::ShaBlocks(otherState, otherBlock, 1);
}

constexpr KEST::SVersions<KEST::TransformBlocks> kBlocks = {
    ShaBlocksPlain, nullptr, KEST::ShaBlocksSsse3, nullptr, nullptr, KEST::ShaBlocksSha};
constexpr KEST::TDispatch<kBlocks> BestBlocks;
constexpr KEST::SVersions<KEST::TransformPair> kPair = {ShaPairPlain, nullptr, nullptr,
                                                        nullptr,      nullptr, KEST::ShaPairSha};
constexpr KEST::TDispatch<kPair> BestPair;

}  // namespace

namespace KEST {

KEST_SIZE_IS(TShaDigest, 96, 104);

int TShaDigest::Finish(unsigned char* digest, int) {
  unsigned char bits[8];
  SHighFirst::StoreBits(bits, bitCount);
  if (TransformBlocks* const transform = BlocksOf(*this)) {
    PadLastBlock(transform, state, buffer, bitCount[0], bits);
    transform(state, buffer, 1);
  } else {
    Update(kPadding, PaddingLength(bitCount[0]));
    Update(bits, sizeof(bits));
  }
  SHighFirst::StoreWords(digest, state, 5);
  Reset();
  return GetDigestSize();
}

int TShaDigest::GetDigestSize() const { return 20; }

void TShaDigest::Transform(unsigned int* words, const unsigned char* block) {
  ShaBlocks(words, block, 1);
}

void ShaBlocks(unsigned int* state, const unsigned char* blocks, size_t count) {
  BestBlocks(state, blocks, count);
}

void ShaPair(unsigned int* state, const unsigned char* block, unsigned int* otherState,
             const unsigned char* otherBlock) {
  BestPair(state, block, otherState, otherBlock);
}

}  // namespace KEST
