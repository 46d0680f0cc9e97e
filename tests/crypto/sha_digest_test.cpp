#include "crypto/digest_checks.h"

namespace {

using namespace kest_test;
using KEST::TShaDigest;

// FIPS 180-1, appendixes A and B; RFC 3174, section 7.3. Columns: message, digest.
constexpr DigestVector kFips180[] = {
    {"", "da39a3ee5e6b4b0d3255bfef95601890afd80709"},
    {"a", "86f7e437faa5a7fce15d1ddcb9eaeaea377667b8"},
    {"abc", "a9993e364706816aba3e25717850c26c9cd0d89d"},
    {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
     "84983e441c3bd26ebaae4aa1f95129e5e54670f1"},
    {"01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567"
     "01234567012345670123456701234567012345670123456701234567012345670123456701234567",
     "dea356a2cddd90c7a7ecedc5ebb563934f460452"},
};

// Written from FIPS 180-1, section 7, with its schedule of 80 words.
unsigned int F(int t, unsigned int b, unsigned int c, unsigned int d) {
  if (t < 20) return (b & c) | (~b & d);
  if (t >= 40 && t < 60) return (b & c) | (b & d) | (c & d);
  return b ^ c ^ d;
}

unsigned int Rotate(unsigned int word, int count) { return word << count | word >> (32 - count); }

Bytes Model(const Bytes& message) {
  const unsigned int k[4] = {0x5a827999, 0x6ed9eba1, 0x8f1bbcdc, 0xca62c1d6};
  const Bytes padded = Padded(message, true);
  unsigned int h[5] = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};
  for (size_t block = 0; block < padded.size(); block += 64) {
    unsigned int w[80] = {};
    for (size_t i = 0; i < 64; ++i) w[i / 4] = w[i / 4] << 8 | padded[block + i];
    for (int t = 16; t < 80; ++t) w[t] = Rotate(w[t - 3] ^ w[t - 8] ^ w[t - 14] ^ w[t - 16], 1);
    unsigned int a = h[0], b = h[1], c = h[2], d = h[3], e = h[4];
    for (int t = 0; t < 80; ++t) {
      const unsigned int sum = Rotate(a, 5) + F(t, b, c, d) + e + w[t] + k[t / 20];
      e = d;
      d = c;
      c = Rotate(b, 30);
      b = a;
      a = sum;
    }
    h[0] += a, h[1] += b, h[2] += c, h[3] += d, h[4] += e;
  }
  Bytes digest;
  for (unsigned int word : h) {
    for (int i = 3; i >= 0; --i) digest.push_back(static_cast<unsigned char>(word >> (8 * i)));
  }
  return digest;
}

TEST(ShaDigest, MatchesFips180) { MatchesVectors<TShaDigest>(kFips180); }

TEST(ShaDigest, MatchesADigestOfDigests) {
  // for n in $(seq 0 130); do pattern $n | openssl sha1 -binary; done | openssl sha1
  EXPECT_EQ("b5fed4935db74380bc137c89243f5f29ec8fcd55", DigestOfDigests<TShaDigest>());
}

TEST(ShaDigest, MatchesTheModelForRandomMessages) { MatchesTheModel<TShaDigest>(Model); }

TEST(ShaDigest, MatchesFips180ForAMillionLetters) {
  EXPECT_EQ("34aa973cd4c4daa4f61eeb2bdbad27316534016f", DigestOfAMillionLetters<TShaDigest>());
}

TEST(ShaDigest, SameDigestForEverySplit) { SameDigestForEverySplit<TShaDigest>(); }

TEST(ShaDigest, FinishIgnoresItsLength) { FinishIgnoresItsLength<TShaDigest>(20); }

TEST(ShaDigest, FinishLeavesItReadyForTheNextMessage) {
  FinishLeavesItReadyForTheNextMessage<TShaDigest>();
}

TEST(ShaDigest, ResetDiscardsTheMessage) { ResetDiscardsTheMessage<TShaDigest>(); }

TEST(ShaDigest, ACopyGoesOnFromTheSameState) { ACopyGoesOnFromTheSameState<TShaDigest>(); }

TEST(ShaDigest, DataMayLieAtAnyAddress) { DataMayLieAtAnyAddress<TShaDigest>(); }

TEST(ShaDigest, ReadsNothingBesideTheMessage) { ReadsNothingBesideTheMessage<TShaDigest>(Model); }

TEST(ShaDigest, BlocksAtOnceLeaveWhatBlocksOneByOneLeave) {
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TShaDigest>();
}

TEST(ShaDigest, AnOverrideGetsEachBlock) { AnOverrideGetsEachBlock<TShaDigest>(true); }

TEST(ShaDigest, EndsWithTheBitCountHighByteFirst) {
  EXPECT_EQ("0123456789abcde8", BitCountInLastBlock<TShaDigest>());
}

TEST(ShaDigest, VirtualTableIsFixed) { VirtualTableIsFixed<TShaDigest>(20); }

}  // namespace
