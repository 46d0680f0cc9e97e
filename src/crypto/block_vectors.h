// Blocks of 8 bytes in vectors. Each of the files that include this compiles it for its own level
// of the processor, and defines first:
//   KEST_FOR_BLOCKS         the level, KEST_FOR_AVX2 for one
//   KEST_BLOCK_VECTOR_SIZE  the bytes in a vector

#ifndef KEST_SRC_CRYPTO_BLOCK_VECTORS_H
#define KEST_SRC_CRYPTO_BLOCK_VECTORS_H

#include <stddef.h>
#include <string.h>

#include <algorithm>

#include "cpu/level.h"
#include "crypto/block_runs.h"

// Part of a routine: it has to disappear in it for its vectors to stay in registers.
#define KEST_IN_BLOCKS KEST_FOR_BLOCKS inline __attribute__((always_inline))

namespace {

constexpr int kVectorSize = KEST_BLOCK_VECTOR_SIZE;

// A block in each element; the same at any address.
using Vector = unsigned long long __attribute__((vector_size(kVectorSize)));
using LooseVector =
    unsigned long long __attribute__((vector_size(kVectorSize), aligned(1), may_alias));

// Exchanges the bits of y under the mask with those of x that lie kShift places higher.
template <int kShift>
KEST_IN_BLOCKS void ExchangeBits(Vector& x, Vector& y) {
  constexpr unsigned long long kMask = ~0ull / ((1ull << kShift) + 1);
  const Vector different = ((x >> kShift) ^ y) & kMask;
  y ^= different;
  x ^= different << kShift;
}

// XORs blocks with those before them in data, the first one with what is at before.
KEST_IN_BLOCKS void Unchain(Vector* vectors, const unsigned char* data, size_t count,
                            const unsigned char* before) {
  unsigned char* const blocks = reinterpret_cast<unsigned char*>(vectors);
  const size_t whole = 8 * count / kVectorSize * kVectorSize;
  for (size_t at = kVectorSize; at < whole; at += kVectorSize) {
    *reinterpret_cast<Vector*>(blocks + at) ^= *reinterpret_cast<const LooseVector*>(data + at - 8);
  }
  for (size_t at = std::max<size_t>(whole, 8); at < 8 * count; at += 8) {
    KEST::XorEight(blocks + at, data + at - 8);
  }
  if (whole == 0) return KEST::XorEight(blocks, before);
  Vector first;
  memcpy(&first, before, 8);
  memcpy(reinterpret_cast<unsigned char*>(&first) + 8, data, kVectorSize - 8);
  vectors[0] ^= first;
}

// By vectors and words: of a longer copy compilers may spill a part, which is not wiped.
KEST_IN_BLOCKS void CopyBlocks(unsigned char* to, const unsigned char* from, size_t size) {
  size_t at = 0;
  for (; at + kVectorSize <= size; at += kVectorSize) {
    *reinterpret_cast<LooseVector*>(to + at) = *reinterpret_cast<const LooseVector*>(from + at);
  }
  for (; at < size; at += 8) memcpy(to + at, from + at, 8);
}

// Does as many of the blocks as pay to be done in batches, and returns how many. A batch is
//   Vector vector[]  the blocks, of which the last ones may not count
//   void Crypt()     encrypts or decrypts them
// One of fewer than fewest blocks does not pay.
template <typename Batch>
KEST_IN_BLOCKS size_t RunBatches(Batch& batch, unsigned char* data, size_t count,
                                 unsigned char* chain, size_t fewest) {
  constexpr size_t kMost = sizeof(batch.vector) / 8;
  const size_t rest = count % kMost, done = rest < fewest ? count - rest : count;
  if (done == 0) return 0;
  unsigned char* const vectors = reinterpret_cast<unsigned char*>(batch.vector);
  unsigned char last[8];
  memcpy(last, data + 8 * done - 8, 8);
  // From the end, so that the ciphertext before a batch is still there.
  for (size_t end = done; end > 0;) {
    const size_t begin = (end - 1) / kMost * kMost, size = 8 * (end - begin);
    unsigned char* const blocks = data + 8 * begin;
    CopyBlocks(vectors, blocks, size);
    batch.Crypt();
    if (chain != nullptr) Unchain(batch.vector, blocks, size / 8, begin == 0 ? chain : blocks - 8);
    CopyBlocks(blocks, vectors, size);
    end = begin;
  }
  if (chain != nullptr) memcpy(chain, last, 8);
  return done;
}

}  // namespace

#endif  // KEST_SRC_CRYPTO_BLOCK_VECTORS_H
