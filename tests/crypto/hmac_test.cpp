#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <algorithm>
#include <new>
#include <string>
#include <type_traits>
#include <vector>

#include "crypto/digest_checks.h"
#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using KEST::THmac;
using KEST::TMd4Digest;
using KEST::TMd5Digest;
using KEST::TMessageDigest;
using KEST::TShaDigest;
using kest_test::Bytes;
using kest_test::DigestOf;
using kest_test::Hex;
using kest_test::Pattern;
using kest_test::Random;
using kest_test::ToBytes;

namespace {

int LengthOf(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

void Feed(THmac& hmac, const Bytes& bytes) { hmac.Update(bytes.data(), LengthOf(bytes)); }

Bytes FinishedBytes(THmac& hmac, const TMessageDigest& digest) {
  Bytes mac(static_cast<size_t>(digest.GetDigestSize()));
  EXPECT_EQ(LengthOf(mac), hmac.Finish(mac.data(), 0));
  return mac;
}

template <typename Digest>
Bytes MacOf(const Bytes& key, const Bytes& message) {
  Digest digest;
  THmac hmac(digest, key.data(), LengthOf(key));
  Feed(hmac, message);
  return FinishedBytes(hmac, digest);
}

Bytes Joined(Bytes first, const Bytes& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

// The key and zeros up to a block, each byte xor pad.
Bytes PaddedKey(Bytes key, int pad) {
  key.resize(64);
  for (unsigned char& byte : key) byte = static_cast<unsigned char>(byte ^ pad);
  return key;
}

// RFC 2104: H(K xor opad, H(K xor ipad, text)).
template <typename Digest>
Bytes Model(const Bytes& key, const Bytes& message) {
  const Bytes inner = DigestOf<Digest>(Joined(PaddedKey(key, 0x36), message));
  return DigestOf<Digest>(Joined(PaddedKey(key, 0x5c), inner));
}

// 01 02 03 ... of RFC 2202's fourth case.
Bytes Counting(int count) {
  Bytes bytes;
  for (int i = 1; i <= count; ++i) bytes.push_back(static_cast<unsigned char>(i));
  return bytes;
}

struct Vector {
  Bytes key, message;
  const char* mac;
};

template <typename Digest>
void MatchesVectors(const std::vector<Vector>& vectors) {
  for (const Vector& row : vectors) {
    EXPECT_EQ(row.mac, Hex(MacOf<Digest>(row.key, row.message))) << Hex(row.key);
  }
}

// RFC 2202, section 2, the cases with keys of at most 64 bytes. Columns: key, data, digest.
TEST(Hmac, MatchesRfc2202WithMd5) {
  MatchesVectors<TMd5Digest>({
      {Bytes(16, 0x0b), ToBytes("Hi There"), "9294727a3638bb1c13f48ef8158bfc9d"},
      {ToBytes("Jefe"), ToBytes("what do ya want for nothing?"),
       "750c783e6ab0b503eaa86e310a5db738"},
      {Bytes(16, 0xaa), Bytes(50, 0xdd), "56be34521d144c88dbb8c733f0e8b3f6"},
      {Counting(25), Bytes(50, 0xcd), "697eaf0aca3a3aea3a75164746ffaa79"},
      {Bytes(16, 0x0c), ToBytes("Test With Truncation"), "56461ef2342edc00f9bab995690efd4c"},
  });
}

// RFC 2202, section 3, likewise.
TEST(Hmac, MatchesRfc2202WithSha1) {
  MatchesVectors<TShaDigest>({
      {Bytes(20, 0x0b), ToBytes("Hi There"), "b617318655057264e28bc0b6fb378c8ef146be00"},
      {ToBytes("Jefe"), ToBytes("what do ya want for nothing?"),
       "effcdf6ae5eb2fa2d27416d5f184df9c259a7c79"},
      {Bytes(20, 0xaa), Bytes(50, 0xdd), "125d7342b9ac11cd91a39af48aa17b4f63f175d3"},
      {Counting(25), Bytes(50, 0xcd), "4c9007f4026250c6bc8414f9bf50c86c2d7235da"},
      {Bytes(20, 0x0c), ToBytes("Test With Truncation"),
       "4c1a03424b55e07fe7f27be1d58bb9324a9a5a04"},
  });
}

// FIPS 198, appendix A.1: a key of exactly one block.
TEST(Hmac, MatchesFips198WithAKeyOfOneBlock) {
  Bytes key;
  for (int i = 0; i < 64; ++i) key.push_back(static_cast<unsigned char>(i));
  EXPECT_EQ("4f4ca3d5d68ba7cc0a1208c9c61e9c5da0403c0a",
            Hex(MacOf<TShaDigest>(key, ToBytes("Sample #1"))));
}

// The digest of the codes, one after another, under patterns of 0 to 64 bytes as keys, each over
// the pattern of twice the length.
template <typename Digest>
Bytes DigestOfMacs() {
  Digest all;
  for (int length = 0; length <= 64; ++length) {
    kest_test::Feed(all, MacOf<Digest>(Pattern(length), Pattern(2 * length)));
  }
  return kest_test::FinishedBytes(all);
}

TEST(Hmac, MatchesOpensslWithEveryKeyLength) {
  EXPECT_EQ("2d13e724c94efa6b66ebce637d8788d8", Hex(DigestOfMacs<TMd4Digest>()));
  EXPECT_EQ("950fadce109d716f5f0a428d1be71f35", Hex(DigestOfMacs<TMd5Digest>()));
  EXPECT_EQ("159d43443513b80e2a76ea7692b3cb40e9c8764a", Hex(DigestOfMacs<TShaDigest>()));
}

TEST(Hmac, EveryByteOfTheKeyCounts) {
  const Bytes plain = MacOf<TMd5Digest>(Bytes(64), ToBytes("abc"));
  for (size_t i = 0; i < 64; ++i) {
    Bytes key(64);
    key[i] = 1;
    EXPECT_NE(Hex(plain), Hex(MacOf<TMd5Digest>(key, ToBytes("abc")))) << i;
  }
  for (int length = 0; length < 64; ++length) {
    EXPECT_EQ(Hex(plain),
              Hex(MacOf<TMd5Digest>(Bytes(static_cast<size_t>(length)), ToBytes("abc"))))
        << "zeros fill up a key of " << length;
  }
}

TEST(Hmac, TheKeyIsCopied) {
  TMd5Digest digest;
  Bytes key = Pattern(20);
  THmac hmac(digest, key.data(), 20);
  key.assign(20, 0);
  Feed(hmac, ToBytes("abc"));
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(20), ToBytes("abc"))), Hex(FinishedBytes(hmac, digest)));
}

// The bytes of a digest object, which show whether it was touched.
template <typename Digest>
Bytes Snapshot(const Digest& digest) {
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(&digest);
  return Bytes(bytes, bytes + sizeof(digest));
}

TEST(Hmac, ConstructionLeavesTheDigestAlone) {
  TShaDigest digest;
  kest_test::Feed(digest, Pattern(70));
  const Bytes before = Snapshot(digest);
  THmac hmac(digest, Pattern(64).data(), 64);
  EXPECT_EQ(before, Snapshot(digest));
}

// RFC 2202's sixth and seventh cases, with their keys of 80 bytes, are among these on purpose.
TEST(Hmac, RefusesKeysAboveABlockAndBelowNothing) {
  const Bytes key(80, 0xaa);
  for (int length : {65, 80, 128, INT_MAX, -1, -64, -65, INT_MIN}) {
    SCOPED_TRACE(length);
    static TMd5Digest digest;  // all of its bytes are compared, those never used too
    kest_test::Feed(digest, Pattern(5));
    const Bytes before = Snapshot(digest);
    THmac hmac(digest, length == 80 ? key.data() : nullptr, length);
    Feed(hmac, ToBytes("Test Using Larger Than Block-Size Key - Hash Key First"));
    hmac.Update(nullptr, 0);
    hmac.Reset();
    hmac.Update(ToBytes("abc").data(), 3);
    unsigned char mac[16];
    memset(mac, 0xee, sizeof(mac));
    EXPECT_EQ(0, hmac.Finish(mac, 0));
    EXPECT_EQ(0, hmac.Finish(nullptr, 16));
    EXPECT_EQ(Bytes(16, 0xee), Bytes(mac, mac + 16));
    EXPECT_EQ(before, Snapshot(digest));
  }
}

TEST(Hmac, NoKeyIsAKeyOfZeros) {
  TMd5Digest digest;
  THmac hmac(digest, nullptr, 0);
  Feed(hmac, ToBytes("abc"));
  EXPECT_EQ(Hex(Model<TMd5Digest>({}, ToBytes("abc"))), Hex(FinishedBytes(hmac, digest)));
}

// Cut in two anywhere, and byte by byte.
TEST(Hmac, SameCodeForEverySplit) {
  const Bytes key = Pattern(33), message = Pattern(150);
  const std::string whole = Hex(Model<TShaDigest>(key, message));
  TShaDigest digest;
  THmac hmac(digest, key.data(), 33);
  for (int cut = 0; cut <= 150; ++cut) {
    hmac.Update(message.data(), cut);
    hmac.Update(message.data() + cut, 150 - cut);
    ASSERT_EQ(whole, Hex(FinishedBytes(hmac, digest))) << "cut at " << cut;
  }
  for (const unsigned char& byte : message) hmac.Update(&byte, 1);
  EXPECT_EQ(whole, Hex(FinishedBytes(hmac, digest))) << "byte by byte";
}

// H(outer key, H(nothing)) instead of H(outer key, H(inner key)), on purpose.
template <typename Digest>
void FinishWithoutUpdateLeavesTheInnerKeyOut() {
  const Bytes key = Pattern(20);
  const std::string expected =
      Hex(DigestOf<Digest>(Joined(PaddedKey(key, 0x5c), DigestOf<Digest>({}))));
  Digest digest;
  THmac hmac(digest, key.data(), 20);
  EXPECT_EQ(expected, Hex(FinishedBytes(hmac, digest))) << "fresh";
  EXPECT_EQ(expected, Hex(FinishedBytes(hmac, digest))) << "after a message";
  Feed(hmac, ToBytes("abc"));
  hmac.Reset();
  digest.Reset();
  EXPECT_EQ(expected, Hex(FinishedBytes(hmac, digest))) << "after Reset";
  EXPECT_NE(expected, Hex(Model<Digest>(key, {})));
}

TEST(Hmac, FinishWithoutUpdateLeavesTheInnerKeyOut) {
  FinishWithoutUpdateLeavesTheInnerKeyOut<TMd4Digest>();
  FinishWithoutUpdateLeavesTheInnerKeyOut<TMd5Digest>();
  FinishWithoutUpdateLeavesTheInnerKeyOut<TShaDigest>();
}

// The codes of the empty message under the empty key, as openssl gives them.
TEST(Hmac, AnUpdateOfNothingStartsTheEmptyMessage) {
  TMd5Digest md5;
  THmac hmacMd5(md5, nullptr, 0);
  hmacMd5.Update(nullptr, 0);
  EXPECT_EQ("74e6f7298a9c2d168935f58c001bad88", Hex(FinishedBytes(hmacMd5, md5)));
  TShaDigest sha;
  THmac hmacSha(sha, nullptr, 0);
  hmacSha.Update(nullptr, 0);
  hmacSha.Update(nullptr, 0);
  EXPECT_EQ("fbdb1d1b18aa6c08324b7d64b71fb76370690e1d", Hex(FinishedBytes(hmacSha, sha)));
}

TEST(Hmac, ALengthBelowZeroDoesNothing) {
  static TMd5Digest digest;  // all of its bytes are compared
  THmac hmac(digest, Pattern(9).data(), 9);
  const Bytes before = Snapshot(digest);
  for (int length : {-1, -64, INT_MIN}) hmac.Update(Pattern(100).data(), length);
  EXPECT_EQ(before, Snapshot(digest)) << "not started";
  hmac.Update(Pattern(100).data(), 100);
  const Bytes started = Snapshot(digest);
  for (int length : {-1, -64, INT_MIN}) hmac.Update(Pattern(100).data(), length);
  EXPECT_EQ(started, Snapshot(digest));
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(9), Pattern(100))), Hex(FinishedBytes(hmac, digest)));
}

TEST(Hmac, FinishLeavesItReadyForTheNextMessage) {
  TShaDigest digest;
  THmac hmac(digest, Pattern(64).data(), 64);
  for (int length : {3, 64, 1, 200}) {
    Feed(hmac, Pattern(length));
    EXPECT_EQ(Hex(MacOf<TShaDigest>(Pattern(64), Pattern(length))),
              Hex(FinishedBytes(hmac, digest)))
        << length;
  }
}

// What was fed before stays in the digest, and the key follows it once more.
TEST(Hmac, ResetLeavesTheDigestAlone) {
  const Bytes key = Pattern(10), first = Pattern(30), second = ToBytes("abc");
  TMd5Digest digest;
  THmac hmac(digest, key.data(), 10);
  Feed(hmac, first);
  const Bytes before = Snapshot(digest);
  hmac.Reset();
  EXPECT_EQ(before, Snapshot(digest));
  Feed(hmac, second);
  const Bytes started = Joined(PaddedKey(key, 0x36), first);
  const Bytes inner = DigestOf<TMd5Digest>(Joined(started, Joined(PaddedKey(key, 0x36), second)));
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(Joined(PaddedKey(key, 0x5c), inner))),
            Hex(FinishedBytes(hmac, digest)));
}

TEST(Hmac, ResetOfBothDiscardsTheMessage) {
  TMd5Digest digest;
  THmac hmac(digest, Pattern(10).data(), 10);
  Feed(hmac, Pattern(99));
  hmac.Reset();
  digest.Reset();
  Feed(hmac, ToBytes("abc"));
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(10), ToBytes("abc"))), Hex(FinishedBytes(hmac, digest)));
}

// A digest of a host's own: it notes what Finish is called with, writes a different number of bytes
// each time and keeps what it was fed, which is never a whole block after the padded key.
class TNotes : public TMessageDigest {
 public:
  int Finish(unsigned char* digest, int length) override {
    lengths.push_back(length);
    targets.push_back(digest);
    const int size = 4 + static_cast<int>(lengths.size());
    memset(digest, 0xa0 + size, static_cast<size_t>(size));
    tails.push_back(Bytes(buffer, buffer + bitCount[0] / 8 % 64));
    Reset();
    return size;
  }
  int GetDigestSize() const override { return 99; }
  void Transform(unsigned int*, const unsigned char* block) override {
    blocks.push_back(Bytes(block, block + 64));
  }

  std::vector<int> lengths;
  std::vector<const unsigned char*> targets;
  std::vector<Bytes> blocks, tails;
};

TEST(Hmac, DrivesTheDigestThroughUpdateAndFinishAlone) {
  TNotes digest;
  THmac hmac(digest, Pattern(17).data(), 17);
  hmac.Update(Pattern(7).data(), 3);
  hmac.Update(Pattern(7).data() + 3, 4);
  unsigned char mac[8];
  memset(mac, 0xee, sizeof(mac));
  EXPECT_EQ(6, hmac.Finish(mac, -77)) << "what the second Finish returned";
  EXPECT_EQ((std::vector<int>{-77, -77}), digest.lengths);
  EXPECT_EQ((std::vector<const unsigned char*>{mac, mac}), digest.targets);
  EXPECT_EQ((std::vector<Bytes>{PaddedKey(Pattern(17), 0x36), PaddedKey(Pattern(17), 0x5c)}),
            digest.blocks);
  EXPECT_EQ((std::vector<Bytes>{Pattern(7), Bytes(5, 0xa5)}), digest.tails);
  EXPECT_EQ("a6a6a6a6a6a6eeee", Hex(mac, sizeof(mac)));
}

TEST(Hmac, FinishIgnoresItsLength) {
  const std::string expected = Hex(Model<TShaDigest>(Pattern(4), Pattern(70)));
  TShaDigest digest;
  THmac hmac(digest, Pattern(4).data(), 4);
  for (int length : {0, 1, -1, 19, 20, 21, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(length);
    Feed(hmac, Pattern(70));
    unsigned char mac[24];
    memset(mac, 0xee, sizeof(mac));
    EXPECT_EQ(20, hmac.Finish(mac, length));
    EXPECT_EQ(expected + "eeeeeeee", Hex(mac, sizeof(mac)));
  }
}

TEST(Hmac, ACopySharesTheDigest) {
  TMd5Digest digest;
  THmac hmac(digest, Pattern(12).data(), 12);
  Feed(hmac, ToBytes("ab"));
  THmac copy(hmac), assigned(digest, nullptr, 0);
  Feed(copy, ToBytes("c"));
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(12), ToBytes("abc"))), Hex(FinishedBytes(copy, digest)));
  assigned = copy;
  Feed(assigned, ToBytes("abc"));
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(12), ToBytes("abc"))),
            Hex(FinishedBytes(assigned, digest)));
}

// The same code and the same fields of the digest, whether it does its blocks at once or gets them
// one by one.
template <typename Digest>
void BlocksAtOnceLeaveWhatBlocksOneByOneLeave() {
  Random random;
  SCOPED_TRACE(random.Seed());
  kest_test::TShown<Digest> atOnce;
  kest_test::TNoted<Digest> oneByOne;
  for (int n = 0; n < 300; ++n) {
    const Bytes key = random.Bytes(random.Between(0, 64));
    THmac fast(atOnce, key.data(), LengthOf(key)), slow(oneByOne, key.data(), LengthOf(key));
    for (int messages = 0; messages < 2; ++messages) {
      for (int pieces = random.Between(0, 3); pieces > 0; --pieces) {
        const Bytes piece = random.Bytes(random.Between(0, n % 2 == 0 ? 300 : 70));
        Feed(fast, piece);
        Feed(slow, piece);
        ASSERT_EQ(oneByOne.Fields(), atOnce.Fields()) << "case " << n;
      }
      ASSERT_EQ(Hex(FinishedBytes(slow, oneByOne)), Hex(FinishedBytes(fast, atOnce))) << n;
      ASSERT_EQ(oneByOne.Fields(), atOnce.Fields()) << "case " << n;
    }
  }
}

TEST(Hmac, BlocksAtOnceLeaveWhatBlocksOneByOneLeave) {
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TMd4Digest>();
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TMd5Digest>();
  BlocksAtOnceLeaveWhatBlocksOneByOneLeave<TShaDigest>();
}

// Messages of every length: one last block or two.
TEST(Hmac, MatchesTheModelForEveryLength) {
  for (int length = 0; length <= 200; ++length) {
    const Bytes key = Pattern(length % 65), message = Pattern(length);
    ASSERT_EQ(Hex(Model<TMd4Digest>(key, message)), Hex(MacOf<TMd4Digest>(key, message)));
    ASSERT_EQ(Hex(Model<TMd5Digest>(key, message)), Hex(MacOf<TMd5Digest>(key, message)));
    ASSERT_EQ(Hex(Model<TShaDigest>(key, message)), Hex(MacOf<TShaDigest>(key, message)));
  }
}

// A host's class with the library's Transform and a Finish of its own, which passes the call on.
class TOwnFinish : public TMd5Digest {
 public:
  int Finish(unsigned char* digest, int length) override {
    lengths.push_back(length);
    return TMd5Digest::Finish(digest, length);
  }
  std::vector<int> lengths;
};

// And one that says that its digest is shorter than what Finish writes.
class TShortDigest : public TMd5Digest {
 public:
  int GetDigestSize() const override { return 9; }
};

TEST(Hmac, CallsAFinishOfTheHosts) {
  TOwnFinish digest;
  THmac hmac(digest, Pattern(20).data(), 20);
  Feed(hmac, Pattern(70));
  unsigned char mac[16];
  EXPECT_EQ(16, hmac.Finish(mac, -3));
  EXPECT_EQ((std::vector<int>{-3, -3}), digest.lengths);
  EXPECT_EQ(Hex(Model<TMd5Digest>(Pattern(20), Pattern(70))), Hex(mac, sizeof(mac)));
}

TEST(Hmac, AsksADigestOfTheHostsForItsSize) {
  TShortDigest digest;
  THmac hmac(digest, Pattern(20).data(), 20);
  Feed(hmac, Pattern(70));
  unsigned char mac[16];
  EXPECT_EQ(9, hmac.Finish(mac, 0));
  Bytes inner = DigestOf<TMd5Digest>(Joined(PaddedKey(Pattern(20), 0x36), Pattern(70)));
  inner.resize(9);
  EXPECT_EQ(Hex(DigestOf<TMd5Digest>(Joined(PaddedKey(Pattern(20), 0x5c), inner))),
            Hex(mac, sizeof(mac)));
}

// Offsets of the private fields are pinned beside the class; here is what they hold.
TEST(Hmac, HoldsThePaddedKeys) {
  constexpr size_t kStarted = sizeof(void*), kInner = kStarted + 1, kOuter = kInner + 64;
  static_assert(sizeof(THmac) == (sizeof(void*) == 4 ? 136 : 144));
  static_assert(!std::is_polymorphic_v<THmac>);
  TMd5Digest digest;
  THmac hmac(digest, Pattern(40).data(), 40);
  TMessageDigest* held;
  memcpy(&held, static_cast<const void*>(&hmac), sizeof(held));
  EXPECT_EQ(&digest, held);
  EXPECT_EQ(0, Snapshot(hmac)[kStarted]);
  const Bytes bytes = Snapshot(hmac);
  const auto inner = bytes.begin() + kInner, outer = bytes.begin() + kOuter;
  EXPECT_EQ(PaddedKey(Pattern(40), 0x36), Bytes(inner, inner + 64));
  EXPECT_EQ(PaddedKey(Pattern(40), 0x5c), Bytes(outer, outer + 64));
  hmac.Update(nullptr, 0);
  EXPECT_EQ(1, Snapshot(hmac)[kStarted]);
  hmac.Reset();
  EXPECT_EQ(0, Snapshot(hmac)[kStarted]);
}

TEST(Hmac, TheDestructorWipesTheKeys) {
  alignas(THmac) unsigned char memory[sizeof(THmac)];
  TMd5Digest digest;
  THmac* hmac = ::new (memory) THmac(digest, Pattern(64).data(), 64);
  const unsigned char* keys = memory + sizeof(void*) + 1;
  EXPECT_NE(Bytes(128), Bytes(keys, keys + 128));
  hmac->~THmac();
  EXPECT_EQ(Bytes(128), Bytes(keys, keys + 128));
}

// After Finish nothing of the key is left in the digest.
TEST(Hmac, FinishLeavesNoKeyInTheDigest) {
  TMd5Digest digest;
  THmac hmac(digest, Pattern(64).data(), 64);
  Feed(hmac, ToBytes("abc"));
  FinishedBytes(hmac, digest);
  const Bytes bytes = Snapshot(digest);
  for (int pad : {0x36, 0x5c}) {
    const Bytes key = PaddedKey(Pattern(64), pad);
    for (size_t at = 0; at + 4 <= key.size(); ++at) {
      const auto piece = key.begin() + static_cast<ptrdiff_t>(at);
      EXPECT_EQ(bytes.end(), std::search(bytes.begin(), bytes.end(), piece, piece + 4)) << at;
    }
  }
}

template <typename Digest>
void MatchesTheModel() {
  Random random;
  SCOPED_TRACE(random.Seed());
  Digest digest;
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes key = random.Bytes(random.Between(0, 64));
    const Bytes message = random.Bytes(random.Between(0, 200));
    THmac hmac(digest, key.data(), LengthOf(key));
    int at = 0;
    do {
      const int piece = random.Between(0, LengthOf(message) - at);
      hmac.Update(message.data() + at, piece);
      at += piece;
    } while (at < LengthOf(message));
    ASSERT_EQ(Hex(Model<Digest>(key, message)), Hex(FinishedBytes(hmac, digest)))
        << "case " << n << ": " << Hex(key) << ' ' << Hex(message);
  }
}

TEST(Hmac, MatchesTheModelWithMd4) { MatchesTheModel<TMd4Digest>(); }
TEST(Hmac, MatchesTheModelWithMd5) { MatchesTheModel<TMd5Digest>(); }
TEST(Hmac, MatchesTheModelWithSha1) { MatchesTheModel<TShaDigest>(); }

}  // namespace
