// RC4, the stream cipher that RFC 6229 gives test vectors for.

#include "kest/crypto.h"

#include <string.h>

#include <algorithm>
#include <utility>

#include "crypto/wipe.h"
#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TRc4Cipher, 528, 536);

TRc4Cipher::TRc4Cipher(TCipher::ECipherOp direction, const unsigned char* key, int keyLength)
    : TStreamCipher(direction) {
  KEST_FIELD_AT(TRc4Cipher, keyState, 8, 12);
  KEST_FIELD_AT(TRc4Cipher, state, 264, 268);
  KEST_FIELD_AT(TRc4Cipher, i, 520, 524);
  KEST_FIELD_AT(TRc4Cipher, j, 524, 528);
  const int length = std::max(keyLength, 1);
  for (int n = 0; n < 256; ++n) keyState[n] = static_cast<unsigned char>(n);
  for (int n = 0, other = 0; n < 256; ++n) {
    other = (other + keyState[n] + key[n % length]) & 255;
    std::swap(keyState[n], keyState[other]);
  }
  TRc4Cipher::Reset();
}

TRc4Cipher::~TRc4Cipher() {
  Wipe(keyState, sizeof(keyState));
  Wipe(state, sizeof(state));
  Wipe(&i, sizeof(i));
  Wipe(&j, sizeof(j));
}

int TRc4Cipher::BerInit(const unsigned char*, int) { return 0; }

int TRc4Cipher::BerDump(unsigned char*, int) { return 0; }

void TRc4Cipher::ProcessStream(unsigned char* data, int len) {
  unsigned int a = i, b = j;  // not the fields, which any store through data could change
  for (int at = 0; at < len; ++at) {
    a = (a + 1) & 255;
    b = (b + state[a]) & 255;
    std::swap(state[a], state[b]);
    data[at] ^= state[(state[a] + state[b]) & 255];
  }
  i = a;
  j = b;
}

void TRc4Cipher::Reset() {
  memcpy(state, keyState, sizeof(state));
  i = j = 0;
}

}  // namespace KEST
