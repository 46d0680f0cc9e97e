// RC4, the stream cipher that RFC 6229 gives test vectors for.

#include "kest/crypto.h"

#include <stddef.h>
#include <string.h>

#include <algorithm>
#include <utility>

#include "crypto/wipe.h"
#include "frame/layout.h"

namespace {

constexpr int kSize = 256;

// From so many bytes on the state is worth being copied to words, which take fewer instructions.
constexpr int kLong = 2048;

// The step whose i stands at place[kAt], where x was. Where its swap goes is known late, and a load
// after it would have to wait in case that is the place it reads. So the values of the next two
// places are read before, and a swap that goes into one of them changes it here too.
template <size_t kAt, typename Value>
[[gnu::always_inline]] inline void Step(Value* state, Value* place, unsigned int& j,
                                        unsigned char* data, unsigned int x, unsigned int& next,
                                        unsigned int& second) {
  second = place[kAt + 2];
  j = (j + x) & 255;
  const unsigned int y = state[j];
  place[kAt] = static_cast<Value>(y);
  state[j] = static_cast<Value>(x);
  data[kAt] ^= static_cast<unsigned char>(state[(x + y) & 255]);
  const size_t ahead = static_cast<size_t>(state + j - place) - (kAt + 1);
  if (ahead < 2) (ahead == 0 ? next : second) = x;
}

// Does the steps from the one at *place up to end, and works their keystream into data. Takes and
// returns j.
template <typename Value>
unsigned int DoSteps(Value* state, Value* place, const Value* end, unsigned int j,
                     unsigned char* data) {
  constexpr ptrdiff_t kAtOnce = 6;
  constexpr ptrdiff_t kRead = kAtOnce + 2;
  if (end - place >= kRead) {
    const Value* const last = end - kRead;
    unsigned int a = place[0], b = place[1], c;
    do {
      Step<0>(state, place, j, data, a, b, c);
      Step<1>(state, place, j, data, b, c, a);
      Step<2>(state, place, j, data, c, a, b);
      Step<3>(state, place, j, data, a, b, c);
      Step<4>(state, place, j, data, b, c, a);
      Step<5>(state, place, j, data, c, a, b);
      place += kAtOnce;
      data += kAtOnce;
    } while (place <= last);
  }
  for (; place != end; ++place) {
    j = (j + *place) & 255;
    std::swap(*place, state[j]);
    *data++ ^= static_cast<unsigned char>(state[(*place + state[j]) & 255]);
  }
  return j;
}

template <typename Value>
void Process(Value* state, unsigned int& i, unsigned int& j, unsigned char* data, int len) {
  while (len > 0) {
    const unsigned int first = (i + 1) & 255;
    const int count = std::min(len, kSize - static_cast<int>(first));
    j = DoSteps(state, state + first, state + first + count, j, data);
    i = first + static_cast<unsigned int>(count) - 1;
    data += count;
    len -= count;
  }
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
  if (len < kLong) return Process(state, i, j, data, len);
  unsigned int words[kSize];
  std::copy(state, state + kSize, words);
  Process(words, i, j, data, len);
  for (int n = 0; n < kSize; ++n) state[n] = static_cast<unsigned char>(words[n]);
  Wipe(words, sizeof(words));
}

void TRc4Cipher::Reset() {
  memcpy(state, keyState, sizeof(state));
  i = j = 0;
}

}  // namespace KEST
