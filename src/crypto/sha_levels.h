// The compression function of SHA-1 for some levels of the processor.

#ifndef KEST_SRC_CRYPTO_SHA_LEVELS_H
#define KEST_SRC_CRYPTO_SHA_LEVELS_H

#include "crypto/transforms.h"

namespace KEST {

TransformBlocks ShaBlocksSsse3, ShaBlocksSha;
TransformPair ShaPairSha;

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_SHA_LEVELS_H
