#include <gtest/gtest.h>
#include <limits.h>
#include <stddef.h>
#include <string.h>

#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using kest_test::Hex;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

constexpr int kIndefinite = 0x7fffffff;

int LengthOf(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

// What a decoder gives for a buffer: the bytes taken, and the item with its value as an offset, -1
// for null.
struct Decoded {
  int taken, tag, length;
  ptrdiff_t value;
};

bool operator==(const Decoded& a, const Decoded& b) {
  return a.taken == b.taken && a.tag == b.tag && a.length == b.length && a.value == b.value;
}

std::ostream& operator<<(std::ostream& out, const Decoded& d) {
  return out << "taken " << d.taken << ", tag " << d.tag << ", length " << d.length << ", value at "
             << d.value;
}

constexpr Decoded kRefused = {0, 0, 0, -1};

Decoded Decode(const unsigned char* data, int length) {
  const unsigned char here = 0;
  KEST::SBerItem item = {0xee, -77, &here};
  const int taken = KestBerDecode(data, length, &item);
  return {taken, item.tag, item.length, item.value != nullptr ? item.value - data : -1};
}

Decoded Decode(const Bytes& bytes) { return Decode(bytes.data(), LengthOf(bytes)); }

// The rules one by one, in numbers that are wide enough.
Decoded DecodeModel(const unsigned char* data, long long length) {
  if (length < 2) return kRefused;
  const int first = data[1];
  const int octets = first > 0x80 ? first - 127 : 1;
  if (length < octets + 1) return kRefused;
  unsigned long long content = 0;
  if (first < 0x80) content = static_cast<unsigned int>(first);
  for (int i = 1; i < octets; ++i) content = (content * 256 + data[1 + i]) % 0x100000000ull;
  const long long total = octets + 1 + static_cast<long long>(content);
  if (length < total) return kRefused;
  return {static_cast<int>(total), data[0], first == 0x80 ? kIndefinite : static_cast<int>(content),
          octets + 1};
}

// An element with the given octets for its length, and count bytes of content: 1, 2, 3, ...
Bytes Element(unsigned char tag, const Bytes& lengthOctets, int count) {
  Bytes bytes = {tag};
  for (const unsigned char octet : lengthOctets) bytes.push_back(octet);
  for (int i = 1; i <= count; ++i) bytes.push_back(static_cast<unsigned char>(i));
  return bytes;
}

TEST(BerDecode, ReadsAShortForm) {
  const Bytes element = {0x30, 0x03, 0x02, 0x01, 0x05};
  EXPECT_EQ((Decoded{5, 0x30, 3, 2}), Decode(element));
  EXPECT_EQ(kRefused, Decode(element.data(), 4)) << "content cut short";
}

TEST(BerDecode, ReadsALongForm) {
  EXPECT_EQ((Decoded{260, 0x02, 256, 4}), Decode(Element(0x02, {0x82, 0x01, 0x00}, 256)));
  EXPECT_EQ(kRefused, Decode(Element(0x02, {0x82, 0x01, 0x00}, 255)));
}

TEST(BerDecode, TakesTheHeaderOfTheIndefiniteForm) {
  EXPECT_EQ((Decoded{2, 0x04, kIndefinite, 2}), Decode({0x04, 0x80}));
  EXPECT_EQ((Decoded{2, 0x24, kIndefinite, 2}), Decode({0x24, 0x80, 0x04, 0x01, 0xff, 0, 0}));
}

TEST(BerDecode, AnEmptyElementPointsBehindItsHeader) {
  EXPECT_EQ((Decoded{2, 0x05, 0, 2}), Decode({0x05, 0x00}));
  EXPECT_EQ((Decoded{3, 0x05, 0, 3}), Decode({0x05, 0x81, 0x00}));
  EXPECT_EQ((Decoded{6, 0x05, 0, 6}), Decode({0x05, 0x84, 0, 0, 0, 0, 0x01}));
}

TEST(BerDecode, TakesTheTagWhole) {
  for (int tag = 0; tag < 256; ++tag) {
    EXPECT_EQ((Decoded{3, tag, 1, 2}), Decode({static_cast<unsigned char>(tag), 0x01, 0xff}));
  }
}

TEST(BerDecode, ReadsOneElementAndNoMore) {
  EXPECT_EQ((Decoded{3, 0x02, 1, 2}), Decode({0x02, 0x01, 0x05, 0x02, 0x01, 0x06}));
}

// RFC 8017's RSAPublicKey of modulus 0x00c1 and exponent 3.
TEST(BerDecode, NestedElementsAreReadByCallingAgain) {
  const Bytes key = {0x30, 0x07, 0x02, 0x02, 0x00, 0xc1, 0x02, 0x01, 0x03};
  KEST::SBerItem sequence, item;
  ASSERT_EQ(9, KestBerDecode(key.data(), 9, &sequence));
  int taken = KestBerDecode(sequence.value, sequence.length, &item);
  EXPECT_EQ(4, taken);
  EXPECT_EQ("00c1", Hex(item.value, static_cast<size_t>(item.length)));
  EXPECT_EQ(3, KestBerDecode(sequence.value + taken, sequence.length - taken, &item));
  EXPECT_EQ("03", Hex(item.value, static_cast<size_t>(item.length)));
  EXPECT_EQ(0, KestBerDecode(sequence.value + 7, 0, &item));
}

TEST(BerDecode, LengthsBelowAHeaderAreNotLookedAt) {
  for (int length : {0, 1, -1, -2, INT_MIN}) {
    KEST::SBerItem item = {0xee, -77, &item.tag};
    EXPECT_EQ(0, KestBerDecode(nullptr, length, &item)) << length;
    EXPECT_EQ(0, item.tag);
    EXPECT_EQ(0, item.length);
    EXPECT_EQ(nullptr, item.value);
  }
}

// The content is not read, so a huge length can be claimed for a few bytes. Columns: header, bytes
// said to be there, what comes of it.
TEST(BerDecode, ComparesHugeLengthsWithoutOverflow) {
  const struct {
    Bytes header;
    int length;
    Decoded decoded;
  } rows[] = {
      {{0x04, 0x84, 0x7f, 0xff, 0xff, 0xf9}, INT_MAX, {INT_MAX, 4, 0x7ffffff9, 6}},
      {{0x04, 0x84, 0x7f, 0xff, 0xff, 0xf9}, INT_MAX - 1, kRefused},
      {{0x04, 0x84, 0x7f, 0xff, 0xff, 0xfa}, INT_MAX, kRefused},
      {{0x04, 0x84, 0x7f, 0xff, 0xff, 0xff}, INT_MAX, kRefused},
      {{0x04, 0x84, 0x80, 0x00, 0x00, 0x00}, INT_MAX, kRefused},
      {{0x04, 0x84, 0xff, 0xff, 0xff, 0xf9}, INT_MAX, kRefused},
      {{0x04, 0x84, 0xff, 0xff, 0xff, 0xfa}, INT_MAX, kRefused},  // the sum is 2^32
      {{0x04, 0x84, 0xff, 0xff, 0xff, 0xfb}, INT_MAX, kRefused},
      {{0x04, 0x84, 0xff, 0xff, 0xff, 0xff}, INT_MAX, kRefused},
      {{0x04, 0x84, 0xff, 0xff, 0xff, 0xff}, 6, kRefused},
      {{0x04, 0x83, 0xff, 0xff, 0xff}, INT_MAX, {0xffffff + 5, 4, 0xffffff, 5}},
      {{0x04, 0x83, 0xff, 0xff, 0xff}, 0xffffff + 4, kRefused},
      {{0x04, 0x85, 0xff, 0xff, 0xff, 0xff, 0xff}, INT_MAX, kRefused},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.decoded, Decode(row.header.data(), row.length)) << Hex(row.header);
    EXPECT_EQ(row.decoded, DecodeModel(row.header.data(), row.length)) << Hex(row.header);
  }
}

// What is shifted out at the top of 32 bits is lost, on purpose.
TEST(BerDecode, OnlyTheLastFourLengthOctetsCount) {
  EXPECT_EQ((Decoded{9, 0x04, 2, 7}), Decode(Element(0x04, {0x85, 0x01, 0, 0, 0, 0x02}, 2)));
  EXPECT_EQ((Decoded{12, 0x04, 2, 10}),
            Decode(Element(0x04, {0x88, 0xff, 0xff, 0xff, 0xff, 0, 0, 0, 0x02}, 2)));
  EXPECT_EQ(kRefused, Decode(Element(0x04, {0x85, 0x00, 0x01, 0, 0, 0x02}, 2)));
}

// Each short length and each number of length octets, with every length of content up to 300, in
// memory of exactly its size: whole, with bytes behind, and cut short anywhere.
TEST(BerDecode, ReadsEveryLengthForm) {
  for (int first = 0; first < 256; ++first) {
    SCOPED_TRACE(first);
    const int more = first > 0x80 ? first - 0x80 : 0;
    for (int content : {0, 1, 2, 127, 128, 255, 256, 300}) {
      if (first <= 0x80) content = first & 0x7f;
      if (more == 1 && content > 255) continue;
      Bytes octets(static_cast<size_t>(1 + more));
      octets[0] = static_cast<unsigned char>(first);
      if (more > 0) octets.back() = static_cast<unsigned char>(content);
      if (more > 1) octets[octets.size() - 2] = static_cast<unsigned char>(content >> 8);
      const Bytes element = Element(0x04, octets, content);
      const Decoded whole = {LengthOf(element), 4, first == 0x80 ? kIndefinite : content, 2 + more};
      ASSERT_EQ(whole, Decode(element));
      ASSERT_EQ(whole, Decode(Element(0x04, octets, content + 5)));
      for (int cut = 0; cut < LengthOf(element); ++cut) {
        ASSERT_EQ(kRefused, Decode(Bytes(element.begin(), element.begin() + cut))) << cut;
      }
      if (first <= 0x80) break;
    }
  }
}

// Every input of up to 3 bytes, in memory of exactly its size.
TEST(BerDecode, MatchesTheModelOnEveryShortInput) {
  for (size_t size = 0; size <= 3; ++size) {
    Bytes data(size);
    for (unsigned int n = 0; n >> (8 * size) == 0; ++n) {
      for (size_t i = 0; i < size; ++i) data[i] = static_cast<unsigned char>(n >> (8 * i));
      if (Decode(data) == DecodeModel(data.data(), LengthOf(data))) continue;
      FAIL() << Hex(data) << ": " << Decode(data);
    }
  }
}

// Every input of 4 to 6 bytes that are a tag and then bytes of which lengths are made.
TEST(BerDecode, MatchesTheModelOnTellingInputs) {
  const unsigned char telling[] = {0, 1, 2, 3, 0x7f, 0x80, 0x81, 0x82, 0x83, 0x84, 0x85, 0xff};
  for (size_t size = 4; size <= 6; ++size) {
    Bytes data(size, telling[0]);
    std::vector<size_t> digits(size);
    for (bool more = true; more;) {
      if (!(Decode(data) == DecodeModel(data.data(), LengthOf(data)))) {
        FAIL() << Hex(data) << ": " << Decode(data);
      }
      size_t i = 1;
      for (; i < size; ++i) {
        digits[i] = (digits[i] + 1) % sizeof(telling);
        data[i] = telling[digits[i]];
        if (digits[i] != 0) break;
      }
      more = i < size;
    }
  }
}

// Random headers, mostly of lengths that the buffer nearly holds.
TEST(BerDecode, MatchesTheModelOnRandomInput) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    Bytes data = random.Bytes(random.Between(0, 300));
    if (data.size() > 12 && n % 4 != 0) {
      const size_t more = random.Next() % 8 + 1;
      const unsigned int near = random.Next() % 16 + static_cast<unsigned int>(data.size()) - 12;
      data[1] = static_cast<unsigned char>(0x80 + more);
      for (size_t i = 0; i < more; ++i) {
        data[1 + more - i] = static_cast<unsigned char>(i < 4 ? near >> (8 * i) : random.Next());
      }
    }
    ASSERT_EQ(DecodeModel(data.data(), LengthOf(data)), Decode(data)) << n << ": " << Hex(data);
  }
}

// Encodes into memory of exactly size bytes. Returns the result and what the memory holds then.
struct Encoded {
  int written;
  std::string out;
};

bool operator==(const Encoded& a, const Encoded& b) {
  return a.written == b.written && a.out == b.out;
}

std::ostream& operator<<(std::ostream& out, const Encoded& e) {
  return out << e.written << ": " << e.out;
}

Encoded Encode(unsigned char tag, int length, const unsigned char* value, int size) {
  Bytes out(static_cast<size_t>(size), 0xee);
  const KEST::SBerItem item = {tag, length, value};
  const int written = KestBerEncode(out.data(), size, &item);
  return {written, Hex(out)};
}

Bytes Content(int length) { return Element(0, {}, length); }

TEST(BerEncode, WritesAShortForm) {
  const unsigned char value[] = {0x05};
  EXPECT_EQ((Encoded{3, "020105"}), Encode(0x02, 1, value, 3));
  EXPECT_EQ((Encoded{0, "eeee"}), Encode(0x02, 1, value, 2));
  EXPECT_EQ((Encoded{3, "020105ee"}), Encode(0x02, 1, value, 4));
  EXPECT_EQ((Encoded{2, "0500"}), Encode(0x05, 0, value, 2));
  EXPECT_EQ((Encoded{0, "ee"}), Encode(0x05, 0, value, 1));
}

TEST(BerEncode, WritesTheTagAsItIs) {
  for (int tag = 0; tag < 256; ++tag) {
    const unsigned char octet = static_cast<unsigned char>(tag);
    EXPECT_EQ((Encoded{2, Hex(&octet, 1) + "00"}), Encode(octet, 0, nullptr, 2));
  }
}

// The content stays as it is in out, but has to have room.
TEST(BerEncode, WithoutAValueWritesTheHeaderAlone) {
  EXPECT_EQ((Encoded{2, "3003eeeeee"}), Encode(0x30, 3, nullptr, 5));
  EXPECT_EQ((Encoded{0, "eeeeeeee"}), Encode(0x30, 3, nullptr, 4));
  EXPECT_EQ((Encoded{2, "0500"}), Encode(0x05, 0, nullptr, 2));
  EXPECT_EQ(3, Encode(0x30, 200, nullptr, 203).written);
  EXPECT_EQ(0, Encode(0x30, 200, nullptr, 202).written);
  EXPECT_EQ(4, Encode(0x30, 0x10000, nullptr, 0x10004).written);
  EXPECT_EQ(0, Encode(0x30, 0x10000, nullptr, 0x10003).written);
}

TEST(BerEncode, WritesTheIndefiniteFormWithoutContent) {
  const unsigned char value[] = {0x05};
  for (const unsigned char* each : {static_cast<const unsigned char*>(nullptr), value}) {
    EXPECT_EQ((Encoded{2, "2480ee"}), Encode(0x24, kIndefinite, each, 3));
    EXPECT_EQ((Encoded{2, "2480"}), Encode(0x24, kIndefinite, each, 2));
    EXPECT_EQ((Encoded{0, "ee"}), Encode(0x24, kIndefinite, each, 1));
  }
}

// Not the long form of X.690, on purpose. Columns: length, the header behind the tag.
TEST(BerEncode, WritesItsOwnLongForm) {
  const struct {
    int length;
    const char* header;
  } rows[] = {
      {0, "00"},           {1, "01"},           {127, "7f"},          {128, "8100"},
      {200, "8100"},       {255, "8100"},       {256, "8100"},        {0xffff, "8100"},
      {0x10000, "820000"}, {0x10001, "820001"}, {0x123456, "820056"}, {0xffffff, "8200ff"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.length);
    const std::string header = std::string("04") + row.header;
    const int headerSize = static_cast<int>(header.size() / 2);
    const Bytes content = Content(row.length);
    const int total = headerSize + row.length;
    const Encoded encoded = Encode(0x04, row.length, content.data() + 1, total);
    EXPECT_EQ(total, encoded.written);
    EXPECT_TRUE(encoded.out == header + Hex(content).substr(2));
    const Encoded refused = Encode(0x04, row.length, content.data() + 1, total - 1);
    EXPECT_EQ(0, refused.written);
    EXPECT_EQ(std::string::npos, refused.out.find_first_not_of('e')) << "nothing is written";
  }
}

// The rules one by one, with shifts that count modulo 32. Needs length < 2^24.
Bytes HeaderModel(unsigned char tag, int length) {
  const unsigned int n = length == kIndefinite ? 0 : static_cast<unsigned int>(length);
  unsigned int octets = 1;
  unsigned int first = length == kIndefinite ? 0x80 : n;
  if (n > 127) {
    octets = 2;
    if (n >= 0x10000) {
      while (n >> (8 * octets % 32) != 0) ++octets;
    }
    first = octets + 127;
  }
  Bytes header = {tag, static_cast<unsigned char>(first)};
  for (unsigned int k = 0; k + 1 < octets; ++k) {
    header.push_back(static_cast<unsigned char>(n >> ((24 + 8 * k) % 32)));
  }
  return header;
}

// Only the header is written, so a few bytes do.
TEST(BerEncode, MatchesTheModelOnEveryLength) {
  unsigned char out[8];
  for (int length = 0; length < 1 << 24; length += length < 0x20000 ? 1 : 251) {
    memset(out, 0xee, sizeof(out));
    const KEST::SBerItem item = {0x04, length, nullptr};
    Bytes expected = HeaderModel(0x04, length);
    const int header = LengthOf(expected);
    expected.resize(sizeof(out), 0xee);
    if (KestBerEncode(out, header + length - 1, &item) != 0 || out[0] != 0xee) {
      FAIL() << length << " into one byte less";
    }
    if (KestBerEncode(out, header + length, &item) != header ||
        memcmp(out, expected.data(), sizeof(out)) != 0) {
      FAIL() << length << ": " << Hex(out, sizeof(out));
    }
  }
}

TEST(BerEncode, RefusesLengthsThatItCannotWrite) {
  const unsigned char value[] = {0x05};
  for (int length : {1 << 24, (1 << 24) + 1, 1 << 30, INT_MAX - 1, -1, -2, INT_MIN}) {
    for (int size : {4, -1, INT_MAX, INT_MIN}) {
      Bytes out(4, 0xee);
      for (const unsigned char* each : {static_cast<const unsigned char*>(nullptr), value}) {
        const KEST::SBerItem item = {0x04, length, each};
        EXPECT_EQ(0, KestBerEncode(out.data(), size, &item)) << length << " into " << size;
        EXPECT_EQ("eeeeeeee", Hex(out));
      }
    }
  }
}

// The comparison is one of unsigned numbers, on purpose.
TEST(BerEncode, ASizeBelowZeroIsALargeOne) {
  const unsigned char value[] = {0x05};
  for (int size : {-1, -1000, INT_MIN}) {
    Bytes out(3, 0xee);
    const KEST::SBerItem item = {0x02, 1, value};
    EXPECT_EQ(3, KestBerEncode(out.data(), size, &item)) << size;
    EXPECT_EQ("020105", Hex(out));
  }
  const KEST::SBerItem item = {0x02, 1, value};
  EXPECT_EQ(0, KestBerEncode(nullptr, 0, &item));
}

// 00 01 02 ... in out, and the value at each place in it.
TEST(BerEncode, TheContentMayLieInOut) {
  for (int at = 0; at <= 8; ++at) {
    unsigned char out[16];
    for (int i = 0; i < 16; ++i) out[i] = static_cast<unsigned char>(i);
    const std::string content = Hex(out + at, 6);
    const KEST::SBerItem item = {0x04, 6, out + at};
    EXPECT_EQ(8, KestBerEncode(out, 8, &item));
    EXPECT_EQ("0406" + content, Hex(out, 8)) << at;
  }
}

TEST(Ber, LengthsUpTo127ComeBack) {
  for (int length = 0; length <= 127; ++length) {
    const Bytes content = Content(length);
    Bytes out(static_cast<size_t>(length + 2));
    const KEST::SBerItem item = {0x04, length, content.data() + 1};
    ASSERT_EQ(length + 2, KestBerEncode(out.data(), length + 2, &item));
    EXPECT_EQ((Decoded{length + 2, 4, length, 2}), Decode(out));
    EXPECT_EQ(Hex(content).substr(2), Hex(out).substr(4));
  }
}

// The decoder reads the odd long form as X.690 has it: a length of 0, or of one byte.
TEST(Ber, LongerOnesDoNot) {
  const struct {
    int length;
    Decoded decoded;
  } rows[] = {
      {128, {3, 4, 0, 3}},
      {200, {3, 4, 0, 3}},
      {0xffff, {3, 4, 0, 3}},
      {0x10005, {9, 4, 5, 4}},
  };
  for (const auto& row : rows) {
    Bytes out(static_cast<size_t>(row.length + 4));
    const KEST::SBerItem item = {0x04, row.length, nullptr};
    ASSERT_NE(0, KestBerEncode(out.data(), LengthOf(out), &item));
    EXPECT_EQ(row.decoded, Decode(out)) << row.length;
  }
}

TEST(Ber, TheItemIsLaidOutAsEver) {
  static_assert(sizeof(SBerItem) == (sizeof(void*) == 4 ? 12 : 16));
  static_assert(offsetof(SBerItem, tag) == 0 && offsetof(SBerItem, length) == 4 &&
                offsetof(SBerItem, value) == 8);
  static_assert(std::is_same_v<SBerItem, KEST::SBerItem>);
  static_assert(std::is_same_v<decltype(SBerItem::tag), unsigned char>);
  static_assert(std::is_same_v<decltype(SBerItem::length), int>);
  static_assert(std::is_same_v<decltype(SBerItem::value), const unsigned char*>);
  static_assert(std::is_trivial_v<SBerItem> && std::is_standard_layout_v<SBerItem>);
}

}  // namespace
