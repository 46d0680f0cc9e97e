// What there is of DES for each level of the processor.

#ifndef KEST_SRC_CRYPTO_DES_LEVELS_H
#define KEST_SRC_CRYPTO_DES_LEVELS_H

#include <stddef.h>

namespace KEST {

// Puts blocks through the 32 words of the schedule, in place: as many from the first one on as pay
// to be taken together, which may be none. Returns how many. With chain they are XORed with the
// ciphertext before them, as in CBC decryption, and chain is left as the last of it.
using DesSlices = size_t(const unsigned int* schedule, unsigned char* data, size_t count,
                         unsigned char* chain);
DesSlices DesSlicesSse2, DesSlicesAvx2, DesSlicesAvx512;

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_DES_LEVELS_H
