#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <utility>

#include "kest/string.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::TestAllocator;
using kest_test::TextOf;

namespace {

// A string that claims a length without having the units.
class Pretended {
 public:
  explicit Pretended(int length) {
    const unsigned int prefix = 2 * static_cast<unsigned int>(length);
    memcpy(units, &prefix, sizeof(prefix));
    *string.GetRawBstrPtr() = units + 2;
  }
  ~Pretended() { string.Detach(); }

  TBstr string;

 private:
  unsigned short units[4] = {};
};

// A change of the text "old": what it is given, what it returns, the text afterwards.
struct Row {
  const unsigned short* src;
  int length;
  bool result;
  const char16_t* text;
};

void CheckChange(bool (TBstr::*change)(const unsigned short*, int), const Row& row) {
  SCOPED_TRACE(row.length);
  TBstr s(KEST_TEXT("old"));
  s.GetMultibyteString();
  EXPECT_EQ(row.result, (s.*change)(row.src, row.length));
  EXPECT_EQ(row.text, TextOf(s));
  TestAllocator allocator;
  s.GetMultibyteString();
  EXPECT_EQ(s.IsEmpty() ? 0 : 1, allocator.Requests()) << "the 8-bit copy was not discarded";
}

}  // namespace

TEST(BstrStorage, AnEmptyStringHasNoMemoryButText) {
  TestAllocator allocator;
  TBstr s;
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
  EXPECT_EQ(0, s.GetLength());
  EXPECT_TRUE(s.IsEmpty());
  ASSERT_NE(nullptr, s.GetString());
  EXPECT_EQ(0, *s.GetString());
  ASSERT_NE(nullptr, s.GetMultibyteString());
  EXPECT_STREQ("", s.GetMultibyteString());
  EXPECT_EQ(nullptr, s.Copy());
  EXPECT_EQ(nullptr, s.Detach());
  s.Empty();
  s.DestroyMultibyteBuffer();
  EXPECT_EQ(0, allocator.Requests());
}

TEST(BstrStorage, AdjustBufferToTheSameLengthChangesNothing) {
  TBstr s(KEST_TEXT("abc"));
  const unsigned short* before = s.GetString();
  TestAllocator allocator;
  EXPECT_TRUE(s.AdjustBuffer(3, false));
  EXPECT_EQ(before, s.GetString());
  EXPECT_EQ(u"abc", TextOf(s));
  EXPECT_EQ(0, allocator.Requests());

  TBstr empty;
  EXPECT_TRUE(empty.AdjustBuffer(0, true));
  EXPECT_EQ(0, allocator.Requests());
}

TEST(BstrStorage, AdjustBufferKeepsWhatFitsInABlockOfTheExactSize) {
  for (int length = 1; length < 20; ++length) {
    if (length == 5) continue;
    SCOPED_TRACE(length);
    TestAllocator allocator;
    TBstr s(KEST_TEXT("hello"));
    EXPECT_TRUE(s.AdjustBuffer(length, true));
    EXPECT_EQ(2, allocator.Requests());
    EXPECT_EQ(static_cast<unsigned int>(2 * length + 6), allocator.LastSize());
    EXPECT_EQ(length, s.GetLength());
    EXPECT_EQ(0, s.GetString()[length]);
    EXPECT_EQ(std::u16string(u"hello").substr(0, static_cast<size_t>(length)),
              TextOf(s).substr(0, 5));
    EXPECT_EQ(1, allocator.Live());
  }
}

TEST(BstrStorage, AdjustBufferWithoutKeepGivesTheLengthOnly) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("hello"));
  EXPECT_TRUE(s.AdjustBuffer(2, false));
  EXPECT_EQ(2, s.GetLength());
  EXPECT_EQ(0, s.GetString()[2]);
  EXPECT_EQ(1, allocator.Live());
}

TEST(BstrStorage, AdjustBufferBelowOneEmptiesAndIsTrue) {
  for (int length : {0, -1, INT_MIN}) {
    TestAllocator allocator;
    {
      TBstr s(KEST_TEXT("hello"));
      EXPECT_TRUE(s.AdjustBuffer(length, true)) << length;
      EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
      EXPECT_EQ(1, allocator.Requests());
    }
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(BstrStorage, AFailedAdjustBufferLeavesTheStringEmpty) {
  for (int length : {1, 6, INT_MAX - 3, INT_MAX}) {
    SCOPED_TRACE(length);
    TestAllocator allocator;
    TBstr s(KEST_TEXT("hello"));
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    EXPECT_FALSE(s.AdjustBuffer(length, true));
    EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(BstrStorage, AdjustBufferLeavesThe8BitCopy) {
  TBstr s(KEST_TEXT("hello"));
  const char* cache = s.GetMultibyteString();
  EXPECT_TRUE(s.AdjustBuffer(2, true));
  EXPECT_EQ(cache, s.GetMultibyteString());
  EXPECT_STREQ("hello", cache);
  s.DestroyMultibyteBuffer();
  EXPECT_STREQ("he", s.GetMultibyteString());
}

TEST(BstrStorage, InternalInit) {
  const Row kRows[] = {
      {KEST_TEXT("abcdef"), 6, true, u"abcdef"},
      {KEST_TEXT("abcdef"), 3, true, u"abc"},
      {KEST_TEXT("abcdef"), 1, true, u"a"},
      {KEST_TEXT("abcdef"), 0, true, u""},
      {KEST_TEXT("abcdef"), -1, false, u"old"},
      {KEST_TEXT("abcdef"), INT_MIN, false, u"old"},
      {nullptr, 3, true, u""},
      {nullptr, 0, true, u""},
      {nullptr, -1, true, u""},  // null is looked at first
  };
  for (const Row& row : kRows) CheckChange(&TBstr::InternalInit, row);
}

TEST(BstrStorage, InternalInitCopiesZeroUnits) {
  const unsigned short text[] = {'a', 0, 'b', 0};
  TBstr s;
  EXPECT_TRUE(s.InternalInit(text, 4));
  EXPECT_EQ(std::u16string(u"a\0b\0", 4), TextOf(s));
}

TEST(BstrStorage, InternalInitFromItsOwnText) {
  for (int from = 0; from <= 5; ++from) {
    for (int length = 0; length <= 6 - from; ++length) {  // up to the terminator
      SCOPED_TRACE(testing::Message() << from << ", " << length);
      TestAllocator allocator;
      TBstr s(KEST_TEXT("hello"));
      EXPECT_TRUE(s.InternalInit(s.GetString() + from, length));
      const std::u16string all(u"hello\0", 6);
      EXPECT_EQ(all.substr(static_cast<size_t>(from), static_cast<size_t>(length)), TextOf(s));
      EXPECT_EQ(length == 5 || length == 0 ? 1 : 2, allocator.Requests());
    }
  }
}

TEST(BstrStorage, InternalAppend) {
  const Row kRows[] = {
      {KEST_TEXT("xyz"), 3, true, u"oldxyz"},
      {KEST_TEXT("xyz"), 1, true, u"oldx"},
      {KEST_TEXT("xyz"), 0, true, u"old"},
      {KEST_TEXT("xyz"), -1, false, u"old"},
      {KEST_TEXT("xyz"), INT_MIN, false, u"old"},
      {nullptr, 3, true, u"old"},
      {nullptr, -1, true, u"old"},  // null is looked at first
  };
  for (const Row& row : kRows) CheckChange(&TBstr::InternalAppend, row);
}

TEST(BstrStorage, AppendingReallocatesToTheExactLength) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("abcd"));
  EXPECT_TRUE(s.InternalAppend(KEST_TEXT("ef"), 2));
  EXPECT_EQ(2, allocator.Requests());
  EXPECT_EQ(18u, allocator.LastSize());
  EXPECT_EQ(6, s.GetLength());
  EXPECT_EQ(1, allocator.Live());
}

TEST(BstrStorage, AFailedAppendLeavesTheStringEmpty) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("abcd"));
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(s.InternalAppend(KEST_TEXT("ef"), 2));
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
  EXPECT_EQ(0, allocator.Live());
  s = KEST_TEXT("abcd");
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_FALSE(s.InternalAppend(KEST_TEXT("efgh"), 4)) << "as many units as there are";
}

TEST(BstrStorage, AppendingPastTheLongestTextFails) {
  struct {
    int length;
    int requests;
  } constexpr kRows[] = {
      {INT_MAX - 3 - 4, 1},                    // 0x7FFFFFFC units in all: the allocator decides
      {INT_MAX - 2 - 4, 0}, {INT_MAX - 4, 0},  // too long for a block
      {INT_MAX - 3, 0},     {INT_MAX, 0},      // and past INT_MAX
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.length);
    TBstr s(KEST_TEXT("abcd"));
    TestAllocator allocator;
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    EXPECT_FALSE(s.InternalAppend(KEST_TEXT("x"), row.length));
    EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
    EXPECT_EQ(row.requests, allocator.Requests());
  }
}

TEST(BstrStorage, The8BitCopyIsMadeOnceAndKept) {
  TBstr s(KEST_TEXT("hello"));
  TestAllocator allocator;
  const char* text = s.GetMultibyteString();
  EXPECT_STREQ("hello", text);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(11u, allocator.LastSize());
  EXPECT_EQ(text, s.GetMultibyteString());
  EXPECT_EQ(1, allocator.Requests());
  s.DestroyMultibyteBuffer();
  EXPECT_EQ(0, allocator.Live());
  EXPECT_STREQ("hello", s.GetMultibyteString());
  EXPECT_EQ(2, allocator.Requests());
}

TEST(BstrStorage, The8BitCopyHasOneByteForEveryUnit) {
  const unsigned short text[] = {'a', 0, 0x7F, 0x80, 0xFF, 0x100, 0x20AC, 0xFFFF, 0x141};
  const TBstr s(text, 9);
  EXPECT_EQ(0, memcmp("a\0\x7F\x80\xFF????", s.GetMultibyteString(), 10));
}

TEST(BstrStorage, AFailed8BitCopyIsEmptyTextForNow) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("hello"));
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_STREQ("", s.GetMultibyteString());
  EXPECT_EQ(u"hello", TextOf(s));
  EXPECT_STREQ("hello", s.GetMultibyteString());
}

TEST(BstrStorage, CreateMultibyteBufferMakesTheCopyAfresh) {
  TestAllocator allocator;
  {
    TBstr s;
    EXPECT_TRUE(s.CreateMultibyteBuffer());  // one byte, the terminator
    EXPECT_EQ(1u, allocator.LastSize());
    EXPECT_STREQ("", s.GetMultibyteString());
    *s.GetRawBstrPtr() = KestAllocString(KEST_TEXT("abc"));
    EXPECT_STREQ("", s.GetMultibyteString());  // a store through the raw pointer is not noticed
    EXPECT_TRUE(s.CreateMultibyteBuffer());
    EXPECT_STREQ("abc", s.GetMultibyteString());
    allocator.Refuse(1, TestAllocator::kOnlyOne);
    EXPECT_FALSE(s.CreateMultibyteBuffer());
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrStorage, An8BitCopyBeyondIntMaxIsNotBuilt) {
  TestAllocator allocator;
  allocator.Refuse(1, TestAllocator::kFromThereOn);
  Pretended longest(0x3FFFFFFF);
  EXPECT_FALSE(longest.string.CreateMultibyteBuffer());
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(0x7FFFFFFFu, allocator.LastSize());

  Pretended longer(0x40000000);
  EXPECT_FALSE(longer.string.CreateMultibyteBuffer());
  EXPECT_STREQ("", longer.string.GetMultibyteString());
  EXPECT_EQ(1, allocator.Requests());
}

TEST(BstrStorage, EveryChangeDiscardsThe8BitCopy) {
  using Change = void (*)(TBstr&);
  constexpr Change kChanges[] = {
      [](TBstr& s) { s.Assign(TBstr(KEST_TEXT("other"))); },
      [](TBstr& s) { s.Assign(u'x'); },
      [](TBstr& s) { s.Assign(KEST_TEXT("Other")); },
      [](TBstr& s) { s.Assign("8-bit"); },
      [](TBstr& s) { s.Append(TBstr(KEST_TEXT("x"))); },
      [](TBstr& s) { s.Append(u'x'); },
      [](TBstr& s) { s.Append(KEST_TEXT("x")); },
      [](TBstr& s) { s.Append("x"); },
      [](TBstr& s) { s.SetAt(1, u'x'); },
      [](TBstr& s) { s.MakeUpper(); },
      [](TBstr& s) { s.MakeLower(); },
      [](TBstr& s) { s.MakeReverse(); },
      [](TBstr& s) { s.MakeBigEndian(); },
      [](TBstr& s) { s.TrimLeft(); },
      [](TBstr& s) { s.TrimRight(); },
      [](TBstr& s) { s.Normalize(); },
      [](TBstr& s) { s.Replace(u'B', u'x'); },
      [](TBstr& s) { s.Replace(KEST_TEXT("B"), KEST_TEXT("x")); },
      [](TBstr& s) { s.Replace(KEST_TEXT("B"), KEST_TEXT("xyz")); },
      [](TBstr& s) { s.Remove(u'B'); },
      [](TBstr& s) { s.Insert(2, u'x'); },
      [](TBstr& s) { s.Insert(2, KEST_TEXT("xyz")); },
      [](TBstr& s) { s.Delete(2); },
      [](TBstr& s) { s.Empty(); },
      [](TBstr& s) { s.GetBstrPtr(); },
      [](TBstr& s) { KestFreeString(s.Detach()); },
      [](TBstr& s) {
        unsigned short* old = *s.GetRawBstrPtr();
        s.Attach(KestAllocString(KEST_TEXT("attached")));
        KestFreeString(old);
      },
      [](TBstr& s) { s = TBstr(KEST_TEXT("moved")); },
      [](TBstr& s) { TBstr taker(std::move(s)); },
  };
  for (size_t i = 0; i < std::size(kChanges); ++i) {
    SCOPED_TRACE(testing::Message() << "change " << i);
    TestAllocator allocator;
    {
      TBstr s(KEST_TEXT(" aBc "));
      EXPECT_STREQ(" aBc ", s.GetMultibyteString());
      kChanges[i](s);
      EXPECT_NE(u" aBc ", TextOf(s));
      std::string narrow;
      for (char16_t unit : TextOf(s)) narrow += unit < 256 ? static_cast<char>(unit) : '?';
      EXPECT_EQ(narrow, s.GetMultibyteString());
    }
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST(BstrStorage, GetBstrPtrIsAnOutputParameter) {
  TestAllocator allocator;
  {
    TBstr s(KEST_TEXT("old"));
    s.GetMultibyteString();
    unsigned short** out = s.GetBstrPtr();
    EXPECT_TRUE(s.IsEmpty());
    EXPECT_EQ(0, allocator.Live());
    *out = KestAllocString(KEST_TEXT("new"));
    EXPECT_EQ(u"new", TextOf(s));
    EXPECT_STREQ("new", s.GetMultibyteString());
    EXPECT_EQ(out, s.GetRawBstrPtr());
    EXPECT_EQ(u"new", TextOf(s));
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrStorage, AttachDoesNotFreeThePreviousText) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("old"));
  s.GetMultibyteString();
  unsigned short* old = *s.GetRawBstrPtr();
  unsigned short* bstr = KestAllocString(KEST_TEXT("attached"));
  s.Attach(bstr);
  EXPECT_EQ(bstr, s.GetString());
  EXPECT_EQ(2, allocator.Live());  // both texts; the 8-bit copy went
  EXPECT_EQ(3u, KestStringLen(old));
  EXPECT_EQ(bstr, s.Detach());
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_EQ(2, allocator.Live());
  KestFreeString(old);
  KestFreeString(bstr);
}

TEST(BstrStorage, DetachGivesTheTextAndReleasesThe8BitCopy) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("abc"));
  const unsigned short* text = s.GetString();
  s.GetMultibyteString();
  unsigned short* bstr = s.Detach();
  EXPECT_EQ(text, bstr);
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_EQ(1, allocator.Live());
  KestFreeString(bstr);
}

TEST(BstrStorage, CopyGivesTheCallerItsOwnBuffer) {
  TestAllocator allocator;
  const unsigned short text[] = {'a', 0, 'b'};
  {
    const TBstr s(text, 3);
    unsigned short* copy = s.Copy();
    ASSERT_NE(nullptr, copy);
    EXPECT_NE(s.GetString(), copy);
    EXPECT_EQ(3u, KestStringLen(copy));
    EXPECT_EQ(0, memcmp(text, copy, 6));
    KestFreeString(copy);
    allocator.Refuse(1, TestAllocator::kOnlyOne);
    EXPECT_EQ(nullptr, s.Copy());
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(BstrStorage, EmptyReleasesTextAndCopy) {
  TestAllocator allocator;
  TBstr s(KEST_TEXT("abc"));
  EXPECT_FALSE(s.IsEmpty());
  s.GetMultibyteString();
  s.Empty();
  EXPECT_EQ(0, allocator.Live());
  EXPECT_TRUE(s.IsEmpty());
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
}

TEST(BstrStorage, MovesTakeTextAndLeaveTheSourceEmpty) {
  TestAllocator allocator;
  {
    TBstr a(KEST_TEXT("abc"));
    const unsigned short* units = a.GetString();
    const char* bytes = a.GetMultibyteString();
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    TBstr b(std::move(a));
    EXPECT_TRUE(a.IsEmpty());
    EXPECT_STREQ("", a.GetMultibyteString());
    EXPECT_EQ(units, b.GetString());
    EXPECT_EQ(bytes, b.GetMultibyteString());

    allocator.RefuseNone();
    TBstr c(KEST_TEXT("old"));
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    c = std::move(b);
    EXPECT_TRUE(b.IsEmpty());
    EXPECT_EQ(units, c.GetString());
    TBstr& same = c;
    c = std::move(same);
    EXPECT_EQ(u"abc", TextOf(c));
    EXPECT_EQ(0, allocator.Refused());
  }
  EXPECT_EQ(0, allocator.Live());
}
