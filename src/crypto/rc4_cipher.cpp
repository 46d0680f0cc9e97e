// RC4, the stream cipher that RFC 6229 gives test vectors for.

#include "kest/crypto.h"

#include <string.h>

#include <algorithm>
#include <utility>

#include "crypto/wipe.h"
#include "frame/layout.h"

namespace {

// Does the steps whose i, state[i] being *place, runs up to end, and works their keystream into
// data. Takes and returns j.
//
// Where a swap goes is known late, and a load after it would have to wait in case that is the place
// it reads. So the next two values are held here, and a swap that goes into one of their places
// changes it here too.
unsigned int DoSteps(unsigned char* state, unsigned char* place, const unsigned char* end,
                     unsigned int j, unsigned char* data) {
  if (end - place > 2) {
    unsigned int x = place[0], next = place[1];
    do {
      unsigned int second = place[2];
      j = (j + x) & 255;
      unsigned char* const other = state + j;
      const unsigned int y = *other;
      *place = static_cast<unsigned char>(y);
      *other = static_cast<unsigned char>(x);
      *data++ ^= state[(x + y) & 255];
      ++place;
      if (other == place) {
        next = x;
      } else if (other == place + 1) {
        second = x;
      }
      x = next;
      next = second;
    } while (end - place > 2);
  }
  for (; place != end; ++place) {
    j = (j + *place) & 255;
    std::swap(*place, state[j]);
    *data++ ^= state[(*place + state[j]) & 255];
  }
  return j;
}

}  // namespace

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
  for (int n = 0, other = 0, at = 0; n < 256; ++n) {
    other = (other + keyState[n] + key[at]) & 255;
    std::swap(keyState[n], keyState[other]);
    at = at + 1 < length ? at + 1 : 0;
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
  while (len > 0) {
    const unsigned int first = (i + 1) & 255;
    const int count = std::min(len, 256 - static_cast<int>(first));
    j = DoSteps(state, state + first, state + first + count, j, data);
    i = first + static_cast<unsigned int>(count) - 1;
    data += count;
    len -= count;
  }
}

void TRc4Cipher::Reset() {
  memcpy(state, keyState, sizeof(state));
  i = j = 0;
}

}  // namespace KEST
