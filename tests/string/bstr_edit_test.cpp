#include <gtest/gtest.h>
#include <limits.h>

#include "kest/string.h"
#include "support/guarded_hooks.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Bstr;
using kest_test::ForEachRefusedRequest;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

const std::u16string kWithZero(u"aB\0cD", 5);

// Every unit but 0, in order.
TBstr AllUnits() {
  TBstr all;
  all.AdjustBuffer(0xFFFF, false);
  for (int i = 0; i < 0xFFFF; ++i) all.SetAt(i, static_cast<unsigned short>(i + 1));
  return all;
}

}  // namespace

TEST(BstrEdit, CaseIsThatOfAsciiAlone) {
  TBstr upper = AllUnits();
  TBstr lower = upper;
  upper.MakeUpper();
  lower.MakeLower();
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    ASSERT_EQ(unit >= 'a' && unit <= 'z' ? unit - 32 : unit, upper.GetAt(unit - 1));
    ASSERT_EQ(unit >= 'A' && unit <= 'Z' ? unit + 32 : unit, lower.GetAt(unit - 1));
  }
}

TEST(BstrEdit, CaseAndReversalEndAtTheFirstZeroUnit) {
  TBstr s = Bstr(kWithZero);
  s.MakeUpper();
  EXPECT_EQ(std::u16string(u"AB\0cD", 5), TextOf(s));
  s = Bstr(kWithZero);
  s.MakeLower();
  EXPECT_EQ(std::u16string(u"ab\0cD", 5), TextOf(s));
  s = Bstr(kWithZero);
  s.MakeReverse();
  EXPECT_EQ(std::u16string(u"Ba\0cD", 5), TextOf(s));
}

TEST(BstrEdit, Reverses) {
  struct {
    const char16_t *from, *to;
  } constexpr kRows[] = {{u"a", u"a"}, {u"ab", u"ba"}, {u"abc", u"cba"}, {u"abcd", u"dcba"}};
  for (const auto& row : kRows) {
    TBstr s = Bstr(row.from);
    s.MakeReverse();
    EXPECT_EQ(row.to, TextOf(s));
  }
}

TEST(BstrEdit, BigEndianSwapsTheBytesOfEveryUnit) {
  TBstr s = AllUnits();
  s.MakeBigEndian();
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    ASSERT_EQ((unit << 8 | unit >> 8) & 0xFFFF, s.GetAt(unit - 1));
  }
  s.MakeBigEndian();
  EXPECT_EQ(TextOf(AllUnits()), TextOf(s));

  TBstr zero = Bstr(kWithZero);
  zero.MakeBigEndian();
  EXPECT_EQ(std::u16string(u"\u6100\u4200\0\u6300\u4400", 5), TextOf(zero));
}

TEST(BstrEdit, InPlaceChangesNeedNoMemoryAndNoText) {
  TBstr empty;
  TBstr s(KEST_TEXT("abc"));
  TestAllocator allocator;
  for (TBstr* string : {&empty, &s}) {
    string->MakeUpper();
    string->MakeLower();
    string->MakeReverse();
    string->MakeBigEndian();
    string->TrimLeft();
    string->TrimRight();
    string->Normalize();
    string->Replace(u'a', u'b');
    string->Remove(u'a');
  }
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_TRUE(empty.IsEmpty());
}

TEST(BstrEdit, Trims) {
  struct {
    std::u16string text;
    unsigned short ch;
    std::u16string left, right;
  } const kRows[] = {
      {u"  ab  ", ' ', u"ab  ", u"  ab"},
      {u"a b", ' ', u"a b", u"a b"},
      {u"   ", ' ', u"", u""},
      {u"\t ab \t", ' ', u"\t ab \t", u"\t ab \t"},  // a tab is no space
      {u"xxaxx", 'x', u"axx", u"xxa"},
      {u"  ab  ", 'x', u"  ab  ", u"  ab  "},
      {u"  ab  ", 0, u"  ab  ", u"  ab  "},
      {std::u16string(u"\0a\0", 3), 0, std::u16string(u"\0a\0", 3), std::u16string(u"\0a\0", 3)},
      {std::u16string(u"  \0  ", 5), ' ', std::u16string(u"\0  ", 3), std::u16string(u"  \0", 3)},
      {u"", ' ', u"", u""},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::PrintToString(row.text));
    TBstr left = Bstr(row.text);
    TBstr right = left;
    left.TrimLeft(row.ch);
    right.TrimRight(row.ch);
    EXPECT_EQ(row.left, TextOf(left));
    EXPECT_EQ(row.right, TextOf(right));
  }
  TBstr s(KEST_TEXT(" a "));
  s.TrimLeft();
  s.TrimRight();
  EXPECT_EQ(u"a", TextOf(s));
}

TEST(BstrEdit, ShrinkingTakesOneBlockOfTheNewSize) {
  using Change = void (*)(TBstr&);
  constexpr Change kChanges[] = {
      [](TBstr& s) { s.TrimLeft(); },   [](TBstr& s) { s.TrimRight(); },
      [](TBstr& s) { s.Remove(u' '); }, [](TBstr& s) { s.Normalize(); },
      [](TBstr& s) { s.Delete(0, 2); },
  };
  const unsigned int kSizes[] = {6 + 6, 6 + 6, 2 + 6, 2 + 6, 6 + 6};
  for (size_t i = 0; i < std::size(kChanges); ++i) {
    SCOPED_TRACE(i);
    TBstr s(KEST_TEXT("  a  "));
    TestAllocator allocator;
    kChanges[i](s);
    EXPECT_EQ(1, allocator.Requests());
    EXPECT_EQ(kSizes[i], allocator.LastSize());
    EXPECT_EQ(0, s.GetString()[s.GetLength()]);

    TBstr blank(KEST_TEXT("  "));
    allocator.Reset();
    kChanges[i](blank);
    EXPECT_EQ(nullptr, *blank.GetRawBstrPtr());
    EXPECT_EQ(0, allocator.Requests());
  }
}

TEST(BstrEdit, NormalizeDropsSpacesAndLowersLetters) {
  struct {
    std::u16string text, normal;
  } const kRows[] = {
      {u"A b C", u"abc"},
      {u"  ", u""},
      {u"", u""},
      {u"abc", u"abc"},
      {u" A\tB\x00A0 ", u"a\tb\x00A0"},
      {u"\xC9@[Z", u"\xC9@[z"},
      {std::u16string(u"A \0 B", 5), std::u16string(u"a\0b", 3)},
  };
  for (const auto& row : kRows) {
    TBstr s = Bstr(row.text);
    s.Normalize();
    EXPECT_EQ(row.normal, TextOf(s));
  }
}

TEST(BstrEdit, ReplacesUnits) {
  struct {
    std::u16string text;
    unsigned short from, to;
    int count;
    std::u16string result;
  } const kRows[] = {
      {u"hello", 'l', 'L', 2, u"heLLo"},
      {u"hello", 'x', 'y', 0, u"hello"},
      {u"hello", 'l', 'l', 2, u"hello"},
      {u"hello", 'l', 0, 2, std::u16string(u"he\0\0o", 5)},  // 0 is not checked
      {std::u16string(u"a\0a\0", 4), 0, 'b', 2, u"abab"},
      {std::u16string(u"a\0a\0", 4), 'a', 'b', 2, std::u16string(u"b\0b\0", 4)},
      {u"hello", 0, 'x', 0, u"hello"},  // the terminator is not text
      {u"", 'a', 'b', 0, u""},
  };
  for (const auto& row : kRows) {
    TBstr s = Bstr(row.text);
    EXPECT_EQ(row.count, s.Replace(row.from, row.to));
    EXPECT_EQ(row.result, TextOf(s));
    EXPECT_EQ(0, s.GetString()[s.GetLength()]);
  }
}

TEST(BstrEdit, RemovesUnits) {
  struct {
    std::u16string text;
    unsigned short ch;
    int count;
    std::u16string result;
  } const kRows[] = {
      {u"hello", 'l', 2, u"heo"},
      {u"hello", 'x', 0, u"hello"},
      {u"lll", 'l', 3, u""},
      {u"hello", 0, 0, u"hello"},
      {std::u16string(u"a\0b\0", 4), 0, 2, u"ab"},
      {std::u16string(u"a\0ba", 4), 'a', 2, std::u16string(u"\0b", 2)},
      {u"", 'a', 0, u""},
  };
  for (const auto& row : kRows) {
    TBstr s = Bstr(row.text);
    EXPECT_EQ(row.count, s.Remove(row.ch));
    EXPECT_EQ(row.result, TextOf(s));
  }
}

TEST(BstrEdit, InsertsAUnit) {
  struct {
    int index;
    unsigned short ch;
    std::u16string result;
  } const kRows[] = {
      {0, 'x', std::u16string(u"xa\0b", 4)},       {1, 'x', std::u16string(u"ax\0b", 4)},
      {3, 'x', std::u16string(u"a\0bx", 4)},       {99, 'x', std::u16string(u"a\0bx", 4)},
      {INT_MAX, 'x', std::u16string(u"a\0bx", 4)}, {-1, 'x', std::u16string(u"a\0b", 3)},
      {INT_MIN, 'x', std::u16string(u"a\0b", 3)},  {1, 0, std::u16string(u"a\0b", 3)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.index);
    TBstr s(KEST_TEXT("a\0b"), 3);
    EXPECT_EQ(static_cast<int>(row.result.size()), s.Insert(row.index, row.ch));
    EXPECT_EQ(row.result, TextOf(s));
  }
  TBstr empty;
  EXPECT_EQ(0, empty.Insert(0, u'\0'));
  EXPECT_EQ(1, empty.Insert(7, u'x'));
  EXPECT_EQ(u"x", TextOf(empty));
}

TEST(BstrEdit, InsertsText) {
  struct {
    int index;
    const unsigned short* s;
    std::u16string result;
  } const kRows[] = {
      {0, KEST_TEXT("xyz"), std::u16string(u"xyza\0b", 6)},
      {1, KEST_TEXT("xyz"), std::u16string(u"axyz\0b", 6)},
      {2, KEST_TEXT("xyz"), std::u16string(u"a\0xyzb", 6)},
      {3, KEST_TEXT("xyz"), std::u16string(u"a\0bxyz", 6)},
      {4, KEST_TEXT("xyz"), std::u16string(u"a\0bxyz", 6)},
      {INT_MAX, KEST_TEXT("xyz"), std::u16string(u"a\0bxyz", 6)},
      {-1, KEST_TEXT("xyz"), std::u16string(u"a\0b", 3)},
      {INT_MIN, KEST_TEXT("xyz"), std::u16string(u"a\0b", 3)},
      {1, KEST_TEXT(""), std::u16string(u"a\0b", 3)},
      {1, nullptr, std::u16string(u"a\0b", 3)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.index);
    TBstr s(KEST_TEXT("a\0b"), 3);
    EXPECT_EQ(static_cast<int>(row.result.size()), s.Insert(row.index, row.s));
    EXPECT_EQ(row.result, TextOf(s));
    EXPECT_EQ(0, s.GetString()[s.GetLength()]);
  }
}

TEST(BstrEdit, InsertsItsOwnText) {
  const std::u16string hello = u"hello";
  for (size_t from = 0; from < hello.size(); ++from) {
    for (size_t index = 0; index <= hello.size(); ++index) {
      SCOPED_TRACE(testing::Message() << from << " at " << index);
      TBstr s(KEST_TEXT("hello"));
      TestAllocator allocator;
      const int length = s.Insert(static_cast<int>(index), s.GetString() + from);
      EXPECT_EQ(std::u16string(hello).insert(index, hello.substr(from)), TextOf(s));
      EXPECT_EQ(s.GetLength(), length);
      EXPECT_EQ(1, allocator.Requests());
      EXPECT_EQ(static_cast<unsigned int>(2 * length + 6), allocator.LastSize());
    }
  }
}

TEST(BstrEdit, Deletes) {
  struct {
    int index, count;
    std::u16string result;
  } const kRows[] = {
      {0, 1, std::u16string(u"e\0lo", 4)},
      {1, 100, u"h"},
      {1, INT_MAX, u"h"},
      {4, 1, std::u16string(u"he\0l", 4)},
      {4, 2, std::u16string(u"he\0l", 4)},
      {2, 1, u"helo"},
      {0, 5, u""},
      {5, 1, std::u16string(u"he\0lo", 5)},
      {-1, 2, std::u16string(u"he\0lo", 5)},
      {INT_MIN, 2, std::u16string(u"he\0lo", 5)},
      {INT_MAX, 2, std::u16string(u"he\0lo", 5)},
      {1, 0, std::u16string(u"he\0lo", 5)},
      {1, -1, std::u16string(u"he\0lo", 5)},
      {1, INT_MIN, std::u16string(u"he\0lo", 5)},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.count << " at " << row.index);
    TBstr s(KEST_TEXT("he\0lo"), 5);
    EXPECT_EQ(static_cast<int>(row.result.size()), s.Delete(row.index, row.count));
    EXPECT_EQ(row.result, TextOf(s));
  }
  TBstr s(KEST_TEXT("ab"));
  EXPECT_EQ(1, s.Delete(0));
  EXPECT_EQ(u"b", TextOf(s));
  EXPECT_EQ(0, TBstr().Delete(0, 1));
}

TEST(BstrEdit, WhatChangesNothingTakesNoMemory) {
  TBstr s(KEST_TEXT("hello"));
  TestAllocator allocator;
  s.Insert(-1, u'x');
  s.Insert(0, u'\0');
  s.Insert(-1, KEST_TEXT("x"));
  s.Insert(0, KEST_TEXT(""));
  s.Delete(5, 1);
  s.Delete(-1, 1);
  s.Delete(0, 0);
  s.Delete(0, -1);
  s.TrimLeft(u'o');
  s.TrimRight(u'h');
  s.Remove(u'x');
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_EQ(u"hello", TextOf(s));
}

TEST(BstrEdit, AFailureLeavesTheStringEmpty) {
  using Change = int (*)(TBstr&);
  constexpr Change kChanges[] = {
      [](TBstr& s) { return s.Insert(1, u'x'); },
      [](TBstr& s) { return s.Insert(1, KEST_TEXT("xyz")); },
      [](TBstr& s) { return s.Insert(1, s.GetString()); },
      [](TBstr& s) { return s.Delete(1); },
      [](TBstr& s) { return s.TrimLeft(), s.GetLength(); },
      [](TBstr& s) { return s.TrimRight(), s.GetLength(); },
      [](TBstr& s) { return s.Normalize(), s.GetLength(); },
      [](TBstr& s) { return s.Remove(u'a'), s.GetLength(); },
  };
  for (Change change : kChanges) {
    ForEachRefusedRequest([change](TestAllocator& allocator) {
      TBstr s(KEST_TEXT(" a "));
      if (s.IsEmpty()) return;
      const int length = change(s);
      EXPECT_EQ(s.GetLength(), length);
      EXPECT_EQ(allocator.Refused() > 0, s.IsEmpty());
    });
  }
}

// The unit at each place, and at none, in texts that end where nothing can be read or written.
TEST(BstrEdit, ReplacesAndRemovesAUnitAtEachPlace) {
  const kest_test::GuardedHooks hooks;
  for (size_t length = 1; length <= 100; length += 1 + length / 24) {
    for (size_t place = 0; place <= length; ++place) {
      std::u16string text(length, u'\u7878');  // 'x' twice
      if (place < length) text[place] = u'x';
      const int count = place < length ? 1 : 0;
      TBstr s = Bstr(text);
      ASSERT_EQ(count, s.Replace(u'x', u'y'));
      std::u16string model = text;
      if (place < length) model[place] = u'y';
      ASSERT_EQ(model, TextOf(s));
      ASSERT_EQ(count, s.Remove(u'y'));
      if (place < length) model.erase(place, 1);
      ASSERT_EQ(model, TextOf(s));
    }
  }
}

TEST(BstrEdit, ReplacesAndRemovesManyUnits) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  const kest_test::GuardedHooks hooks;
  for (int length = 0; length <= 200; ++length) {
    for (int share = 0; share <= 8; share += 2) {
      std::u16string text(static_cast<size_t>(length), u'-');
      for (char16_t& unit : text) {
        if (random.Between(1, 8) <= share) unit = static_cast<char16_t>(random.Between('w', 'y'));
      }
      std::u16string replaced, removed;
      int count = 0;
      for (char16_t unit : text) {
        count += unit == 'x';
        replaced += unit == 'x' ? u'z' : unit;
        if (unit != 'x') removed += unit;
      }
      TBstr s = Bstr(text);
      ASSERT_EQ(count, s.Replace(u'x', u'z'));
      ASSERT_EQ(replaced, TextOf(s));
      s = Bstr(text);
      ASSERT_EQ(count, s.Remove(u'x'));
      ASSERT_EQ(removed, TextOf(s));
    }
  }
}
