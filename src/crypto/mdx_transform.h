// The frame that the compression functions of MD4 and MD5 share: unrolled steps over four words.
// Each step waits for the one before it, so what counts is how many operations lie between b, which
// that one made, and the new a.

#ifndef KEST_SRC_CRYPTO_MDX_TRANSFORM_H
#define KEST_SRC_CRYPTO_MDX_TRANSFORM_H

#include <stddef.h>

#include <utility>

#include "crypto/words.h"

namespace KEST {

// Algorithm::Next<kStep> gives the new a; kWord<kStep> is the word of the block that it takes. From
// one step to the next the letters a, b, c, d move on by one word; kSteps is a multiple of 4, so
// they end where they began.
template <typename Algorithm, size_t kStep>
[[gnu::always_inline]] inline void Step(unsigned int (&v)[4], const unsigned char* block) {
  constexpr size_t kTurn = Algorithm::kSteps - kStep;
  const unsigned int word = LoadLittleEndian(block + 4 * Algorithm::template kWord<kStep>);
  unsigned int& a = v[kTurn % 4];
  a = Algorithm::template Next<kStep>(a + word, v[(kTurn + 1) % 4], v[(kTurn + 2) % 4],
                                      v[(kTurn + 3) % 4]);
}

template <typename Algorithm, size_t... kEach>
[[gnu::always_inline]] inline void DoSteps(unsigned int (&v)[4], const unsigned char* block,
                                           std::index_sequence<kEach...>) {
  (Step<Algorithm, kEach>(v, block), ...);
}

// Works count blocks of 64 bytes into the first four words of state.
template <typename Algorithm>
void MdxBlocks(unsigned int* state, const unsigned char* blocks, size_t count) {
  unsigned int v[4] = {state[0], state[1], state[2], state[3]};
  for (; count != 0; --count, blocks += 64) {
    DoSteps<Algorithm>(v, blocks, std::make_index_sequence<Algorithm::kSteps>());
    for (int i = 0; i < 4; ++i) v[i] = state[i] += v[i];
  }
}

// Their steps in turn.
template <typename Algorithm, size_t... kEach>
[[gnu::always_inline]] inline void DoStepsOfTwo(unsigned int (&v)[4], const unsigned char* block,
                                                unsigned int (&otherV)[4],
                                                const unsigned char* otherBlock,
                                                std::index_sequence<kEach...>) {
  ((Step<Algorithm, kEach>(v, block), Step<Algorithm, kEach>(otherV, otherBlock)), ...);
}

template <typename Algorithm>
void MdxPair(unsigned int* state, const unsigned char* block, unsigned int* otherState,
             const unsigned char* otherBlock) {
  unsigned int v[4] = {state[0], state[1], state[2], state[3]};
  unsigned int otherV[4] = {otherState[0], otherState[1], otherState[2], otherState[3]};
  DoStepsOfTwo<Algorithm>(v, block, otherV, otherBlock,
                          std::make_index_sequence<Algorithm::kSteps>());
  for (int i = 0; i < 4; ++i) state[i] += v[i];
  for (int i = 0; i < 4; ++i) otherState[i] += otherV[i];
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_MDX_TRANSFORM_H
