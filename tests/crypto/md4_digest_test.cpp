#include "crypto/digest_checks.h"

namespace {

using namespace kest_test;
using KEST::TMd4Digest;

// RFC 1320, appendix A.5. Columns: message, digest.
constexpr DigestVector kRfc1320[] = {
    {"", "31d6cfe0d16ae931b73c59d7e0c089c0"},
    {"a", "bde52cb31de33e46245e05fbdbd6fb24"},
    {"abc", "a448017aaf21d8525fc10ae87aa6729d"},
    {"message digest", "d9130a8164549fe818874806e1c7014b"},
    {"abcdefghijklmnopqrstuvwxyz", "d79e1c308aa5bbcdeea8ed63df412da9"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "043f8582f241db351ce627e153e7f0e4"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "e33b4ddc9c38f2199c3e7b164fcc0536"},
};

// Written from RFC 1320, one step at a time over the whole padded message.
unsigned int F(int round, unsigned int x, unsigned int y, unsigned int z) {
  if (round == 0) return (x & y) | (~x & z);
  if (round == 1) return (x & y) | (x & z) | (y & z);
  return x ^ y ^ z;
}

Bytes Model(const Bytes& message) {
  const unsigned int add[3] = {0, 0x5a827999, 0x6ed9eba1};
  const int shift[3][4] = {{3, 7, 11, 19}, {3, 5, 9, 13}, {3, 9, 11, 15}};
  const int third[16] = {0, 8, 4, 12, 2, 10, 6, 14, 1, 9, 5, 13, 3, 11, 7, 15};
  const Bytes padded = Padded(message, false);
  unsigned int a = 0x67452301, b = 0xefcdab89, c = 0x98badcfe, d = 0x10325476;
  for (size_t block = 0; block < padded.size(); block += 64) {
    const unsigned int aa = a, bb = b, cc = c, dd = d;
    for (int i = 0; i < 48; ++i) {
      const int round = i / 16, step = i % 16;
      const int k = round == 0 ? step : round == 1 ? step % 4 * 4 + step / 4 : third[step];
      unsigned int x = 0;
      for (int byte = 3; byte >= 0; --byte) {
        x = x << 8 | padded[block + static_cast<size_t>(4 * k + byte)];
      }
      const unsigned int sum = a + F(round, b, c, d) + x + add[round];
      const int s = shift[round][i % 4];
      a = d;
      d = c;
      c = b;
      b = sum << s | sum >> (32 - s);
    }
    a += aa, b += bb, c += cc, d += dd;
  }
  Bytes digest;
  for (unsigned int word : {a, b, c, d}) {
    for (int i = 0; i < 4; ++i) digest.push_back(static_cast<unsigned char>(word >> (8 * i)));
  }
  return digest;
}

TEST(Md4Digest, MatchesRfc1320) { MatchesVectors<TMd4Digest>(kRfc1320); }

TEST(Md4Digest, MatchesADigestOfDigests) {
  // for n in $(seq 0 130); do pattern $n | openssl md4 -binary; done | openssl md4
  EXPECT_EQ("c129943a759b62ace41bf285aefb4bcc", DigestOfDigests<TMd4Digest>());
}

TEST(Md4Digest, MatchesTheModelForRandomMessages) { MatchesTheModel<TMd4Digest>(Model); }

TEST(Md4Digest, MatchesOpensslForAMillionLetters) {
  EXPECT_EQ("bbce80cc6bb65e5c6745e30d4eeca9a4", DigestOfAMillionLetters<TMd4Digest>());
}

TEST(Md4Digest, SameDigestForEverySplit) { SameDigestForEverySplit<TMd4Digest>(); }

TEST(Md4Digest, FinishIgnoresItsLength) { FinishIgnoresItsLength<TMd4Digest>(16); }

TEST(Md4Digest, FinishLeavesItReadyForTheNextMessage) {
  FinishLeavesItReadyForTheNextMessage<TMd4Digest>();
}

TEST(Md4Digest, ResetDiscardsTheMessage) { ResetDiscardsTheMessage<TMd4Digest>(); }

TEST(Md4Digest, ACopyGoesOnFromTheSameState) { ACopyGoesOnFromTheSameState<TMd4Digest>(); }

TEST(Md4Digest, DataMayLieAtAnyAddress) { DataMayLieAtAnyAddress<TMd4Digest>(); }

TEST(Md4Digest, ReadsNothingBesideTheMessage) { ReadsNothingBesideTheMessage<TMd4Digest>(Model); }

TEST(Md4Digest, BlocksAtOnceLeaveWhatBlocksOneByOneLeave) {
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TMd4Digest>();
}

TEST(Md4Digest, AnOverrideGetsEachBlock) { AnOverrideGetsEachBlock<TMd4Digest>(false); }

TEST(Md4Digest, EndsWithTheBitCountLowByteFirst) {
  EXPECT_EQ("e8cdab8967452301", BitCountInLastBlock<TMd4Digest>());
}

TEST(Md4Digest, VirtualTableIsFixed) { VirtualTableIsFixed<TMd4Digest>(16); }

TEST(Md4Digest, TransformLeavesTheFifthWordAlone) {
  TMd4Digest digest;
  unsigned int state[5] = {1, 2, 3, 4, 5};
  digest.Transform(state, Pattern(64).data());
  EXPECT_NE(1u, state[0]);
  EXPECT_EQ(5u, state[4]);
}

// The bit count of 2^29 bytes is the first that needs its high word.
TEST(Md4Digest, MatchesOpensslForHalfAGigabyteOfZeros) {
  TMd4Digest digest;
  const Bytes zeros(1 << 20);
  for (int i = 0; i < 512; ++i) Feed(digest, zeros);
  EXPECT_EQ("1ddb4210749e8db79d0240b66f7a2168", Finished(digest));
}

}  // namespace
