// The steps of SHA-1, FIPS 180-1, section 7, for the versions that do them one by one.

#ifndef KEST_SRC_CRYPTO_SHA_STEPS_H
#define KEST_SRC_CRYPTO_SHA_STEPS_H

#include <stddef.h>

#include "crypto/words.h"

namespace KEST {

constexpr size_t kShaSteps = 80;

// K(t), one for 20 steps.
constexpr unsigned int kShaConstant[4] = {0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};

// f(t; B, C, D). Where two of three bits decide, it is made of halves that have no bit in common.
template <size_t kRound>
constexpr unsigned int ShaMix(unsigned int b, unsigned int c, unsigned int d) {
  if constexpr (kRound == 0) return d ^ (b & (c ^ d));
  if constexpr (kRound == 2) return (c & d) + (b & (c ^ d));
  if constexpr (kRound == 1 || kRound == 3) return b ^ (c ^ d);
}

// word is W(t) + K(t). From one step to the next the letters A to E move on by one word of v; after
// the last they are back where they began.
template <size_t kStep>
[[gnu::always_inline]] inline void ShaStep(unsigned int (&v)[5], unsigned int word) {
  const unsigned int a = v[(kShaSteps - kStep) % 5];
  unsigned int& b = v[(kShaSteps + 1 - kStep) % 5];
  const unsigned int c = v[(kShaSteps + 2 - kStep) % 5];
  const unsigned int d = v[(kShaSteps + 3 - kStep) % 5];
  unsigned int& e = v[(kShaSteps + 4 - kStep) % 5];
  e += word + ShaMix<kStep / 20>(b, c, d) + RotateLeft(a, 5);
  b = RotateLeft(b, 30);
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_SHA_STEPS_H
