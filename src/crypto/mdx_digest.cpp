// How MD4 and MD5 end a message: RFC 1320 and RFC 1321, sections 3.1, 3.2 and 3.5.

#include "kest/digest.h"

#include "crypto/padding.h"
#include "crypto/transforms.h"
#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TMdXDigest, 96, 104);

int TMdXDigest::Finish(unsigned char* digest, int) {
  unsigned char bits[8];
  SLowFirst::StoreBits(bits, bitCount);
  if (TransformBlocks* const transform = BlocksOf(*this)) {
    PadLastBlock(transform, state, buffer, bitCount[0], bits);
    transform(state, buffer, 1);
  } else {
    Update(kPadding, PaddingLength(bitCount[0]));
    Update(bits, sizeof(bits));
  }
  SLowFirst::StoreWords(digest, state, 4);
  Reset();
  return GetDigestSize();
}

int TMdXDigest::GetDigestSize() const { return 16; }

}  // namespace KEST
