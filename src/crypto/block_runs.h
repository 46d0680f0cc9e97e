// What the block ciphers here do with a run of whole blocks of 8 bytes, in place. It comes to the
// same as ProcessBlock on one after the other with the chaining of the mode, but blocks that do not
// wait for each other are done together. chain is what CBC mixes into the first block; it is left
// as what goes into the next one.

#ifndef KEST_SRC_CRYPTO_BLOCK_RUNS_H
#define KEST_SRC_CRYPTO_BLOCK_RUNS_H

#include <stddef.h>

#include "crypto/words.h"
#include "kest/crypto.h"

namespace KEST {

// cipher has to be a TDesCipher.
struct SDesRuns {
  static void Ecb(const TBlockCipher& cipher, unsigned char* data, size_t count);
  static void EncryptCbc(const TBlockCipher& cipher, unsigned char* data, size_t count,
                         unsigned char* chain);
  static void DecryptCbc(const TBlockCipher& cipher, unsigned char* data, size_t count,
                         unsigned char* chain);
};

// XORs 8 bytes.
inline void XorEight(unsigned char* dst, const unsigned char* src) {
  StoreLittleEndian(dst, LoadLittleEndian(dst) ^ LoadLittleEndian(src));
  StoreLittleEndian(dst + 4, LoadLittleEndian(dst + 4) ^ LoadLittleEndian(src + 4));
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BLOCK_RUNS_H
