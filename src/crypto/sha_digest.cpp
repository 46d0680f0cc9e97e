// SHA-1, FIPS 180-1: section 7 as in its alternate method of section 8, with a schedule of 16
// words.

#include "kest/digest.h"

#include <stddef.h>

#include <utility>

#include "crypto/padding.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace {

constexpr size_t kSteps = 80;

// K(t), one for 20 steps.
constexpr unsigned int kConstant[4] = {0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};

// f(t; B, C, D).
template <size_t kRound>
constexpr unsigned int Mix(unsigned int b, unsigned int c, unsigned int d) {
  if constexpr (kRound == 0) return d ^ (b & (c ^ d));
  if constexpr (kRound == 2) return (b & (c | d)) | (c & d);
  if constexpr (kRound == 1 || kRound == 3) return b ^ c ^ d;
}

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

// From one step to the next the letters A to E move on by one word.
template <size_t kStep>
[[gnu::always_inline]] inline void Step(unsigned int (&v)[5], unsigned int (&w)[16]) {
  constexpr size_t kRound = kStep / 20;
  const unsigned int a = v[(kSteps - kStep) % 5];
  unsigned int& b = v[(kSteps + 1 - kStep) % 5];
  const unsigned int c = v[(kSteps + 2 - kStep) % 5];
  const unsigned int d = v[(kSteps + 3 - kStep) % 5];
  unsigned int& e = v[(kSteps + 4 - kStep) % 5];
  e += NextWord<kStep>(w) + kConstant[kRound] + Mix<kRound>(b, c, d) + KEST::RotateLeft(a, 5);
  b = KEST::RotateLeft(b, 30);
}

template <size_t... kEach>
void DoSteps(unsigned int (&v)[5], unsigned int (&w)[16], std::index_sequence<kEach...>) {
  (Step<kEach>(v, w), ...);
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TShaDigest, 96, 104);

int TShaDigest::Finish(unsigned char* digest, int) {
  unsigned char bits[8];
  StoreBigEndian(bits, bitCount[1]);
  StoreBigEndian(bits + 4, bitCount[0]);
  Update(kPadding, PaddingLength(bitCount[0]));
  Update(bits, sizeof(bits));
  for (int i = 0; i < 5; ++i) StoreBigEndian(digest + 4 * i, state[i]);
  Reset();
  return GetDigestSize();
}

int TShaDigest::GetDigestSize() const { return 20; }

void TShaDigest::Transform(unsigned int* words, const unsigned char* block) {
  unsigned int w[16];
  for (int i = 0; i < 16; ++i) w[i] = LoadBigEndian(block + 4 * i);
  unsigned int v[5] = {words[0], words[1], words[2], words[3], words[4]};
  DoSteps(v, w, std::make_index_sequence<kSteps>());
  for (int i = 0; i < 5; ++i) words[i] += v[i];
}

}  // namespace KEST
