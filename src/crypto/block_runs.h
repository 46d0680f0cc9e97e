// What the block ciphers here do with a run of whole blocks of 8 bytes, in place. It comes to the
// same as ProcessBlock on one after the other with the chaining of the mode, but blocks that do not
// wait for each other are done together.
//   cipher  of the class that the runs are for
//   op      its direction
//   chain   what CBC mixes into the first block; it is left as what goes into the next one

#ifndef KEST_SRC_CRYPTO_BLOCK_RUNS_H
#define KEST_SRC_CRYPTO_BLOCK_RUNS_H

#include <stddef.h>

#include "crypto/words.h"
#include "kest/crypto.h"

namespace KEST {

using BlockRun = void(const TBlockCipher& cipher, TCipher::ECipherOp op, unsigned char* data,
                      size_t count);
using ChainedBlockRun = void(const TBlockCipher& cipher, TCipher::ECipherOp op, unsigned char* data,
                             size_t count, unsigned char* chain);

struct SBlockRuns {
  BlockRun* ecb;
  ChainedBlockRun* encryptCbc;
  ChainedBlockRun* decryptCbc;
};

extern const SBlockRuns kDesRuns;  // of TDesCipher
extern const SBlockRuns kRc2Runs;  // of TRc2Cipher

// XORs 8 bytes.
inline void XorEight(unsigned char* dst, const unsigned char* src) {
  StoreLittleEndian(dst, LoadLittleEndian(dst) ^ LoadLittleEndian(src));
  StoreLittleEndian(dst + 4, LoadLittleEndian(dst + 4) ^ LoadLittleEndian(src + 4));
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BLOCK_RUNS_H
