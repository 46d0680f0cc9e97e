#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <iterator>
#include <ostream>
#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"
#include "support/text.h"

using kest_test::Hex;
using kest_test::Random;
using kest_test::Units;

namespace {

using Bytes = std::vector<unsigned char>;
using Text = std::vector<unsigned short>;

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned short kUntouched = 0xeeee;

Bytes ToBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

// In memory that ends with the terminating zero, so that reading on is found out.
Text ToText(const std::u16string& text) { return Text(Units(text), Units(text) + text.size() + 1); }

std::u16string Widen(const std::string& text) { return std::u16string(text.begin(), text.end()); }

std::string Narrow(const Text& text) {
  std::string narrow;
  for (const unsigned short unit : text)
    narrow.push_back(unit < 128 ? static_cast<char>(unit) : '?');
  return narrow;
}

// Encodes into exactly size units, which hold what was written; the rest is kUntouched.
struct Encoded {
  int written;
  Text text;
};

Encoded Encode(const Bytes& data, int size) {
  Encoded encoded = {0, Text(static_cast<size_t>(size), kUntouched)};
  encoded.written =
      KestBinToBase64(data.data(), static_cast<int>(data.size()), encoded.text.data(), size);
  return encoded;
}

// With just enough room. The terminating zero is checked and left out.
std::string EncodedText(const Bytes& data) {
  const int size = static_cast<int>((data.size() + 2) / 3 * 4 + 1);
  Encoded encoded = Encode(data, size);
  EXPECT_EQ(size - 1, encoded.written);
  EXPECT_EQ(0, encoded.text.back());
  encoded.text.pop_back();
  return Narrow(encoded.text);
}

// Decodes into exactly size bytes. Returns the result and what the memory holds then, 0xee where
// nothing was written.
struct Decoded {
  int written;
  std::string out;
};

bool operator==(const Decoded& a, const Decoded& b) {
  return a.written == b.written && a.out == b.out;
}

std::ostream& operator<<(std::ostream& out, const Decoded& d) {
  return out << d.written << ": " << d.out;
}

Decoded Decode(const Text& text, int size) {
  Bytes out(static_cast<size_t>(size), 0xee);
  const int written = KestBase64ToBin(text.data(), out.data(), size);
  return {written, Hex(out)};
}

Decoded Decode(const std::u16string& text, int size) { return Decode(ToText(text), size); }

// The rules one by one. text ends with a zero.
Decoded DecodeModel(const Text& text, int size) {
  Bytes out(static_cast<size_t>(size), 0xee);
  int written = 0;
  for (size_t at = 0; text[at] != 0;) {
    unsigned int value = 0;
    int bytes = 3;
    for (int count = 0; count < 4; ++count, ++at) {
      const unsigned short unit = text[at];
      const char* found = unit < 128 && unit != 0 ? strchr(kAlphabet, unit) : nullptr;
      if (found != nullptr) {
        value = value * 64 + static_cast<unsigned int>(found - kAlphabet);
      } else if (unit == '=' && count >= 2) {
        --bytes;
        value /= 4;
      } else {
        return {0, Hex(out)};
      }
    }
    if (size < written + bytes) return {0, Hex(out)};
    for (int i = bytes - 1; i >= 0; --i) {
      out[static_cast<size_t>(written++)] = static_cast<unsigned char>(value >> (8 * i));
    }
  }
  return {written, Hex(out)};
}

// Columns: bytes, text.
constexpr struct {
  const char* bytes;
  const char* text;
} kVectors[] = {
    // RFC 4648, section 10.
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
    // The three lengths of a last group.
    {"M", "TQ=="},
    {"Ma", "TWE="},
    {"Man", "TWFu"},
    // RFC 4648, section 9.
    {"\x14\xfb\x9c\x03\xd9\x7e", "FPucA9l+"},
    {"\x14\xfb\x9c\x03\xd9", "FPucA9k="},
    {"\x14\xfb\x9c\x03", "FPucAw=="},
};

TEST(BinToBase64, MatchesRfc4648) {
  for (const auto& row : kVectors) {
    EXPECT_EQ(row.text, EncodedText(ToBytes(row.bytes)));
  }
}

TEST(Base64ToBin, MatchesRfc4648) {
  for (const auto& row : kVectors) {
    const Bytes bytes = ToBytes(row.bytes);
    const int size = static_cast<int>(bytes.size());
    EXPECT_EQ((Decoded{size, Hex(bytes)}), Decode(Widen(row.text), size)) << row.bytes;
  }
}

// The bytes 0 to 255, as coreutils' base64 -w 0 has them.
constexpr char kAllBytes[] =
    "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8gISIjJCUmJygpKissLS4vMDEyMzQ1Njc4OTo7PD0+P0BB"
    "QkNERUZHSElKS0xNTk9QUVJTVFVWV1hZWltcXV5fYGFiY2RlZmdoaWprbG1ub3BxcnN0dXZ3eHl6e3x9fn+AgYKD"
    "hIWGh4iJiouMjY6PkJGSk5SVlpeYmZqbnJ2en6ChoqOkpaanqKmqq6ytrq+wsbKztLW2t7i5uru8vb6/wMHCw8TF"
    "xsfIycrLzM3Oz9DR0tPU1dbX2Nna29zd3t/g4eLj5OXm5+jp6uvs7e7v8PHy8/T19vf4+fr7/P3+/w==";

TEST(BinToBase64, MatchesCoreutilsOnEveryByte) {
  Bytes bytes;
  for (int i = 0; i < 256; ++i) bytes.push_back(static_cast<unsigned char>(i));
  EXPECT_EQ(kAllBytes, EncodedText(bytes));
  Text text(kAllBytes, kAllBytes + sizeof(kAllBytes));
  EXPECT_EQ((Decoded{256, Hex(bytes)}), Decode(text, 256));
}

// Room for the text and its terminator, or nothing is written.
TEST(BinToBase64, NeedsRoomForTheTerminator) {
  for (const auto& row : kVectors) {
    const Bytes bytes = ToBytes(row.bytes);
    const int need = static_cast<int>(strlen(row.text));
    for (int size = 0; size <= need; ++size) {
      const Encoded encoded = Encode(bytes, size);
      EXPECT_EQ(0, encoded.written) << row.bytes << " into " << size;
      EXPECT_EQ(Text(static_cast<size_t>(size), kUntouched), encoded.text);
    }
    const Encoded roomy = Encode(bytes, need + 3);
    EXPECT_EQ(need, roomy.written);
    Text expected = ToText(Widen(row.text));
    expected.insert(expected.end(), 2, kUntouched);
    EXPECT_EQ(expected, roomy.text) << "nothing behind the terminator";
  }
}

TEST(BinToBase64, NoBytesAreATerminator) {
  unsigned short text[2] = {kUntouched, kUntouched};
  EXPECT_EQ(0, KestBinToBase64(nullptr, 0, text, 1));
  EXPECT_EQ(0, text[0]);
  EXPECT_EQ(kUntouched, text[1]);
  for (int size : {0, -1, INT_MIN}) EXPECT_EQ(0, KestBinToBase64(nullptr, 0, nullptr, size));
}

// Nothing is read or written, so no memory has to be there. A text of 4 * 536870911 = 2147483644
// units is the longest that an int counts.
TEST(BinToBase64, RefusesImpossibleLengths) {
  for (int length : {-1, -2, -3, -4, INT_MIN}) {
    unsigned short text[2] = {kUntouched, kUntouched};
    EXPECT_EQ(0, KestBinToBase64(nullptr, length, text, 2)) << length;
    EXPECT_EQ(kUntouched, text[0]);
    EXPECT_EQ(0, KestBinToBase64(nullptr, length, nullptr, INT_MAX)) << length;
  }
  for (int length : {1610612734, 1610612735, 1610612736, INT_MAX - 2, INT_MAX - 1, INT_MAX}) {
    for (int size : {0, 1, INT_MAX - 1, INT_MAX, -1, INT_MIN}) {
      EXPECT_EQ(0, KestBinToBase64(nullptr, length, nullptr, size)) << length << " into " << size;
    }
  }
  for (int length : {1610612731, 1610612733}) {
    EXPECT_EQ(0, KestBinToBase64(nullptr, length, nullptr, 2147483644)) << length;
  }
  for (int length : {1, 3, 1610612733}) {
    for (int size : {-1, INT_MIN}) EXPECT_EQ(0, KestBinToBase64(nullptr, length, nullptr, size));
  }
}

TEST(BinToBase64, WritesNoLineBreaks) {
  EXPECT_EQ(std::string(4000, 'A'), EncodedText(Bytes(3000)));
  EXPECT_EQ(std::string(4000, '/'), EncodedText(Bytes(3000, 0xff)));
}

// All groups of three bytes whose first is given, one after another, in one call each way.
void AllGroupsComeBack(int first) {
  constexpr int kGroups = 0x10000;
  Bytes data, back(3 * kGroups);
  Text text(4 * kGroups + 1);
  for (int i = 0; i < kGroups; ++i) {
    data.push_back(static_cast<unsigned char>(first));
    data.push_back(static_cast<unsigned char>(i >> 8));
    data.push_back(static_cast<unsigned char>(i));
  }
  ASSERT_EQ(4 * kGroups, KestBinToBase64(data.data(), 3 * kGroups, text.data(), 4 * kGroups + 1));
  for (int i = 0; i < kGroups; ++i) {
    const int bits = first << 16 | i;
    const unsigned short* group = &text[static_cast<size_t>(4 * i)];
    if (group[0] != kAlphabet[bits >> 18] || group[1] != kAlphabet[bits >> 12 & 63] ||
        group[2] != kAlphabet[bits >> 6 & 63] || group[3] != kAlphabet[bits & 63]) {
      FAIL() << bits;
    }
  }
  ASSERT_EQ(0, text.back());
  ASSERT_EQ(3 * kGroups, KestBase64ToBin(text.data(), back.data(), 3 * kGroups));
  ASSERT_TRUE(data == back) << first;
}

// All 2^24.
TEST(Base64, EveryGroupOfThreeBytesComesBack) {
  for (int first = 0; first < 256; ++first) AllGroupsComeBack(first);
}

TEST(Base64, EveryShortGroupComesBack) {
  for (int i = 0; i < 0x100; ++i) {
    const Bytes one = {static_cast<unsigned char>(i)};
    const std::string text = {kAlphabet[i >> 2], kAlphabet[i << 4 & 63], '=', '='};
    ASSERT_EQ(text, EncodedText(one));
    ASSERT_EQ((Decoded{1, Hex(one)}), Decode(Widen(text), 1));
  }
  for (int i = 0; i < 0x10000; ++i) {
    const Bytes two = {static_cast<unsigned char>(i >> 8), static_cast<unsigned char>(i)};
    const std::string text = {kAlphabet[i >> 10], kAlphabet[i >> 4 & 63], kAlphabet[i << 2 & 63],
                              '='};
    ASSERT_EQ(text, EncodedText(two));
    ASSERT_EQ((Decoded{2, Hex(two)}), Decode(Widen(text), 2));
  }
}

// Columns: text, bytes written with room for 6, what is then in the memory.
TEST(Base64ToBin, TakesAndRefusesOddText) {
  const struct {
    const char16_t* text;
    Decoded decoded;
  } rows[] = {
      {u"", {0, "eeeeeeeeeeee"}},
      // Groups cut short.
      {u"T", {0, "eeeeeeeeeeee"}},
      {u"TW", {0, "eeeeeeeeeeee"}},
      {u"TWF", {0, "eeeeeeeeeeee"}},
      {u"TQ=", {0, "eeeeeeeeeeee"}},
      {u"=", {0, "eeeeeeeeeeee"}},
      {u"TWFuT", {0, "4d616eeeeeee"}},
      {u"TWFuTQ=", {0, "4d616eeeeeee"}},
      // Units outside the alphabet; what was decoded before stays.
      {u"TW Fu", {0, "eeeeeeeeeeee"}},
      {u" TWFu", {0, "eeeeeeeeeeee"}},
      {u"TWFu\n", {0, "4d616eeeeeee"}},
      {u"TWFu\r\nTWFu", {0, "4d616eeeeeee"}},
      {u"TWFu TWFu", {0, "4d616eeeeeee"}},
      {u"TWF-", {0, "eeeeeeeeeeee"}},
      {u"TWF_", {0, "eeeeeeeeeeee"}},
      {u"TWF\u0175", {0, "eeeeeeeeeeee"}},       // "u" + 0x100
      {u"\u0154WFu", {0, "eeeeeeeeeeee"}},       // "T" + 0x100
      {u"TW\u013d\u013d", {0, "eeeeeeeeeeee"}},  // "=" + 0x100
      {u"TWF\uffff", {0, "eeeeeeeeeeee"}},
      // "=" in the first and the second place.
      {u"=AAA", {0, "eeeeeeeeeeee"}},
      {u"A=AA", {0, "eeeeeeeeeeee"}},
      {u"T===", {0, "eeeeeeeeeeee"}},
      {u"====", {0, "eeeeeeeeeeee"}},
      // A letter behind a "=", on purpose: a = 26, b = 27 and c = 28 give
      // (26 * 64 + 27) / 4 * 64 + 28 = 0x699c.
      {u"ab=c", {2, "699ceeeeeeee"}},
      {u"TQ=A", {2, "4d00eeeeeeee"}},
      // Groups behind a padded one, on purpose.
      {u"TQ==TWFu", {4, "4d4d616eeeee"}},
      {u"TWE=TQ==", {3, "4d614deeeeee"}},
      {u"TQ==TQ==TQ==", {3, "4d4d4deeeeee"}},
      // Bits that the padding cuts off need not be 0.
      {u"TR==", {1, "4deeeeeeeeee"}},
      {u"Tf==", {1, "4deeeeeeeeee"}},
      {u"TWF=", {2, "4d61eeeeeeee"}},
      {u"TWH=", {2, "4d61eeeeeeee"}},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(Narrow(ToText(row.text)));
    EXPECT_EQ(row.decoded, Decode(row.text, 6));
    EXPECT_EQ(row.decoded, DecodeModel(ToText(row.text), 6));
  }
}

TEST(Base64ToBin, NullIsEmptyText) {
  unsigned char out = 0xee;
  EXPECT_EQ(0, KestBase64ToBin(nullptr, &out, 1));
  EXPECT_EQ(0xee, out);
}

// A group that does not fit is not begun; those before it stay.
TEST(Base64ToBin, StopsAtTheGroupThatDoesNotFit) {
  const char16_t* text = u"TWFuTWFuTWE=";
  for (int size = 0; size < 8; ++size) {
    const int whole = size >= 6 ? 6 : size >= 3 ? 3 : 0;
    const std::string out = std::string("4d616e4d616e").substr(0, static_cast<size_t>(2 * whole)) +
                            std::string(static_cast<size_t>(2 * (size - whole)), 'e');
    EXPECT_EQ((Decoded{0, out}), Decode(text, size)) << size;
  }
  EXPECT_EQ((Decoded{8, "4d616e4d616e4d61"}), Decode(text, 8));
  EXPECT_EQ((Decoded{8, "4d616e4d616e4d61ee"}), Decode(text, 9));
  EXPECT_EQ((Decoded{1, "4d"}), Decode(u"TQ==", 1)) << "padding needs no room";
  EXPECT_EQ((Decoded{0, "ee"}), Decode(u"TWE=", 1));
  for (int size : {0, -1, -3, INT_MIN}) {
    EXPECT_EQ(0, KestBase64ToBin(ToText(u"TQ==").data(), nullptr, size)) << size;
    EXPECT_EQ(0, KestBase64ToBin(ToText(u"").data(), nullptr, size)) << size;
  }
}

// Every unit in every place of a group.
TEST(Base64ToBin, KnowsItsAlphabet) {
  for (size_t place = 0; place < 4; ++place) {
    Text text = ToText(u"TWFu");
    for (int unit = 0; unit < 0x10000; ++unit) {
      text[place] = static_cast<unsigned short>(unit);
      unsigned char out[3] = {0xee, 0xee, 0xee};
      const int written = KestBase64ToBin(text.data(), out, 3);
      const Decoded expected = DecodeModel(text, 3);
      if (written != expected.written || Hex(out, 3) != expected.out) {
        FAIL() << unit << " in place " << place << ": " << written << ' ' << Hex(out, 3);
      }
    }
  }
}

// Every text of up to 8 units made of these, with room for 4 bytes, in memory of exactly its size.
TEST(Base64ToBin, MatchesTheModelOnEveryTellingText) {
  const unsigned short telling[] = {'A', '/', '=', 'g', 0x100 + 'A', ' '};
  const size_t base = 4;  // of these, in both groups; all of them in the first
  for (size_t length = 0; length <= 8; ++length) {
    Text text(length + 1, telling[0]);
    text.back() = 0;
    std::vector<size_t> digits(length);
    for (bool more = true; more;) {
      const Decoded expected = DecodeModel(text, 4), decoded = Decode(text, 4);
      if (!(decoded == expected)) FAIL() << Narrow(text) << ": " << decoded;
      size_t i = 0;
      for (; i < length; ++i) {
        digits[i] = (digits[i] + 1) % (length <= 5 ? std::size(telling) : base);
        text[i] = telling[digits[i]];
        if (digits[i] != 0) break;
      }
      more = i < length;
    }
  }
}

TEST(Base64, RandomBytesComeBack) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes bytes = random.Bytes(random.Between(1, 100));
    const std::string text = EncodedText(bytes);
    const Text wide = ToText(Widen(text));
    const int size = static_cast<int>(bytes.size());
    ASSERT_EQ((Decoded{size, Hex(bytes)}), Decode(wide, size)) << n << ": " << text;
    ASSERT_EQ(0, Decode(wide, size - 1).written) << n << ": " << text;
  }
}

// Valid text with up to two units replaced, into too little room now and then.
TEST(Base64ToBin, MatchesTheModelOnRandomText) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    const std::string valid = EncodedText(random.Bytes(random.Between(1, 30)));
    Text text = ToText(Widen(valid));
    for (int changes = random.Between(0, 2); changes > 0; --changes) {
      const unsigned short units[] = {'=', 'A', '+', 0, '\n', static_cast<unsigned short>(n)};
      text[random.Next() % (text.size() - 1)] = units[random.Next() % std::size(units)];
    }
    const int size = random.Between(0, 33);
    ASSERT_EQ(DecodeModel(text, size), Decode(text, size)) << n << ": " << Narrow(text);
  }
}

}  // namespace
