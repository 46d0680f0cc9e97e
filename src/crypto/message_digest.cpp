#include "kest/digest.h"

#include <string.h>

#include "crypto/padding.h"
#include "frame/layout.h"

namespace {

constexpr int kBlockSize = 64;

// The words A to E. MD4 and MD5 start from the first four of them.
constexpr unsigned int kInitialState[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476,
                                           0xc3d2e1f0};

// Adds the bits of length bytes to a 64-bit count, low word first.
void AddBits(unsigned int (&bitCount)[2], unsigned int length) {
  const unsigned int low = length << 3;
  bitCount[0] += low;
  bitCount[1] += (length >> 29) + (bitCount[0] < low ? 1 : 0);
}

}  // namespace

namespace KEST {

const unsigned char kPadding[64] = {0x80};

KEST_SIZE_IS(TMessageDigest, 96, 104);

TMessageDigest::TMessageDigest() {
  KEST_FIELD_AT(TMessageDigest, state, 4, 8);
  KEST_FIELD_AT(TMessageDigest, bitCount, 24, 28);
  KEST_FIELD_AT(TMessageDigest, buffer, 32, 36);
  Reset();
}

void TMessageDigest::Reset() {
  memcpy(state, kInitialState, sizeof(state));
  bitCount[0] = bitCount[1] = 0;
}

void TMessageDigest::Update(const unsigned char* data, int length) {
  if (length <= 0) return;
  const int index = static_cast<int>(bitCount[0] / 8 % kBlockSize);  // bytes waiting in buffer
  AddBits(bitCount, static_cast<unsigned int>(length));
  const int room = kBlockSize - index;
  if (length < room) {
    memcpy(buffer + index, data, static_cast<size_t>(length));
    return;
  }
  memcpy(buffer + index, data, static_cast<size_t>(room));
  Transform(state, buffer);
  data += room;
  length -= room;
  for (; length >= kBlockSize; data += kBlockSize, length -= kBlockSize) Transform(state, data);
  if (length > 0) memcpy(buffer, data, static_cast<size_t>(length));
}

}  // namespace KEST
