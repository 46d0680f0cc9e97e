#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <type_traits>
#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using KEST::TInetChecksum;
using kest_test::Hex;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

int LengthOf(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

unsigned short ChecksumOf(const Bytes& data) {
  return KestComputeChecksum(data.data(), LengthOf(data));
}

// RFC 1071 in numbers wide enough for every carry: the sum of the words, a last odd byte filled up
// with a zero, folded and complemented.
unsigned short Model(const unsigned char* data, size_t length) {
  unsigned long long sum = 0;
  for (size_t i = 0; i < length; ++i) sum += i % 2 == 0 ? data[i] * 256u : data[i];
  while (sum > 0xffff) sum = sum / 0x10000 + sum % 0x10000;
  return static_cast<unsigned short>(0xffff - sum);
}

unsigned short Model(const Bytes& data) { return Model(data.data(), data.size()); }

// RFC 1071, section 3.
const Bytes kRfc1071 = {0x00, 0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6, 0xf7};

// Columns: data, checksum.
TEST(InetChecksum, MatchesKnownValues) {
  const struct {
    Bytes data;
    int checksum;
  } rows[] = {
      {kRfc1071, 0xffff - 0xddf2},
      // Without its first byte, a zero, the words are swapped, and so is the sum (section 2 B).
      {{0x01, 0xf2, 0x03, 0xf4, 0xf5, 0xf6, 0xf7}, 0xffff - 0xf2dd},
      // An IPv4 header with its checksum field zero, and with the checksum in it.
      {{0x45, 0x00, 0x00, 0x73, 0x00, 0x00, 0x40, 0x00, 0x40, 0x11,
        0x00, 0x00, 0xc0, 0xa8, 0x00, 0x01, 0xc0, 0xa8, 0x00, 0xc7},
       0xb861},
      {{0x45, 0x00, 0x00, 0x73, 0x00, 0x00, 0x40, 0x00, 0x40, 0x11,
        0xb8, 0x61, 0xc0, 0xa8, 0x00, 0x01, 0xc0, 0xa8, 0x00, 0xc7},
       0x0000},
      // By hand.
      {{}, 0xffff},
      {{0x00}, 0xffff},
      {{0x01}, 0xfeff},
      {{0x01, 0x02}, 0xfefd},
      {{0x01, 0x02, 0x03}, 0xfbfd},
      {{0xff, 0xff}, 0x0000},
      {{0xff, 0xff, 0xff, 0xff}, 0x0000},
      {{0xff, 0xff, 0x00, 0x01}, 0xfffe},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.checksum, ChecksumOf(row.data)) << Hex(row.data);
    EXPECT_EQ(row.checksum, Model(row.data)) << Hex(row.data);
    TInetChecksum checksum;
    checksum.Update(row.data.data(), LengthOf(row.data));
    EXPECT_EQ(row.checksum, checksum.GetCurrent()) << Hex(row.data);
  }
}

// Every data of up to 3 bytes.
TEST(InetChecksum, MatchesTheModelOnAllShortData) {
  for (size_t size = 0; size <= 3; ++size) {
    Bytes data(size);
    for (unsigned int n = 0; n >> (8 * size) == 0; ++n) {
      for (size_t i = 0; i < size; ++i) data[i] = static_cast<unsigned char>(n >> (8 * i));
      if (ChecksumOf(data) != Model(data)) FAIL() << Hex(data) << ": " << ChecksumOf(data);
    }
  }
}

Bytes Pattern(int length) {
  Bytes bytes;
  for (int i = 0; i < length; ++i) bytes.push_back(static_cast<unsigned char>(201 + 57 * i));
  return bytes;
}

// Cut in three anywhere, odd places included. An empty piece is left out where the data so far is
// odd, since it would take a byte.
TEST(InetChecksum, SameChecksumForEverySplit) {
  for (int length : {1, 2, 7, 8, 41}) {
    const Bytes data = Pattern(length);
    for (int first = 0; first <= length; ++first) {
      for (int second = first; second <= length; ++second) {
        TInetChecksum checksum;
        checksum.Update(data.data(), first);
        if (second > first) checksum.Update(data.data() + first, second - first);
        if (length > second) checksum.Update(data.data() + second, length - second);
        ASSERT_EQ(Model(data), checksum.Finish()) << length << ": " << first << ", " << second;
      }
    }
    TInetChecksum checksum;
    for (const unsigned char& byte : data) checksum.Update(&byte, 1);
    EXPECT_EQ(Model(data), checksum.Finish()) << length << " byte by byte";
  }
}

TEST(InetChecksum, DataMayLieAtAnyAddress) {
  const Bytes data = Pattern(60);
  for (size_t at = 0; at < 8; ++at) {
    EXPECT_EQ(Model(data.data() + at, 50), KestComputeChecksum(data.data() + at, 50)) << at;
  }
}

// 00 01 f2 | nothing, but 03 is at its address: sum 0x0001 + 0xf200, then 0x03.
TEST(InetChecksum, AnEmptyPieceAfterAnOddLengthTakesAByte) {
  TInetChecksum checksum;
  checksum.Update(kRfc1071.data(), 3);
  EXPECT_EQ(0xffff - 0xf201, checksum.GetCurrent());
  checksum.Update(kRfc1071.data() + 3, 0);
  EXPECT_EQ(0xffff - 0xf204, checksum.GetCurrent()) << "the low half of the started word";
  checksum.Update(nullptr, 0);
  EXPECT_EQ(0xffff - 0xf204, checksum.GetCurrent()) << "once: the data is even now";
  checksum.Update(kRfc1071.data() + 4, 4);
  EXPECT_EQ(0xffff - 0xddf2, checksum.GetCurrent()) << "and the next byte is a high half";
}

TEST(InetChecksum, AnEmptyPieceAfterAnEvenLengthChangesNothing) {
  TInetChecksum checksum;
  checksum.Update(nullptr, 0);
  EXPECT_EQ(0xffff, checksum.GetCurrent());
  checksum.Update(kRfc1071.data(), 4);
  checksum.Update(nullptr, 0);
  checksum.Update(kRfc1071.data() + 4, 4);
  EXPECT_EQ(0xffff - 0xddf2, checksum.GetCurrent());
}

TEST(InetChecksum, LengthsBelowZeroDoNothing) {
  for (int before : {0, 3, 4}) {
    TInetChecksum checksum;
    checksum.Update(kRfc1071.data(), before);
    const unsigned short current = checksum.GetCurrent();
    for (int length : {-1, -2, -3, INT_MIN}) checksum.Update(nullptr, length);
    EXPECT_EQ(current, checksum.GetCurrent()) << before;
    checksum.Update(kRfc1071.data() + before, 8 - before);
    EXPECT_EQ(0xffff - 0xddf2, checksum.GetCurrent()) << before << ": odd or even is kept too";
  }
  for (int length : {-1, INT_MIN}) EXPECT_EQ(0xffff, KestComputeChecksum(nullptr, length));
}

TEST(InetChecksum, FinishStartsAgain) {
  for (int length : {8, 7}) {
    TInetChecksum checksum;
    checksum.Update(kRfc1071.data(), length);
    const unsigned short current = checksum.GetCurrent();
    EXPECT_EQ(current, checksum.GetCurrent()) << "asking changes nothing";
    EXPECT_EQ(current, checksum.Finish());
    EXPECT_EQ(0xffff, checksum.GetCurrent());
    checksum.Update(kRfc1071.data(), 8);
    EXPECT_EQ(0xffff - 0xddf2, checksum.Finish()) << "the next data starts with a high half";
  }
}

TEST(InetChecksum, ResetDiscardsTheData) {
  for (int length : {7, 8}) {
    TInetChecksum checksum;
    checksum.Update(kRfc1071.data(), length);
    checksum.Reset();
    EXPECT_EQ(0xffff, checksum.GetCurrent());
    checksum.Update(kRfc1071.data(), 8);
    EXPECT_EQ(0xffff - 0xddf2, checksum.GetCurrent());
  }
}

// From the checksum of every prefix on.
TEST(InetChecksum, ContinuesFromAStoredChecksum) {
  const Bytes data = Pattern(33);
  for (int prefix = 0; prefix < 33; ++prefix) {
    TInetChecksum checksum;
    checksum.Update(Pattern(5).data(), 5);  // forgotten, odd length included
    checksum.SetCurrent(KestComputeChecksum(data.data(), prefix), prefix);
    EXPECT_EQ(KestComputeChecksum(data.data(), prefix), checksum.GetCurrent());
    checksum.Update(data.data() + prefix, 33 - prefix);
    EXPECT_EQ(Model(data), checksum.Finish()) << prefix;
  }
}

TEST(InetChecksum, SetCurrentTakesEveryChecksum) {
  TInetChecksum checksum;
  for (int value = 0; value <= 0xffff; ++value) {
    checksum.SetCurrent(static_cast<unsigned short>(value), 0);
    ASSERT_EQ(value, checksum.GetCurrent());
  }
}

// Columns: length of what was stored, checksum after one more byte 01.
TEST(InetChecksum, SetCurrentLooksWhetherTheLengthIsOdd) {
  const struct {
    int length, checksum;
  } rows[] = {
      {0, 0xfeff},  {1, 0xfffe},  {2, 0xfeff},           {INT_MAX, 0xfffe},
      {-1, 0xfffe}, {-2, 0xfeff}, {INT_MIN + 1, 0xfffe}, {INT_MIN, 0xfeff},
  };
  for (const auto& row : rows) {
    const unsigned char one = 1;
    TInetChecksum checksum;
    checksum.SetCurrent(0xffff, row.length);
    checksum.Update(&one, 1);
    EXPECT_EQ(row.checksum, checksum.GetCurrent()) << row.length;
  }
}

// 65537 words of 0xffff are 2^32 - 1, the most that 32 bits hold. One word more wraps to 0xfffe and
// loses a carry, on purpose. A sum that is not 0 at the start leaves room for one word less, and
// the low half of a word for one byte less again.
TEST(InetChecksum, CarriesOfOneCallHave32Bits) {
  const Bytes ones(131078, 0xff);
  EXPECT_EQ(0x0000, KestComputeChecksum(ones.data(), 131074));
  EXPECT_EQ(0x0001, KestComputeChecksum(ones.data(), 131076)) << "0x0000 is the true one";
  TInetChecksum checksum;
  checksum.Update(ones.data(), 131076 / 2);
  checksum.Update(ones.data(), 131076 / 2);
  EXPECT_EQ(0x0000, checksum.Finish()) << "each Update folds its carries";
  checksum.SetCurrent(0x0000, 0);
  checksum.Update(ones.data(), 131074);
  EXPECT_EQ(0x0001, checksum.Finish()) << "0x0000 is the true one";
  checksum.SetCurrent(0x0000, 1);
  checksum.Update(ones.data(), 131073);
  EXPECT_EQ(0xff01, checksum.Finish()) << "0x0000 is the true one";
}

// The worst case of the limit that is documented: all ones on top of all ones, odd or even. With an
// odd start they are the low half, 65535 words and the high half, which is the same sum.
TEST(InetChecksum, A128KiBPieceIsAlwaysRight) {
  const Bytes ones(131072, 0xff);
  for (int before : {0, 1}) {
    TInetChecksum checksum;
    checksum.SetCurrent(0x0000, before);
    checksum.Update(ones.data(), 131072);
    EXPECT_EQ(0x0000, checksum.Finish()) << before;
  }
}

TEST(InetChecksum, MatchesTheModelInRandomPieces) {
  Random random;
  SCOPED_TRACE(random.Seed());
  TInetChecksum checksum;
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes data = random.Bytes(random.Between(0, n % 100 == 0 ? 5000 : 100));
    for (int at = 0; at < LengthOf(data);) {
      const int piece = random.Between(1, LengthOf(data) - at);
      checksum.Update(data.data() + at, piece);
      at += piece;
    }
    ASSERT_EQ(Model(data), checksum.GetCurrent()) << "case " << n << ": " << Hex(data);
    ASSERT_EQ(Model(data), checksum.Finish());
    ASSERT_EQ(Model(data), ChecksumOf(data));
  }
}

// Offsets of the private fields are pinned beside the class; here is what they hold.
TEST(InetChecksum, HoldsAFoldedSum) {
  static_assert(sizeof(TInetChecksum) == 8 && !std::is_polymorphic_v<TInetChecksum>);
  static_assert(std::is_trivially_copyable_v<TInetChecksum>);
  const auto sumOf = [](const TInetChecksum& checksum) {
    unsigned int sum;
    memcpy(&sum, &checksum, sizeof(sum));
    return sum;
  };
  const auto isOdd = [](const TInetChecksum& checksum) {
    return reinterpret_cast<const unsigned char*>(&checksum)[4] != 0;
  };
  TInetChecksum checksum;
  EXPECT_EQ(0u, sumOf(checksum));
  EXPECT_FALSE(isOdd(checksum));
  checksum.Update(kRfc1071.data(), 8);
  EXPECT_EQ(0xddf2u, sumOf(checksum));
  checksum.Update(kRfc1071.data(), 7);
  EXPECT_EQ(0xbaeeu, sumOf(checksum));
  EXPECT_TRUE(isOdd(checksum));
  checksum.SetCurrent(0x1234, 2);
  EXPECT_EQ(0xedcbu, sumOf(checksum));
  EXPECT_FALSE(isOdd(checksum));
}

TEST(InetChecksum, ACopyGoesOnFromTheSameState) {
  TInetChecksum checksum;
  checksum.Update(kRfc1071.data(), 3);
  TInetChecksum copy(checksum);
  checksum.Reset();
  copy.Update(kRfc1071.data() + 3, 5);
  EXPECT_EQ(0xffff - 0xddf2, copy.Finish());
}

}  // namespace
