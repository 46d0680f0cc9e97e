// MD5, RFC 1321 section 3.4.

#include "kest/digest.h"

#include <stddef.h>

#include "crypto/mdx_transform.h"
#include "crypto/transforms.h"
#include "frame/layout.h"

namespace {

// T[1] to T[64]: 2^32 * |sin(i)|, i in radians, without the fraction.
constexpr unsigned int kSine[64] = {
    0xd76aa478, 0xe8c7b756, 0x242070db, 0xc1bdceee, 0xf57c0faf, 0x4787c62a, 0xa8304613, 0xfd469501,
    0x698098d8, 0x8b44f7af, 0xffff5bb1, 0x895cd7be, 0x6b901122, 0xfd987193, 0xa679438e, 0x49b40821,
    0xf61e2562, 0xc040b340, 0x265e5a51, 0xe9b6c7aa, 0xd62f105d, 0x02441453, 0xd8a1e681, 0xe7d3fbc8,
    0x21e1cde6, 0xc33707d6, 0xf4d50d87, 0x455a14ed, 0xa9e3e905, 0xfcefa3f8, 0x676f02d9, 0x8d2a4c8a,
    0xfffa3942, 0x8771f681, 0x6d9d6122, 0xfde5380c, 0xa4beea44, 0x4bdecfa9, 0xf6bb4b60, 0xbebfbc70,
    0x289b7ec6, 0xeaa127fa, 0xd4ef3085, 0x04881d05, 0xd9d4d039, 0xe6db99e5, 0x1fa27cf8, 0xc4ac5665,
    0xf4292244, 0x432aff97, 0xab9423a7, 0xfc93a039, 0x655b59c3, 0x8f0ccc92, 0xffeff47d, 0x85845dd1,
    0x6fa87e4f, 0xfe2ce6e0, 0xa3014314, 0x4e0811a1, 0xf7537e82, 0xbd3af235, 0x2ad7d2bb, 0xeb86d391,
};

// By round: the rotations of four steps in turn, and the words read, kFirstWord + i * kStride
// modulo 16 in the round's step i.
constexpr int kShift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
constexpr size_t kFirstWord[4] = {0, 1, 5, 0};
constexpr size_t kStride[4] = {1, 5, 3, 7};

// sum + F, G, H or I. What does not need b is added first; the halves of G have no bit in common,
// so that they can be added one by one.
template <size_t kRound>
constexpr unsigned int Add(unsigned int sum, unsigned int b, unsigned int c, unsigned int d) {
  if constexpr (kRound == 0) return sum + (d ^ (b & (c ^ d)));
  if constexpr (kRound == 1) return sum + (c & ~d) + (b & d);
  if constexpr (kRound == 2) return sum + (b ^ (c ^ d));
  if constexpr (kRound == 3) return sum + (c ^ (b | ~d));
}

struct SMd5 {
  static constexpr size_t kSteps = 64;

  template <size_t kStep>
  static constexpr size_t kWord = (kFirstWord[kStep / 16] + kStep * kStride[kStep / 16]) % 16;

  template <size_t kStep>
  static constexpr unsigned int Next(unsigned int sum, unsigned int b, unsigned int c,
                                     unsigned int d) {
    constexpr size_t kRound = kStep / 16;
    return b +
           KEST::RotateLeft(Add<kRound>(sum + kSine[kStep], b, c, d), kShift[kRound][kStep % 4]);
  }
};

}  // namespace

namespace KEST {

KEST_SIZE_IS(TMd5Digest, 96, 104);

void TMd5Digest::Transform(unsigned int* words, const unsigned char* block) {
  Md5Blocks(words, block, 1);
}

void Md5Blocks(unsigned int* state, const unsigned char* blocks, size_t count) {
  MdxBlocks<SMd5>(state, blocks, count);
}

void Md5Pair(unsigned int* state, const unsigned char* block, unsigned int* otherState,
             const unsigned char* otherBlock) {
  MdxPair<SMd5>(state, block, otherState, otherBlock);
}

}  // namespace KEST
