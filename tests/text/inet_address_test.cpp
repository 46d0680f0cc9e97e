#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <limits.h>

#include "kest/text.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::ForEachRefusedRequest;
using kest_test::Random;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

constexpr unsigned int kUntouched = 0x5A5A5A5A;

struct Result {
  bool good;
  unsigned int address, port;
};

bool operator==(const Result& a, const Result& b) {
  return a.good == b.good && a.address == b.address && a.port == b.port;
}

std::ostream& operator<<(std::ostream& out, const Result& result) {
  return out << result.good << std::hex << " 0x" << result.address << " 0x" << result.port;
}

constexpr Result kBad = {false, kUntouched, kUntouched};

Result Read(const std::u16string& text) {
  Result result = {false, kUntouched, kUntouched};
  result.good = KestInetAtoN(Units(text), &result.address, &result.port);
  return result;
}

// The plain model. A number: spaces, one sign, digits, up to 2147483647 either way; without a digit
// it is 0 and ends where it began.
long long PlainNumber(const std::u16string& text, size_t& at) {
  size_t i = at;
  while (i < text.size() && text[i] == ' ') ++i;
  const bool negative = i < text.size() && text[i] == '-';
  if (i < text.size() && (text[i] == '-' || text[i] == '+')) ++i;
  const size_t firstDigit = i;
  long long number = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    number = std::min<long long>(number * 10 + (text[i] - '0'), INT_MAX);
  }
  if (i == firstDigit) return 0;
  at = i;
  return negative ? -number : number;
}

Result PlainRead(const std::u16string& text) {
  size_t at = 0;
  Result result = {true, 0, 0};
  for (int index = 0;; ++index, ++at) {
    const long long part = PlainNumber(text, at);
    const bool isLast = index == 3 || at == text.size() || text[at] != '.';
    if (part < 0 || (!isLast && part > 255)) return kBad;
    if (isLast) {
      result.address |= static_cast<unsigned int>(part);
      break;
    }
    result.address |= static_cast<unsigned int>(part) << (3 - index) * 8;
  }
  if (at == text.size()) return result;
  if (text[at] != ':') return kBad;
  ++at;
  result.port = static_cast<unsigned int>(PlainNumber(text, at));
  return result;
}

void ExpectPlainRead(const std::u16string& text) {
  ASSERT_EQ(PlainRead(text), Read(text)) << testing::PrintToString(text);
}

std::u16string Wide(const std::string& text) { return std::u16string(text.begin(), text.end()); }

}  // namespace

TEST(InetAddress, ReadRows) {
  struct {
    std::u16string text;
    Result result;
  } const kRows[] = {
      {u"192.168.0.1:8080", {true, 0xC0A80001, 8080}},
      {u"1.2.3.4", {true, 0x01020304, 0}},
      {u"0.0.0.0", {true, 0, 0}},
      {u"255.255.255.255", {true, 0xFFFFFFFF, 0}},
      {u"255.0.0.0:65535", {true, 0xFF000000, 65535}},
      {u"", {true, 0, 0}},
      // Fewer parts: the last one fills the rest.
      {u"127.1", {true, 0x7F000001, 0}},
      {u"10.1.258", {true, 0x0A010102, 0}},
      {u"16909060", {true, 0x01020304, 0}},
      {u"1.2", {true, 0x01000002, 0}},
      {u"1.65536", {true, 0x01010000, 0}},
      {u"1.2.65535", {true, 0x0102FFFF, 0}},
      {u"7:80", {true, 7, 80}},
      // The last part is not checked, and is put over the others.
      {u"1.2.3.256", {true, 0x01020300, 0}},
      {u"1.2.4.256", {true, 0x01020500, 0}},
      {u"1.2.3.65535", {true, 0x0102FFFF, 0}},
      {u"1.2.65536", {true, 0x01030000, 0}},
      {u"1.16777216", {true, 0x01000000, 0}},
      {u"2.16777216", {true, 0x03000000, 0}},
      {u"0.0.0.2147483647", {true, 0x7FFFFFFF, 0}},
      {u"128.0.0.2147483647", {true, 0xFFFFFFFF, 0}},
      // Numbers end at the largest signed one.
      {u"2147483647", {true, 0x7FFFFFFF, 0}},
      {u"2147483648", {true, 0x7FFFFFFF, 0}},
      {u"3232235521", {true, 0x7FFFFFFF, 0}},
      {u"4294967295", {true, 0x7FFFFFFF, 0}},
      {u"4294967296", {true, 0x7FFFFFFF, 0}},
      {u"99999999999999999999", {true, 0x7FFFFFFF, 0}},
      // The parts before it are bytes.
      {u"255.1", {true, 0xFF000001, 0}},
      {u"1.256.3.4", kBad},
      {u"256.2.3.4", kBad},
      {u"1.2.256.4", kBad},
      {u"256.1", kBad},
      {u"4294967297.1", kBad},
      {u"99999999999.2.3.4", kBad},
      // None is negative.
      {u"-1", kBad},
      {u"-1.2.3.4", kBad},
      {u"1.-2.3.4", kBad},
      {u"1.2.-3.4", kBad},
      {u"1.2.3.-4", kBad},
      {u"1.2.3.-4:5", kBad},
      {u"-99999999999", kBad},
      {u"-0.-0.-0.-1", kBad},
      {u"-0.2.-0.4", {true, 0x00020004, 0}},
      // More parts, or other text, behind the last.
      {u"1.2.3.4.5", kBad},
      {u"1.2.3.4.", kBad},
      {u"1.2.3.4x", kBad},
      {u"1.2.3.4 ", kBad},
      {u"1.2x.3.4", kBad},
      {u"1,2,3,4", kBad},
      {u"1.2.3.4/24", kBad},
      {u"x", kBad},
      {u"localhost", kBad},
      {u" ", kBad},
      {u"+", kBad},
      {u"-", kBad},
      {u"1.+", kBad},
      {u"1..-.3", kBad},
      {u"--1", kBad},
      {u"+-1", kBad},
      {u"\t1", kBad},
      // Decimal only.
      {u"010.1", {true, 0x0A000001, 0}},
      {u"000000000000001.2.3.4", {true, 0x01020304, 0}},
      {u"0x7F.0.0.1", kBad},
      {u"0x10", kBad},
      {u"1.2.3.a", kBad},
      // A missing number is 0.
      {u".", {true, 0, 0}},
      {u"1.", {true, 0x01000000, 0}},
      {u"1.2.", {true, 0x01020000, 0}},
      {u"1.2.3.", {true, 0x01020300, 0}},
      {u".5", {true, 5, 0}},
      {u"...5", {true, 5, 0}},
      {u"1..3", {true, 0x01000003, 0}},
      {u"...", {true, 0, 0}},
      {u"....", kBad},
      // Spaces and a sign may come before a number.
      {u" 1. 2.  3. 4: 80", {true, 0x01020304, 80}},
      {u"+1.+2.+3.+4:+80", {true, 0x01020304, 80}},
      {u" +1", {true, 1, 0}},
      {u"1 .2", kBad},
      {u"+ 1", kBad},
      // The port: no range, and anything behind it.
      {u":", {true, 0, 0}},
      {u":80", {true, 0, 80}},
      {u"1.2.3.4:", {true, 0x01020304, 0}},
      {u"1.2.3.4:0", {true, 0x01020304, 0}},
      {u"1.2.3.4:65536", {true, 0x01020304, 65536}},
      {u"1.2.3.4:2147483647", {true, 0x01020304, 0x7FFFFFFF}},
      {u"1.2.3.4:2147483648", {true, 0x01020304, 0x7FFFFFFF}},
      {u"1.2.3.4:4294967295", {true, 0x01020304, 0x7FFFFFFF}},
      {u"1.2.3.4:-1", {true, 0x01020304, 0xFFFFFFFF}},
      {u"1.2.3.4:-99999999999", {true, 0x01020304, 0x80000001}},
      {u"1.2.3.4:80x", {true, 0x01020304, 80}},
      {u"1.2.3.4:80:90", {true, 0x01020304, 80}},
      {u"1.2.3.4:80.90", {true, 0x01020304, 80}},
      {u"1.2.3.4:x", {true, 0x01020304, 0}},
      {u"1.2.3.4::80", {true, 0x01020304, 0}},
      {u"1.2.3.4:0x50", {true, 0x01020304, 0}},
      {u"1:2.3.4", {true, 1, 2}},
      {u"256.1:80", kBad},
      {u"1.2.3.4x:80", kBad},
      // Digits, dots and colons are ASCII.
      {u"\uFF11.2.3.4", kBad},
      {u"\u0661", kBad},
      {u"\u0131", kBad},
      {u"1\u012E2", kBad},
      {u"1\u013A2", kBad},
      {u"1\uFF0E2", kBad},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.result, Read(row.text)) << testing::PrintToString(row.text);
    EXPECT_EQ(row.result, PlainRead(row.text)) << "model of " << testing::PrintToString(row.text);
  }
}

TEST(InetAddress, NullIsEmptyText) {
  unsigned int address = kUntouched, port = kUntouched;
  EXPECT_TRUE(KestInetAtoN(nullptr, &address, &port));
  EXPECT_EQ(0u, address);
  EXPECT_EQ(0u, port);
  EXPECT_TRUE(KestInetAtoN(nullptr, nullptr, nullptr));
}

TEST(InetAddress, EitherResultMayBeLeftOut) {
  unsigned int address = kUntouched, port = kUntouched;
  EXPECT_TRUE(KestInetAtoN(KEST_TEXT("1.2.3.4:80"), &address, nullptr));
  EXPECT_EQ(0x01020304u, address);
  EXPECT_TRUE(KestInetAtoN(KEST_TEXT("1.2.3.4:80"), nullptr, &port));
  EXPECT_EQ(80u, port);
  EXPECT_TRUE(KestInetAtoN(KEST_TEXT("1.2.3.4:80"), nullptr, nullptr));
  EXPECT_FALSE(KestInetAtoN(KEST_TEXT("1.2.3.4x"), nullptr, nullptr));
}

TEST(InetAddress, EveryValueInEveryPlace) {
  for (int parts = 1; parts <= 4; ++parts) {
    for (int place = 0; place < parts; ++place) {
      for (int value = 0; value <= 300; ++value) {
        std::string text;
        for (int i = 0; i < parts; ++i) {
          if (i != 0) text += '.';
          text += std::to_string(i == place ? value : i + 1);
        }
        ExpectPlainRead(Wide(text));
        if (HasFatalFailure()) return;
        const bool isLast = place == parts - 1;
        ASSERT_EQ(isLast || value <= 255, Read(Wide(text)).good) << text;
      }
    }
  }
}

// One to five parts out of these, in every combination, with each of the ends.
TEST(InetAddress, EveryFormOfParts) {
  const char16_t* const kParts[] = {u"",   u"0",   u"1", u"255",       u"256",
                                    u"-1", u" +7", u"x", u"4294967295"};
  const char16_t* const kEnds[] = {u"", u":", u":80", u" "};
  std::vector<std::u16string> texts = {u""};
  for (int count = 1; count <= 5; ++count) {
    std::vector<std::u16string> longer;
    for (const std::u16string& text : texts) {
      for (const char16_t* part : kParts) longer.push_back(text + part);
    }
    for (std::u16string& text : longer) {
      for (const char16_t* end : kEnds) ExpectPlainRead(text + end);
      if (HasFatalFailure()) return;
      text += u'.';
    }
    texts = std::move(longer);
  }
}

TEST(InetAddress, RandomTexts) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const std::u16string alphabet = u"00112255689....::+- x\u0131\u012E\uFF10";
  for (int i = Random::Cases(100000); i > 0; --i) {
    std::u16string text;
    for (int length = random.Between(0, 20); length > 0; --length) {
      text += alphabet[random.Next() % (random.Between(0, 9) != 0 ? 16 : alphabet.size())];
    }
    ExpectPlainRead(text);
    if (HasFatalFailure()) return;
  }
}

// inet_aton agrees where no number begins with 0, the last fits what the others leave, and is below
// 2^31.
TEST(InetAddress, ReadsAsTheCLibraryDoes) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = Random::Cases(); i > 0; --i) {
    std::string text;
    const int parts = random.Between(1, 4);
    for (int part = 1; part < parts; ++part) text += std::to_string(random.Between(0, 255)) + '.';
    const unsigned int bits = parts == 1 ? 31 : 40 - 8 * static_cast<unsigned int>(parts);
    text += std::to_string(random.Next() >> (32 - bits));
    in_addr expected;
    ASSERT_NE(0, inet_aton(text.c_str(), &expected)) << text;
    ASSERT_EQ((Result{true, ntohl(expected.s_addr), 0}), Read(Wide(text))) << text;
  }
}

TEST(InetAddress, EveryPort) {
  for (unsigned int port = 0; port <= 70000; ++port) {
    ASSERT_EQ((Result{true, 0x7F000001, port}), Read(Wide("127.1:" + std::to_string(port))));
  }
}

TEST(InetAddress, WriteRows) {
  struct {
    unsigned int address;
    std::u16string text;
  } const kRows[] = {
      {0, u"0.0.0.0"},
      {1, u"0.0.0.1"},
      {0x01020304, u"1.2.3.4"},
      {0x7F000001, u"127.0.0.1"},
      {0x80000000, u"128.0.0.0"},
      {0xC0A80001, u"192.168.0.1"},
      {0x7FFFFFFF, u"127.255.255.255"},
      {0xFFFFFFFF, u"255.255.255.255"},
  };
  for (const auto& row : kRows) {
    TBstr text(KEST_TEXT("old"));
    KestInetNtoA(row.address, text);
    EXPECT_EQ(row.text, TextOf(text));
    KestInetNtoAEx(row.address, 80, text);
    EXPECT_EQ(row.text + u":80", TextOf(text));
  }
}

TEST(InetAddress, WritesThePortAsASignedNumber) {
  struct {
    unsigned int port;
    std::u16string text;
  } const kRows[] = {
      {0, u"127.0.0.1:0"},
      {80, u"127.0.0.1:80"},
      {65535, u"127.0.0.1:65535"},
      {65536, u"127.0.0.1:65536"},
      {0x7FFFFFFF, u"127.0.0.1:2147483647"},
      {0x80000000, u"127.0.0.1:-2147483648"},
      {0xFFFFFFFF, u"127.0.0.1:-1"},
  };
  for (const auto& row : kRows) {
    TBstr text;
    KestInetNtoAEx(0x7F000001, row.port, text);
    EXPECT_EQ(row.text, TextOf(text));
  }
}

TEST(InetAddress, WritesAsTheCLibraryDoesAndReadsItBack) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int i = Random::Cases(); i > 0; --i) {
    const unsigned int address = random.Next();
    const unsigned int port = random.Next() & 0x7FFFFFFF;
    in_addr order;
    order.s_addr = htonl(address);
    const std::u16string expected = Wide(inet_ntoa(order));
    TBstr text;
    KestInetNtoA(address, text);
    ASSERT_EQ(expected, TextOf(text));
    ASSERT_EQ((Result{true, address, 0}), Read(TextOf(text)));
    KestInetNtoAEx(address, port, text);
    ASSERT_EQ(expected + u":" + Wide(std::to_string(port)), TextOf(text));
    ASSERT_EQ((Result{true, address, port}), Read(TextOf(text)));
  }
}

TEST(InetAddress, WritingReplacesTheWholeString) {
  TBstr text(KEST_TEXT("a text that is longer than an address"));
  text.GetMultibyteString();
  KestInetNtoA(0x01020304, text);
  EXPECT_STREQ("1.2.3.4", text.GetMultibyteString());
  KestInetNtoAEx(0x01020304, 5, text);
  EXPECT_STREQ("1.2.3.4:5", text.GetMultibyteString());
}

TEST(InetAddress, WithoutMemoryTheTextIsEmpty) {
  for (bool withPort : {false, true}) {
    ForEachRefusedRequest([withPort](TestAllocator& allocator) {
      TBstr text(KEST_TEXT("old"));
      if (text.IsEmpty()) return;
      if (withPort) {
        KestInetNtoAEx(0x01020304, 5, text);
      } else {
        KestInetNtoA(0x01020304, text);
      }
      const std::u16string expected = withPort ? u"1.2.3.4:5" : u"1.2.3.4";
      EXPECT_EQ(allocator.Refused() > 0 ? u"" : expected, TextOf(text));
    });
  }
}

TEST(InetAddress, ReadingTakesNoMemory) {
  TestAllocator allocator;
  for (const char16_t* text : {u"", u"1.2.3.4:80", u"1.2.3.4x"}) Read(text);
  EXPECT_EQ(0, allocator.Requests());
}
