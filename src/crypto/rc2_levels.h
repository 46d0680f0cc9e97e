// What there is of RC2 for each level of the processor.

#ifndef KEST_SRC_CRYPTO_RC2_LEVELS_H
#define KEST_SRC_CRYPTO_RC2_LEVELS_H

#include <stddef.h>

namespace KEST {

// Encrypts or decrypts blocks with the 64 words of the expanded key, in place: as many from the
// first one on as pay to be taken together, which may be none. Returns how many. With chain they
// are XORed with the ciphertext before them, as in CBC decryption, and chain is left as the last of
// it.
using Rc2Lanes = size_t(const unsigned short* key, bool encrypts, unsigned char* data, size_t count,
                        unsigned char* chain);
Rc2Lanes Rc2LanesSse2, Rc2LanesAvx2, Rc2LanesAvx512;

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_RC2_LEVELS_H
