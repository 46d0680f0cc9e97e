// TBigInt as a value: construction, buffers, conversions, comparison, single words.

#include <limits.h>

#include <utility>

#include "crypto/big_int_checks.h"
#include "crypto/memory_meter.h"
#include "crypto/wipe_checks.h"
#include "support/hex.h"
#include "support/test_allocator.h"

namespace {

using namespace kest_test;
using Bytes = std::vector<unsigned char>;

static_assert(sizeof(TBigInt) == (sizeof(void*) == 4 ? 12 : 16));

TEST(BigInt, StartsAsZeroWithoutABuffer) {
  TestAllocator allocator;
  const unsigned char byte = 0;
  for (const TBigInt& zero : {TBigInt(), TBigInt(0), TBigInt(&byte, 0), TBigInt(nullptr, 0),
                              TBigInt(&byte, -1), TBigInt(&byte, INT_MIN), TBigInt(KEST_TEXT("")),
                              TBigInt(static_cast<const unsigned short*>(nullptr))}) {
    EXPECT_EQ(0, zero.GetLength());
    EXPECT_EQ(0, zero.GetCapacity());
    EXPECT_EQ(nullptr, zero.GetWords());
    EXPECT_EQ(0, zero.ToInt());
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(BigInt, AnIntIsOneWordReadAsUnsigned) {
  const std::pair<int, const char*> rows[] = {
      {1, "1"}, {0x1F, "1F"}, {-1, "FFFFFFFF"}, {INT_MAX, "7FFFFFFF"}, {INT_MIN, "80000000"}};
  for (const auto& [value, hex] : rows) {
    const TBigInt number = value;
    EXPECT_EQ(hex, Shown(number));
    EXPECT_EQ(1, number.GetLength());
    EXPECT_EQ(8, number.GetCapacity());
    EXPECT_EQ(value, number.ToInt());
  }
}

TEST(BigInt, ToIntIsTheLowWord) {
  EXPECT_EQ(0x23456789, Big("AB123456780123456789").ToInt());
  EXPECT_EQ(-1, Big("1FFFFFFFF").ToInt());
  EXPECT_EQ(0, Big("100000000").ToInt());
}

TEST(BigInt, BytesAreBigEndian) {
  const std::pair<Bytes, const char*> rows[] = {
      {{0}, "0"},
      {{0, 0, 0, 0, 0}, "0"},
      {{7}, "7"},
      {{0, 0, 1, 2}, "102"},
      {{1, 2, 3}, "10203"},
      {{1, 2, 3, 4}, "1020304"},
      {{1, 2, 3, 4, 5}, "102030405"},
      {{0, 0, 0, 1, 2, 3, 4, 5}, "102030405"},
      {{255, 254, 253, 252, 251, 250, 249, 248, 247}, "FFFEFDFCFBFAF9F8F7"},
  };
  for (const auto& [bytes, hex] : rows) {
    EXPECT_EQ(hex, Shown(TBigInt(bytes.data(), static_cast<int>(bytes.size()))));
  }
  const Bytes leading = {0, 0, 1, 2};
  EXPECT_EQ(1, TBigInt(leading.data(), 4).GetLength());
  // The buffer is sized before the leading zeros vanish: 36 bytes are 9 words.
  EXPECT_EQ(16, TBigInt(Bytes(36).data(), 36).GetCapacity());
  EXPECT_EQ(8, TBigInt(Bytes(32).data(), 32).GetCapacity());
}

TEST(BigInt, TextIsHexadecimalAndWhatIsNoDigitIsSkipped) {
  const std::pair<const char16_t*, const char*> rows[] = {
      {u"", "0"},
      {u"0", "0"},
      {u"0000000000000", "0"},
      {u"1F", "1F"},
      {u"1f", "1F"},
      {u"0x1F", "1F"},
      {u"ff FF", "FFFF"},
      {u"xyz", "0"},
      {u"-12", "12"},
      {u"no digits", "D"},
      {u"decade", "DECADE"},
      {u"0123456789abcdefABCDEF", "123456789ABCDEFABCDEF"},
      {u"00000000000000000000000000000000000000000000000012345678", "12345678"},
      {u"100000000", "100000000"},
      {u"1 0000 0000 0000 0000", "10000000000000000"},
      {u"/0:9@AG`ag\x0130\xFF11", "9AA"},  // the neighbours of the digits; U+0130 ends in 0x30
      {u"1\xFF12\xFF46", "1"},             // wide digits and letters are no digits
  };
  for (const auto& [text, hex] : rows) {
    EXPECT_EQ(hex, Shown(TBigInt(reinterpret_cast<const unsigned short*>(text)))) << hex;
  }
  EXPECT_EQ(8, Big(std::string(64, 'F')).GetCapacity());
  EXPECT_EQ(16, Big(std::string(65, 'F')).GetCapacity());
}

TEST(BigInt, EveryUnitIsADigitOrSkipped) {
  for (unsigned int unit = 1; unit <= 0xFFFF; ++unit) {
    const unsigned short text[] = {'5', static_cast<unsigned short>(unit), 0};
    const std::string digits = "0123456789abcdefABCDEF";
    const size_t at = unit < 128 ? digits.find(static_cast<char>(unit)) : std::string::npos;
    const unsigned int expected =
        at == std::string::npos ? 5 : 0x50 + static_cast<unsigned int>(at < 16 ? at : at - 6);
    ASSERT_EQ(static_cast<int>(expected), TBigInt(text).ToInt()) << unit;
  }
}

TEST(BigInt, ToStringIsUpperCaseWithoutPrefixOrLeadingZeros) {
  EXPECT_EQ(u"0", TextOf(TBigInt().ToString()));
  EXPECT_EQ(u"0", TextOf(TBigInt(0).ToString()));
  EXPECT_EQ(u"0", TextOf(Roomy(9).ToString()));
  EXPECT_EQ(u"0", TextOf(TBigInt(Bytes(9).data(), 9).ToString()));
  const unsigned char bytes[] = {0, 0, 1, 2};
  EXPECT_EQ(u"102", TextOf(TBigInt(bytes, 4).ToString()));
  for (const char* hex : {"1", "F", "10", "ABCDEF", "FFFFFFFF", "100000000", "123456789",
                          "10000000000000000", "FEDCBA98765432100123456789ABCDEF"}) {
    const std::string text = hex;
    EXPECT_EQ(std::u16string(text.begin(), text.end()), TextOf(Big(text).ToString()));
  }
}

TEST(BigInt, TextGoesBothWaysAtEveryLength) {
  Random random;
  SCOPED_TRACE(random.Seed());
  std::string text;
  for (int digits = 1; digits <= 600; ++digits) {
    text += "123456789ABCDEF"[random.Between(0, 14)];
    if (digits % 3 == 0) text += '0';
    const TBigInt value = Big(text);
    ASSERT_EQ(text, Shown(value));
    ASSERT_EQ(std::u16string(text.begin(), text.end()), TextOf(value.ToString()));
  }
}

TEST(BigInt, LongTextTakesNoTimeToSpeakOf) {
  const std::string text(1000000, 'A');
  const TBigInt value = Big(text);
  EXPECT_EQ(125000, value.GetLength());
  EXPECT_EQ(std::u16string(text.begin(), text.end()), TextOf(value.ToString()));
}

TEST(BigInt, LongTextTakesNoMoreMemoryThanItsValueAndItself) {
  const std::string text(1000000, 'A');
  const MemoryMeter meter;
  const TBigInt value = Big(text);
  EXPECT_LE(meter.Most(), 500000u + 64u);
  EXPECT_EQ(1000000, value.ToString().GetLength());
  EXPECT_LE(meter.Most(), 500000u + 2000000u + 64u);
}

TEST(BigInt, ACopyHasABufferOfItsOwn) {
  TBigInt original = Roomy(24);
  original = Big("123456789ABC");
  const TBigInt copy(original);
  EXPECT_EQ("123456789ABC", Shown(copy));
  EXPECT_EQ(8, copy.GetCapacity());  // for the words in use, not for those of the buffer
  EXPECT_NE(original.GetWords(), copy.GetWords());
  original = 5;
  EXPECT_EQ("123456789ABC", Shown(copy));
  const TBigInt zero = Roomy(24), copyOfZero(zero);
  EXPECT_EQ(24, zero.GetCapacity());
  EXPECT_EQ(nullptr, copyOfZero.GetWords());
}

TEST(BigInt, AssignmentCopiesTheWordsAndKeepsTheBuffer) {
  TBigInt value = Roomy(24);
  const unsigned int* buffer = value.GetWords();
  EXPECT_EQ(&value, &(value = Big("123456789")));
  EXPECT_EQ("123456789", Shown(value));
  EXPECT_EQ(buffer, value.GetWords());
  EXPECT_EQ(24, value.GetCapacity());

  const TBigInt& self = value;
  EXPECT_EQ(&value, &(value = self));
  EXPECT_EQ("123456789", Shown(value));

  value = Big(std::string(8 * 25, 'E'));
  EXPECT_EQ(std::string(8 * 25, 'E'), Shown(value));
  EXPECT_EQ(32, value.GetCapacity());
  value = TBigInt();
  EXPECT_EQ("0", Shown(value));
  EXPECT_EQ(32, value.GetCapacity());
}

TEST(BigInt, WithoutMemoryAValueIsZeroAndAssignmentChangesNothing) {
  TestAllocator allocator;
  {
    const TBigInt big = Big("123456789ABCDEF123456789ABCDEF123456789ABCDEF123456789ABCDEF12345678");
    TBigInt small = 7;
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    const unsigned char bytes[] = {1, 2};
    for (const TBigInt& value :
         {TBigInt(1), TBigInt(bytes, 2), TBigInt(KEST_TEXT("12")), TBigInt(big)}) {
      EXPECT_EQ("0", Shown(value));
      EXPECT_EQ(nullptr, value.GetWords());
    }
    EXPECT_EQ(&small, &(small = big));
    EXPECT_EQ("7", Shown(small));
    EXPECT_EQ(u"", TextOf(big.ToString()));
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BigInt, AdjustBufferGrowsInStepsOfEightWords) {
  const std::pair<int, int> rows[] = {{0, 0},   {1, 8},   {8, 8},    {9, 16},
                                      {16, 16}, {17, 24}, {100, 104}};
  for (const auto& [words, capacity] : rows) {
    TestAllocator allocator;
    TBigInt value;
    EXPECT_TRUE(value.AdjustBuffer(words, false));
    EXPECT_EQ(words, value.GetLength());
    EXPECT_EQ(capacity, value.GetCapacity());
    EXPECT_EQ(words == 0 ? 0 : 1, allocator.Requests());
    EXPECT_EQ(4u * static_cast<unsigned int>(capacity), allocator.LastSize());
    for (int i = 0; i < words; ++i) EXPECT_EQ(0u, value.GetWords()[i]);
    EXPECT_TRUE(value.AdjustBuffer(capacity + 1, true));
    EXPECT_EQ(1, allocator.Live()) << "the old words are freed";
  }
}

TEST(BigInt, AdjustBufferKeepsOrClears) {
  const std::string hex = "33333333222222221111111";
  TBigInt kept = Big(hex), cleared = Big(hex);
  EXPECT_TRUE(kept.AdjustBuffer(20, true));
  EXPECT_TRUE(cleared.AdjustBuffer(20, false));
  EXPECT_EQ(24, kept.GetCapacity());
  EXPECT_EQ(24, cleared.GetCapacity());
  EXPECT_EQ(20, kept.GetLength());
  EXPECT_EQ(20, cleared.GetLength());
  for (int i = 3; i < 20; ++i) EXPECT_EQ(0u, kept.GetWords()[i]);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(0u, cleared.GetWords()[i]);
  kept.FixLength();
  EXPECT_EQ(hex, Shown(kept));
}

TEST(BigInt, AdjustBufferWithinTheBufferMovesTheLengthAlone) {
  TBigInt value = Big("444444443333333322222222");
  const unsigned int* buffer = value.GetWords();
  // Keeping touches no word: what was there is there again.
  EXPECT_TRUE(value.AdjustBuffer(1, true));
  EXPECT_EQ("22222222", Shown(value));
  EXPECT_TRUE(value.AdjustBuffer(3, true));
  EXPECT_EQ("444444443333333322222222", Shown(value));
  // Clearing clears only the words asked for.
  EXPECT_TRUE(value.AdjustBuffer(2, false));
  EXPECT_EQ(0u, value.GetWords()[0]);
  EXPECT_EQ(0u, value.GetWords()[1]);
  EXPECT_TRUE(value.AdjustBuffer(3, true));
  EXPECT_EQ("444444440000000000000000", Shown(value));
  EXPECT_TRUE(value.AdjustBuffer(0, false));
  EXPECT_EQ("0", Shown(value));
  TBigInt single = 7;
  EXPECT_TRUE(single.AdjustBuffer(1, false));
  EXPECT_EQ(0u, single.GetWords()[0]) << "a single word is cleared too";
  EXPECT_EQ(buffer, value.GetWords());
  EXPECT_EQ(8, value.GetCapacity());
}

TEST(BigInt, AdjustBufferRefusesWhatCannotBe) {
  TestAllocator allocator;
  TBigInt value = 7;
  const int requests = allocator.Requests();
  for (int words : {-1, INT_MIN, INT_MAX, INT_MAX - 7, 0x40000000, 0x3FFFFFF9}) {
    for (bool keep : {false, true}) {
      EXPECT_FALSE(value.AdjustBuffer(words, keep)) << words;
      EXPECT_EQ("7", Shown(value));
      EXPECT_EQ(8, value.GetCapacity());
    }
  }
  EXPECT_EQ(requests, allocator.Requests());

  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(value.AdjustBuffer(9, false));
  EXPECT_EQ("7", Shown(value));
  EXPECT_EQ(8, value.GetCapacity());
}

TEST(BigInt, FixLengthDropsZeroWordsFromTheTop) {
  TBigInt value = Roomy(8);
  value = Big("10000000000000002");
  EXPECT_TRUE(value.AdjustBuffer(8, true));
  value.FixLength();
  EXPECT_EQ(3, value.GetLength());
  EXPECT_TRUE(value.AdjustBuffer(2, true));
  value.FixLength();
  EXPECT_EQ("2", Shown(value));
  EXPECT_TRUE(value.AdjustBuffer(8, false));
  value.FixLength();
  EXPECT_EQ(0, value.GetLength());
  TBigInt none;
  none.FixLength();
  EXPECT_EQ(0, none.GetLength());
}

// Columns: value, size, return value, what ten bytes of AA hold afterwards. Worked out from the
// rule that the loop stops at the value's length: with 4 to 7 bytes to spare the top word is left
// out and as many bytes at the end are not written, with 8 to 11 two words, and so on.
struct DumpRow {
  const char* value;
  int size, result;
  const char* buffer;
};
constexpr DumpRow kDumps[] = {
    {"1122334455667788", 8, 8, "1122334455667788aaaa"},
    {"1122334455667788", 9, 8, "001122334455667788aa"},
    {"1122334455667788", 10, 8, "00001122334455667788"},
    {"1122334455667788", 7, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"1122334455667788", 4, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"1122334455667788", 0, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"1122334455667788", -1, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"102", 4, 4, "00000102aaaaaaaaaaaa"},
    {"102", 7, 4, "00000000000102aaaaaa"},
    {"11223344", 8, 4, "00000000aaaaaaaaaaaa"},
    {"11223344", 9, 4, "0000000000aaaaaaaaaa"},
    {"11223344", 10, 4, "000000000000aaaaaaaa"},
    {"0", 10, 0, "00000000000000000000"},
    {"0", 3, 0, "000000aaaaaaaaaaaaaa"},
    {"0", 0, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"0", -1, 0, "aaaaaaaaaaaaaaaaaaaa"},
    {"0", INT_MIN, 0, "aaaaaaaaaaaaaaaaaaaa"},
};

TEST(BigInt, DumpWritesWholeWordsBigEndian) {
  for (const DumpRow& row : kDumps) {
    SCOPED_TRACE(std::string(row.value) + " into " + std::to_string(row.size));
    Bytes buffer(10, 0xAA);
    EXPECT_EQ(row.result, Big(row.value).Dump(buffer.data(), row.size));
    EXPECT_EQ(row.buffer, Hex(buffer));
  }
  EXPECT_EQ(0, TBigInt().Dump(nullptr, 0));
}

TEST(BigInt, DumpIntoALargerBufferFollowsItsLoop) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 1; length <= 9; ++length) {
    const Bytes bytes = random.Bytes(4 * length);
    const TBigInt value(bytes.data(), 4 * length);
    ASSERT_EQ(length, value.GetLength());
    for (int spare = 0; spare <= 4 * length + 8; ++spare) {
      const size_t size = static_cast<size_t>(4 * length + spare);
      Bytes actual(size, 0x55), expected(size, 0x55);
      for (size_t i = 0; i < static_cast<size_t>(spare); ++i) expected[i] = 0;
      for (int p = spare; p < 4 * length; p += 4) {
        // Word length - 1 - p / 4 is the word p / 4 of the big-endian bytes.
        memcpy(&expected[static_cast<size_t>(p)], &bytes[static_cast<size_t>(p / 4 * 4)], 4);
      }
      EXPECT_EQ(4 * length, value.Dump(actual.data(), static_cast<int>(size)));
      EXPECT_EQ(Hex(expected), Hex(actual)) << length << " words, " << spare << " bytes to spare";
    }
  }
}

TEST(BigInt, CmpComparesLengthsThenWords) {
  const struct {
    const char *a, *b;
    int result;
  } rows[] = {
      {"0", "0", 0},
      {"1", "0", 1},
      {"0", "1", -1},
      {"100000000", "FFFFFFFF", 1},
      {"5", "10000000000000000", -2},
      {"10000000000000000", "5", 2},
      {"0", "1000000000000000000000000", -4},
      {"7", "7", 0},
      {"80000000", "7FFFFFFF", 1},
      {"7FFFFFFF", "80000000", -1},
      {"200000001", "100000002", 1},
      {"100000002", "200000001", -1},
      {"100000002", "100000001", 1},
      {"FFFFFFFFFFFFFFFFFFFFFFFF", "FFFFFFFFFFFFFFFFFFFFFFFF", 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.result, TBigInt::Cmp(Big(row.a), Big(row.b))) << row.a << " " << row.b;
  }
  EXPECT_EQ(0, TBigInt::Cmp(Roomy(16), TBigInt()));
}

TEST(BigInt, WordMulGivesBothHalves) {
  const struct {
    unsigned int a, b, high, low;
  } rows[] = {
      {0, 0xFFFFFFFF, 0, 0},
      {1, 0xFFFFFFFF, 0, 0xFFFFFFFF},
      {0x10000, 0x10000, 1, 0},
      {0xFFFFFFFF, 0xFFFFFFFF, 0xFFFFFFFE, 1},
      {0x12345678, 0x9ABCDEF0, 0x0B00EA4E, 0x242D2080},
  };
  for (const auto& row : rows) {
    unsigned int high = 0xDEAD;
    EXPECT_EQ(row.low, TBigInt::WordMul(high, row.a, row.b));
    EXPECT_EQ(row.high, high);
  }
}

TEST(BigInt, WordDivGivesTheLowHalfOfTheQuotientAndNeverTraps) {
  const struct {
    unsigned int low, high, divisor, quotient;
  } rows[] = {
      {0, 1, 2, 0x80000000},
      {7, 0, 2, 3},
      {0xFFFFFFFF, 0xFFFFFFFF, 1, 0xFFFFFFFF},  // the quotient is 2^64 - 1
      {0, 5, 3, 0xAAAAAAAA},                    // 1AAAAAAAA
      {0, 2, 2, 0},                             // 100000000
      {0xFFFFFFFF, 0xFFFFFFFE, 0xFFFFFFFF, 0xFFFFFFFF},
      {0, 0, 0, 0},
      {1, 1, 0, 0},
      {0xFFFFFFFF, 0xFFFFFFFF, 0, 0},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.quotient, TBigInt::WordDiv(row.low, row.high, row.divisor))
        << row.high << ":" << row.low << " / " << row.divisor;
  }
}

TEST(BigInt, WordBitsCountsSignificantBits) {
  EXPECT_EQ(0, TBigInt::WordBits(0));
  for (int bits = 1; bits <= 32; ++bits) {
    const unsigned int top = 1u << (bits - 1);
    EXPECT_EQ(bits, TBigInt::WordBits(top));
    EXPECT_EQ(bits, TBigInt::WordBits(top | (top - 1)));
  }
}

TEST(BigInt, EveryBlockIsWipedBeforeItIsFreed) {
  const WipeChecker checker;
  {
    const TBigInt a = Big(std::string(130, 'B')), b = Big(std::string(77, '7'));
    TBigInt q, r;
    EXPECT_TRUE(TBigInt::Mul(q, a, b));
    EXPECT_TRUE(TBigInt::Mul(q, q, b));
    EXPECT_TRUE(TBigInt::Div(q, r, a, b));
    EXPECT_TRUE(TBigInt::MulMod(r, a, a, b));
    EXPECT_TRUE(TBigInt::ExpMod(r, a, b, b));
    EXPECT_TRUE(TBigInt::ExpMod(r, a, 13, Big(std::string(77, '6'))));
    EXPECT_TRUE(TBigInt::Shl(r, r, 4000));
  }
  EXPECT_LT(10, checker.Freed());
  EXPECT_EQ(0, checker.Dirty());
}

}  // namespace
