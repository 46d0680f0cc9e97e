#include "kest/digest.h"

#include <string.h>

#include "crypto/padding.h"
#include "crypto/transforms.h"
#include "frame/layout.h"
#include "frame/own_slot.h"

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

TransformBlocks* BlocksOf(const TMessageDigest& digest) {
  if (IsOwn<&TMessageDigest::Transform, TMd5Digest>(digest)) return Md5Blocks;
  if (IsOwn<&TMessageDigest::Transform, TShaDigest>(digest)) return ShaBlocks;
  if (IsOwn<&TMessageDigest::Transform, TMd4Digest>(digest)) return Md4Blocks;
  return nullptr;
}

const unsigned char kPadding[64] = {0x80};

// Leaves in buffer what Update would leave there.
void PadLastBlock(TransformBlocks* transform, unsigned int* state, unsigned char* buffer,
                  unsigned int bitCountLow, const unsigned char (&bits)[8]) {
  constexpr size_t kBitsAt = kBlockSize - sizeof(bits);
  const size_t index = bitCountLow / 8 % kBlockSize;
  memcpy(buffer + index, kPadding, kBlockSize - index);
  if (index >= kBitsAt) {
    transform(state, buffer, 1);
    memset(buffer, 0, kBitsAt);
  }
  memcpy(buffer + kBitsAt, bits, sizeof(bits));
}

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
  if (TransformBlocks* const transform = BlocksOf(*this)) {
    // A first block that is whole in data joins the run there.
    if (index != 0) {
      transform(state, buffer, 1);
      data += room;
      length -= room;
    }
    const size_t count = static_cast<size_t>(length / kBlockSize);
    if (count != 0) transform(state, data, count);
    data += count * kBlockSize;
    length %= kBlockSize;
  } else {
    Transform(state, buffer);
    data += room;
    length -= room;
    for (; length >= kBlockSize; data += kBlockSize, length -= kBlockSize) Transform(state, data);
  }
  if (length > 0) memcpy(buffer, data, static_cast<size_t>(length));
}

}  // namespace KEST
