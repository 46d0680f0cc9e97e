// The end of a message, which MD4, MD5 and SHA-1 pad alike (RFC 1320 section 3.1), in their two
// orders of bytes.

#ifndef KEST_SRC_CRYPTO_PADDING_H
#define KEST_SRC_CRYPTO_PADDING_H

#include "crypto/transforms.h"
#include "crypto/words.h"

namespace KEST {

// A set bit and then zeros, as many as any message needs.
extern const unsigned char kPadding[64];

// How many bytes of kPadding bring a message of so many bits (its low word is enough) to 8 bytes
// before the end of a block, where the bit count goes: 1 to 64.
constexpr int PaddingLength(unsigned int bitCountLow) {
  const int index = static_cast<int>(bitCountLow / 8 % 64);
  return index < 56 ? 56 - index : 120 - index;
}

// MD4 and MD5: low bytes and words first.
struct SLowFirst {
  static void StoreWords(unsigned char* bytes, const unsigned int* words, int count) {
    for (int i = 0; i < count; ++i) StoreLittleEndian(bytes + 4 * i, words[i]);
  }
  static void StoreBits(unsigned char* bits, const unsigned int* bitCount) {
    StoreLittleEndian(bits, bitCount[0]);
    StoreLittleEndian(bits + 4, bitCount[1]);
  }
};

// SHA-1: high bytes and words first.
struct SHighFirst {
  static void StoreWords(unsigned char* bytes, const unsigned int* words, int count) {
    for (int i = 0; i < count; ++i) StoreBigEndian(bytes + 4 * i, words[i]);
  }
  static void StoreBits(unsigned char* bits, const unsigned int* bitCount) {
    StoreBigEndian(bits, bitCount[1]);
    StoreBigEndian(bits + 4, bitCount[0]);
  }
};

// Makes buffer the last block of a message of so many bits, bits being their number as it is
// stored. When there is no room for that behind the message, a block before it goes into state.
void PadLastBlock(TransformBlocks* transform, unsigned int* state, unsigned char* buffer,
                  unsigned int bitCountLow, const unsigned char (&bits)[8]);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_PADDING_H
