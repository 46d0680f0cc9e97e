#include "kest/digest.h"

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TMd5Prng, 176, 208);

// The base keeps the address of md5 and zeroes the start of buffers, which no initialiser touches.
TMd5Prng::TMd5Prng() : TDigestPrng(md5, buffers, 16) {
  KEST_FIELD_AT(TMd5Prng, md5, 32, 56);
  KEST_FIELD_AT(TMd5Prng, buffers, 128, 160);
}

}  // namespace KEST
