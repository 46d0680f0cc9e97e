#include <gtest/gtest.h>
#include <limits.h>

#include "kest/string.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::ForEachRefusedRequest;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

const unsigned short* Null() { return nullptr; }
const char* NullBytes() { return nullptr; }

}  // namespace

TEST(BstrAssign, ConstructsFromUnits) {
  EXPECT_EQ(u"", TextOf(TBstr()));
  EXPECT_EQ(u"hello", TextOf(TBstr(KEST_TEXT("hello"))));
  EXPECT_EQ(u"", TextOf(TBstr(KEST_TEXT(""))));
  EXPECT_EQ(u"", TextOf(TBstr(Null())));
  EXPECT_EQ(u"hel", TextOf(TBstr(KEST_TEXT("hello"), 3)));
  EXPECT_EQ(std::u16string(u"a\0b", 3), TextOf(TBstr(KEST_TEXT("a\0b"), 3)));
  EXPECT_EQ(u"a", TextOf(TBstr(KEST_TEXT("a\0b"))));
  EXPECT_EQ(u"", TextOf(TBstr(KEST_TEXT("hello"), 0)));
  EXPECT_EQ(u"", TextOf(TBstr(KEST_TEXT("hello"), -1)));  // no shorthand for the whole text
  EXPECT_EQ(u"", TextOf(TBstr(KEST_TEXT("hello"), INT_MIN)));
  EXPECT_EQ(u"", TextOf(TBstr(Null(), 3)));
}

TEST(BstrAssign, CopyHasItsOwnText) {
  TBstr a(KEST_TEXT("a\0b"), 3);
  const TBstr b(a);
  EXPECT_NE(a.GetString(), b.GetString());
  a.SetAt(0, u'x');
  EXPECT_EQ(std::u16string(u"a\0b", 3), TextOf(b));
  EXPECT_TRUE(TBstr(TBstr()).IsEmpty());
}

TEST(BstrAssign, ConstructsFromBytesOfOneUnitEach) {
  struct {
    const char* bytes;
    int length;
    std::u16string text;
  } const kRows[] = {
      {"hello", -1, u"hello"},
      {"hello", 2, u"he"},
      {"ab\0cd", 5, std::u16string(u"ab\0cd", 5)},
      {"ab\0cd", -1, u"ab"},
      {"\x7F\x80\xE9\xFF", -1, u"\x7F\x80\xE9\xFF"},  // no sign extension
      {"", -1, u""},
      {"hello", 0, u""},
      {"hello", -2, u""},
      {"hello", INT_MIN, u""},
      {nullptr, -1, u""},
      {nullptr, 5, u""},
  };
  for (const auto& row : kRows) {
    EXPECT_EQ(row.text, TextOf(TBstr(row.bytes, row.length))) << row.length;
    if (row.length != -1) continue;
    EXPECT_EQ(row.text, TextOf(TBstr(row.bytes)));
  }
}

TEST(BstrAssign, ConstructsFromARepeatedUnit) {
  for (int count : {1, 2, 127, 128, 129, 200, 1000}) {
    EXPECT_EQ(std::u16string(static_cast<size_t>(count), u'x'), TextOf(TBstr(u'x', count)));
  }
  for (int count : {0, -1, INT_MIN}) EXPECT_TRUE(TBstr(u'x', count).IsEmpty()) << count;
  EXPECT_TRUE(TBstr(u'\0', 5).IsEmpty());
  EXPECT_TRUE(TBstr(u'\0', 200).IsEmpty());
}

TEST(BstrAssign, ARunOfMoreThan256BytesGoesThroughATemporaryBlock) {
  TestAllocator allocator;
  { TBstr s(u'x', 128); }
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(262u, allocator.LastSize());

  allocator.Reset();
  { TBstr s(u'x', 129); }
  EXPECT_EQ(2, allocator.Requests());
  EXPECT_EQ(264u, allocator.LastSize());

  struct {
    int count;
    unsigned int size;
  } constexpr kRows[] = {{129, 258},
                         {200, 400},
                         {0x40000000, 0x80000000},  // bytes that as an int would be negative
                         {INT_MAX, 0xFFFFFFFE}};
  for (const auto& row : kRows) {
    allocator.Reset();
    allocator.Refuse(1, TestAllocator::kOnlyOne);
    TBstr s(u'x', row.count);
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(1, allocator.Requests());
    EXPECT_EQ(row.size, allocator.LastSize());
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrAssign, Assigns) {
  const TBstr other(KEST_TEXT("a\0b"), 3);
  TBstr s(KEST_TEXT("old"));
  EXPECT_EQ(&s, &s.Assign(other));
  EXPECT_EQ(TextOf(other), TextOf(s));
  EXPECT_EQ(&s, &s.Assign(u'x'));
  EXPECT_EQ(u"x", TextOf(s));
  EXPECT_EQ(&s, &s.Assign(KEST_TEXT("wide")));
  EXPECT_EQ(u"wide", TextOf(s));
  EXPECT_EQ(&s, &s.Assign("8-bit \xE9"));
  EXPECT_EQ(u"8-bit \xE9", TextOf(s));
  s.Assign("\xFF");
  EXPECT_EQ(u"\xFF", TextOf(s));
}

TEST(BstrAssign, AssigningNothingEmpties) {
  TBstr s(KEST_TEXT("old"));
  s.Assign(Null());
  EXPECT_TRUE(s.IsEmpty());
  s.Assign(KEST_TEXT("old")).Assign(KEST_TEXT(""));
  EXPECT_TRUE(s.IsEmpty());
  s.Assign(KEST_TEXT("old")).Assign(NullBytes());
  EXPECT_TRUE(s.IsEmpty());
  s.Assign(KEST_TEXT("old")).Assign("");
  EXPECT_TRUE(s.IsEmpty());
  s.Assign(KEST_TEXT("old")).Assign(TBstr());
  EXPECT_TRUE(s.IsEmpty());
}

TEST(BstrAssign, AssigningTheUnitZeroKeepsTextAndCopy) {
  TBstr s(KEST_TEXT("abc"));
  const char* copy = s.GetMultibyteString();
  EXPECT_EQ(&s, &s.Assign(u'\0'));
  EXPECT_EQ(u"abc", TextOf(s));
  EXPECT_EQ(copy, s.GetMultibyteString());
  s = u'\0';
  EXPECT_EQ(u"abc", TextOf(s));
}

TEST(BstrAssign, AssigningItselfDoesNothing) {
  TBstr s(KEST_TEXT("abc"));
  const unsigned short* text = s.GetString();
  const char* copy = s.GetMultibyteString();
  TestAllocator allocator;
  EXPECT_EQ(&s, &s.Assign(s));
  EXPECT_EQ(text, s.GetString());
  EXPECT_EQ(copy, s.GetMultibyteString());
  EXPECT_EQ(0, allocator.Requests());
}

TEST(BstrAssign, AssignsPartOfItsOwnText) {
  const std::u16string hello = u"hello";
  for (size_t from = 0; from <= hello.size(); ++from) {
    SCOPED_TRACE(from);
    TestAllocator allocator;
    TBstr s(KEST_TEXT("hello"));
    s.Assign(s.GetString() + from);
    EXPECT_EQ(hello.substr(from), TextOf(s));
    EXPECT_EQ(from == 0 || from == 5 ? 1 : 2, allocator.Requests());

    TBstr t(KEST_TEXT("hello"));
    t.Assign(t.GetMultibyteString() + from);
    EXPECT_EQ(hello.substr(from), TextOf(t));
  }
}

TEST(BstrAssign, Appends) {
  const TBstr other(KEST_TEXT("x\0y"), 3);
  TBstr s;
  EXPECT_EQ(&s, &s.Append(KEST_TEXT("ab")));
  EXPECT_EQ(&s, &s.Append(u'c'));
  EXPECT_EQ(&s, &s.Append("d\xE9"));
  EXPECT_EQ(&s, &s.Append(other));
  EXPECT_EQ(std::u16string(u"abcd\xE9x\0y", 8), TextOf(s));
}

TEST(BstrAssign, AppendingNothingKeepsTheText) {
  TBstr s(KEST_TEXT("abc"));
  TestAllocator allocator;
  s.Append(u'\0')
      .Append(Null())
      .Append(KEST_TEXT(""))
      .Append(NullBytes())
      .Append("")
      .Append(TBstr());
  EXPECT_EQ(u"abc", TextOf(s));
  EXPECT_EQ(0, allocator.Requests());
}

TEST(BstrAssign, AppendsItsOwnText) {
  const std::u16string text(u"he\0lo", 5);
  TBstr whole = kest_test::Bstr(text);
  TestAllocator allocator;
  whole.Append(whole);
  EXPECT_EQ(text + text, TextOf(whole));
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(26u, allocator.LastSize());

  const std::u16string hello = u"hello";
  for (size_t from = 0; from <= hello.size(); ++from) {
    TBstr s(KEST_TEXT("hello"));
    allocator.Reset();
    s.Append(s.GetString() + from);
    EXPECT_EQ(hello + hello.substr(from), TextOf(s));
    EXPECT_EQ(from == 5 ? 0 : 1, allocator.Requests());

    TBstr t(KEST_TEXT("hello"));
    t.Append(t.GetMultibyteString() + from);
    EXPECT_EQ(hello + hello.substr(from), TextOf(t));
  }
}

TEST(BstrAssign, EachChangeAsksOnceForTheExactSize) {
  TBstr s(KEST_TEXT("abc"));
  const TBstr other(KEST_TEXT("wxyz"));
  TestAllocator allocator;
  s.Assign(other);
  EXPECT_EQ(14u, allocator.LastSize());
  s.Append(u'x');
  EXPECT_EQ(16u, allocator.LastSize());
  s.Append(other);
  EXPECT_EQ(24u, allocator.LastSize());
  s.Assign(KEST_TEXT("123456789"));  // as long as before: the block is used again
  EXPECT_EQ(3, allocator.Requests());
  s.Append("ab");
  EXPECT_EQ(5, allocator.Requests());  // the widened bytes, then the text
  EXPECT_EQ(28u, allocator.LastSize());
}

TEST(BstrAssign, AFailureLeavesTheStringEmpty) {
  using Change = void (*)(TBstr&);
  constexpr Change kChanges[] = {
      [](TBstr& s) { s.Assign(KEST_TEXT("longer text")); },
      [](TBstr& s) { s.Assign(u'x'); },
      [](TBstr& s) { s.Assign("longer text"); },
      [](TBstr& s) { s.Append(KEST_TEXT("x")); },
      [](TBstr& s) { s.Append(u'x'); },
      [](TBstr& s) { s.Append(s); },
      [](TBstr& s) { s += s.GetString() + 2; },
  };
  for (Change change : kChanges) {
    ForEachRefusedRequest([change](TestAllocator& allocator) {
      TBstr s(KEST_TEXT("abc"));
      if (s.IsEmpty()) return;
      change(s);
      EXPECT_EQ(allocator.Refused() > 0, s.IsEmpty());
    });
  }
}

TEST(BstrAssign, BytesThatCannotBeWidenedAppendNothing) {
  TBstr s(KEST_TEXT("abc"));
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  s.Append("xyz");
  EXPECT_EQ(u"abc", TextOf(s));
  allocator.Refuse(2, TestAllocator::kOnlyOne);
  s.Append("xyz");
  EXPECT_TRUE(s.IsEmpty());
}

TEST(BstrAssign, ConstructorsAreEmptyWhenMemoryFails) {
  ForEachRefusedRequest([](TestAllocator& allocator) {
    const TBstr rows[] = {TBstr(KEST_TEXT("abc")),
                          TBstr(KEST_TEXT("abc"), 2),
                          TBstr("abc"),
                          TBstr("abc", 2),
                          TBstr(u'x', 3),
                          TBstr(u'x', 300)};
    const int lengths[] = {3, 2, 3, 2, 3, 300};
    bool allWhole = true;
    for (size_t i = 0; i < std::size(rows); ++i) {
      EXPECT_TRUE(rows[i].IsEmpty() || rows[i].GetLength() == lengths[i]);
      allWhole = allWhole && !rows[i].IsEmpty();
    }
    EXPECT_EQ(allocator.Refused() == 0, allWhole);
  });
}

TEST(BstrAssign, Operators) {
  const TBstr ab(KEST_TEXT("ab"));
  TBstr s;
  s = ab;
  s += ab;
  s += KEST_TEXT("c");
  s += "d";
  s += u'e';
  EXPECT_EQ(u"ababcde", TextOf(s));
  s = KEST_TEXT("wide");
  EXPECT_EQ(u"wide", TextOf(s));
  s = "bytes";
  EXPECT_EQ(u"bytes", TextOf(s));
  s = u'x';
  EXPECT_EQ(u"x", TextOf(s));

  EXPECT_EQ(u"abab", TextOf(ab + ab));
  EXPECT_EQ(u"abc", TextOf(ab + KEST_TEXT("c")));
  EXPECT_EQ(u"cab", TextOf(KEST_TEXT("c") + ab));
  EXPECT_EQ(u"abc", TextOf(ab + u'c'));
  EXPECT_EQ(u"ab", TextOf(ab + Null()));
  EXPECT_EQ(u"ab", TextOf(Null() + ab));
  EXPECT_EQ(u"abab", TextOf(ab + TBstr() + ab));
}
