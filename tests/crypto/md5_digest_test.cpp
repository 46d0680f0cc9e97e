#include "crypto/digest_checks.h"

#include <math.h>

namespace {

using namespace kest_test;
using KEST::TMd5Digest;

// RFC 1321, appendix A.5. Columns: message, digest.
constexpr DigestVector kRfc1321[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

// Written from RFC 1321, one step at a time over the whole padded message, the sines computed.
unsigned int F(int round, unsigned int x, unsigned int y, unsigned int z) {
  if (round == 0) return (x & y) | (~x & z);
  if (round == 1) return (x & z) | (y & ~z);
  if (round == 2) return x ^ y ^ z;
  return y ^ (x | ~z);
}

int WordOfStep(int step) {
  const int words[4] = {step, 5 * step + 1, 3 * step + 5, 7 * step};
  return words[step / 16] % 16;
}

unsigned int Sine(int step) {
  return static_cast<unsigned int>(floor(fabs(sin(step + 1.0)) * 4294967296.0));
}

Bytes Model(const Bytes& message) {
  const int shift[4][4] = {{7, 12, 17, 22}, {5, 9, 14, 20}, {4, 11, 16, 23}, {6, 10, 15, 21}};
  const Bytes padded = Padded(message, false);
  unsigned int a = 0x67452301, b = 0xefcdab89, c = 0x98badcfe, d = 0x10325476;
  for (size_t block = 0; block < padded.size(); block += 64) {
    const unsigned int aa = a, bb = b, cc = c, dd = d;
    for (int i = 0; i < 64; ++i) {
      unsigned int x = 0;
      for (int byte = 3; byte >= 0; --byte) {
        x = x << 8 | padded[block + static_cast<size_t>(4 * WordOfStep(i) + byte)];
      }
      const unsigned int sum = a + F(i / 16, b, c, d) + x + Sine(i);
      const int s = shift[i / 16][i % 4];
      a = d;
      d = c;
      c = b;
      b += sum << s | sum >> (32 - s);
    }
    a += aa, b += bb, c += cc, d += dd;
  }
  Bytes digest;
  for (unsigned int word : {a, b, c, d}) {
    for (int i = 0; i < 4; ++i) digest.push_back(static_cast<unsigned char>(word >> (8 * i)));
  }
  return digest;
}

TEST(Md5Digest, MatchesRfc1321) { MatchesVectors<TMd5Digest>(kRfc1321); }

TEST(Md5Digest, MatchesADigestOfDigests) {
  // for n in $(seq 0 130); do pattern $n | openssl md5 -binary; done | openssl md5
  EXPECT_EQ("c11b167a876834df01319a532758e5ba", DigestOfDigests<TMd5Digest>());
}

TEST(Md5Digest, MatchesTheModelForRandomMessages) { MatchesTheModel<TMd5Digest>(Model); }

TEST(Md5Digest, MatchesOpensslForAMillionLetters) {
  EXPECT_EQ("7707d6ae4e027c70eea2a935c2296f21", DigestOfAMillionLetters<TMd5Digest>());
}

TEST(Md5Digest, SameDigestForEverySplit) { SameDigestForEverySplit<TMd5Digest>(); }

TEST(Md5Digest, FinishIgnoresItsLength) { FinishIgnoresItsLength<TMd5Digest>(16); }

TEST(Md5Digest, FinishLeavesItReadyForTheNextMessage) {
  FinishLeavesItReadyForTheNextMessage<TMd5Digest>();
}

TEST(Md5Digest, ResetDiscardsTheMessage) { ResetDiscardsTheMessage<TMd5Digest>(); }

TEST(Md5Digest, ACopyGoesOnFromTheSameState) { ACopyGoesOnFromTheSameState<TMd5Digest>(); }

TEST(Md5Digest, DataMayLieAtAnyAddress) { DataMayLieAtAnyAddress<TMd5Digest>(); }

TEST(Md5Digest, ReadsNothingBesideTheMessage) { ReadsNothingBesideTheMessage<TMd5Digest>(Model); }

TEST(Md5Digest, BlocksAtOnceLeaveWhatBlocksOneByOneLeave) {
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TMd5Digest>();
}

TEST(Md5Digest, AnOverrideGetsEachBlock) { AnOverrideGetsEachBlock<TMd5Digest>(false); }

TEST(Md5Digest, EndsWithTheBitCountLowByteFirst) {
  EXPECT_EQ("e8cdab8967452301", BitCountInLastBlock<TMd5Digest>());
}

TEST(Md5Digest, VirtualTableIsFixed) { VirtualTableIsFixed<TMd5Digest>(16); }

TEST(Md5Digest, TransformLeavesTheFifthWordAlone) {
  TMd5Digest digest;
  unsigned int state[5] = {1, 2, 3, 4, 5};
  digest.Transform(state, Pattern(64).data());
  EXPECT_NE(1u, state[0]);
  EXPECT_EQ(5u, state[4]);
}

}  // namespace
