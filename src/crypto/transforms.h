// The compression functions over runs of blocks, and over two blocks side by side. Transform of
// each digest is a run of one block; Update hands over whole runs while Transform is still the
// library's own.

#ifndef KEST_SRC_CRYPTO_TRANSFORMS_H
#define KEST_SRC_CRYPTO_TRANSFORMS_H

#include <stddef.h>

#include "kest/digest.h"

namespace KEST {

// Works count blocks of 64 bytes, at any address, into state.
using TransformBlocks = void(unsigned int* state, const unsigned char* blocks, size_t count);

// Works a block into each of two states. Neither chain of steps waits for the other, so that both
// take little longer than one.
using TransformPair = void(unsigned int* state, const unsigned char* block,
                           unsigned int* otherState, const unsigned char* otherBlock);

TransformBlocks Md4Blocks, Md5Blocks, ShaBlocks;
TransformPair Md4Pair, Md5Pair, ShaPair;

// The one that does what calls of digest.Transform do. Null when a host's class overrides it, which
// then has to be called for each block.
TransformBlocks* BlocksOf(const TMessageDigest& digest);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_TRANSFORMS_H
