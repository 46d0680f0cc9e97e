// How MD4 and MD5 end a message: RFC 1320 and RFC 1321, sections 3.1, 3.2 and 3.5.

#include "kest/digest.h"

#include "crypto/padding.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TMdXDigest, 96, 104);

int TMdXDigest::Finish(unsigned char* digest, int) {
  unsigned char bits[8];
  StoreLittleEndian(bits, bitCount[0]);
  StoreLittleEndian(bits + 4, bitCount[1]);
  if (TransformBlocks* const transform = BlocksOf(*this)) {
    FinishBlocks(transform, state, buffer, bitCount[0], bits);
  } else {
    Update(kPadding, PaddingLength(bitCount[0]));
    Update(bits, sizeof(bits));
  }
  for (int i = 0; i < 4; ++i) StoreLittleEndian(digest + 4 * i, state[i]);
  Reset();
  return GetDigestSize();
}

int TMdXDigest::GetDigestSize() const { return 16; }

}  // namespace KEST
