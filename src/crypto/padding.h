// The end of a message, which MD4, MD5 and SHA-1 pad alike (RFC 1320 section 3.1).

#ifndef KEST_SRC_CRYPTO_PADDING_H
#define KEST_SRC_CRYPTO_PADDING_H

#include "crypto/transforms.h"

namespace KEST {

// A set bit and then zeros, as many as any message needs.
extern const unsigned char kPadding[64];

// How many bytes of kPadding bring a message of so many bits (its low word is enough) to 8 bytes
// before the end of a block, where the bit count goes: 1 to 64.
constexpr int PaddingLength(unsigned int bitCountLow) {
  const int index = static_cast<int>(bitCountLow / 8 % 64);
  return index < 56 ? 56 - index : 120 - index;
}

// Does at once what Update with that padding and then with the bit count, bits, would do.
void FinishBlocks(TransformBlocks* transform, unsigned int* state, unsigned char* buffer,
                  unsigned int bitCountLow, const unsigned char (&bits)[8]);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_PADDING_H
