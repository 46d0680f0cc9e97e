// The frame that the compression functions of MD4 and MD5 share: unrolled steps over four words.

#ifndef KEST_SRC_CRYPTO_MDX_TRANSFORM_H
#define KEST_SRC_CRYPTO_MDX_TRANSFORM_H

#include <stddef.h>

#include <utility>

#include "crypto/words.h"

namespace KEST {

// Algorithm::Next<kStep> gives the new a. From one step to the next the letters a, b, c, d move on
// by one word; kSteps is a multiple of 4, so they end where they began.
template <typename Algorithm, size_t kStep>
[[gnu::always_inline]] inline void Step(unsigned int (&v)[4], const unsigned int (&x)[16]) {
  constexpr size_t kTurn = Algorithm::kSteps - kStep;
  unsigned int& a = v[kTurn % 4];
  a = Algorithm::template Next<kStep>(a, v[(kTurn + 1) % 4], v[(kTurn + 2) % 4], v[(kTurn + 3) % 4],
                                      x);
}

template <typename Algorithm, size_t... kEach>
[[gnu::always_inline]] inline void DoSteps(unsigned int (&v)[4], const unsigned int (&x)[16],
                                           std::index_sequence<kEach...>) {
  (Step<Algorithm, kEach>(v, x), ...);
}

// Works one block of 64 bytes into the first four words of state.
template <typename Algorithm>
void TransformBlock(unsigned int* state, const unsigned char* block) {
  unsigned int x[16];
  for (int i = 0; i < 16; ++i) x[i] = LoadLittleEndian(block + 4 * i);
  unsigned int v[4] = {state[0], state[1], state[2], state[3]};
  DoSteps<Algorithm>(v, x, std::make_index_sequence<Algorithm::kSteps>());
  for (int i = 0; i < 4; ++i) state[i] += v[i];
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_MDX_TRANSFORM_H
