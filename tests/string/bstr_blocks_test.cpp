// The blocks of strings under the default hooks, where they grow in place and are used again: no
// difference to the text, and none to a client's own hooks.

#include <gtest/gtest.h>
#include <malloc.h>
#include <string.h>

#include <array>
#include <thread>

#include "kest/string.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::Random;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

// Starts the library in the calling thread for its lifetime.
class Started {
 public:
  Started() { EXPECT_EQ(1, KestInitialize(nullptr)); }
  ~Started() { KestUninitialize(); }
  Started(const Started&) = delete;
  Started& operator=(const Started&) = delete;
};

// The text is the model's, with a terminator, in a block that holds it.
void ExpectText(const std::u16string& expected, TBstr& s) {
  ASSERT_EQ(expected, TextOf(s));
  unsigned short* units = *s.GetRawBstrPtr();
  if (units == nullptr) return;
  ASSERT_EQ(0, units[expected.size()]);
  ASSERT_LE(2 * expected.size() + 6, malloc_usable_size(reinterpret_cast<char*>(units) - 4));
}

// One random change of a string and its model.
void Change(Random& random, TBstr& s, std::u16string& model) {
  const int length = s.GetLength();
  const int from = random.Between(0, length), count = random.Between(0, length - from);
  const std::u16string part = model.substr(static_cast<size_t>(from), static_cast<size_t>(count));
  const char16_t unit = static_cast<char16_t>(random.Between('a', 'e'));
  switch (random.Between(0, 9)) {
    case 0:
    case 1:
    case 2:
      s.Append(static_cast<unsigned short>(unit));
      model += unit;
      break;
    case 3:
      EXPECT_TRUE(s.InternalAppend(s.GetString() + from, count));
      model += part;
      break;
    case 4:
      // Behind the part lies the terminator, which is a unit like any other here.
      if (length == 0) break;
      EXPECT_TRUE(s.InternalAppend(s.GetString() + from, length - from + 1));
      model += model.substr(static_cast<size_t>(from)) + u'\0';
      break;
    case 5:
      EXPECT_TRUE(s.InternalInit(s.GetString() + from, count));
      model = part;
      break;
    case 6:
      s.Delete(from, count);
      if (from < length) model.erase(static_cast<size_t>(from), static_cast<size_t>(count));
      break;
    case 7:
      s.Remove(static_cast<unsigned short>(unit));
      for (size_t at; (at = model.find(unit)) != model.npos;) model.erase(at, 1);
      break;
    case 8:
      s.Append(KEST_TEXT("abcdeabcdeabcdeabcde"));
      model += u"abcdeabcdeabcdeabcde";
      break;
    default:
      EXPECT_TRUE(s.AdjustBuffer(from, true));
      model.resize(static_cast<size_t>(from));
      break;
  }
  if (model.size() > 2000) {
    s.Empty();
    model.clear();
  }
}

void ChangeAtRandom() {
  Random random;
  SCOPED_TRACE(random.Seed());
  std::array<TBstr, 4> strings;
  std::array<std::u16string, 4> models;
  for (int i = Random::Cases(20000); i > 0; --i) {
    const size_t which = random.Next() % strings.size();
    if (random.Between(0, 20) == 0) {
      const TBstr copy(strings[which]);
      const size_t other = random.Next() % strings.size();
      strings[other] = copy;
      models[other] = models[which];
      ExpectText(models[other], strings[other]);
    } else {
      Change(random, strings[which], models[which]);
      ExpectText(models[which], strings[which]);
    }
    if (testing::Test::HasFatalFailure()) return;
  }
}

}  // namespace

TEST(BstrBlocks, RandomChangesBeforeAnyStart) { ChangeAtRandom(); }

TEST(BstrBlocks, RandomChangesInAStartedThread) {
  const Started started;
  ChangeAtRandom();
}

TEST(BstrBlocks, RandomChangesInThreads) {
  const Started started;
  ChangeAtRandom();
  std::thread unstarted(ChangeAtRandom);
  std::thread another([] {
    const Started startedToo;
    ChangeAtRandom();
  });
  unstarted.join();
  another.join();
}

TEST(BstrBlocks, AppendingUnitByUnit) {
  const Started started;
  for (const size_t first : {size_t{0}, size_t{1}, size_t{40}}) {
    std::u16string model(first, u'x');
    TBstr s = kest_test::Bstr(model);
    for (int i = 0; i < 3000; ++i) {
      const char16_t unit = static_cast<char16_t>(u'a' + i % 26);
      s.Append(static_cast<unsigned short>(unit));
      model += unit;
      ASSERT_EQ(0, s.GetString()[model.size()]);
      ASSERT_EQ(unit, s.GetString()[model.size() - 1]);
    }
    ExpectText(model, s);
  }
}

// A text of another length in the block of one just destroyed.
TEST(BstrBlocks, ABlockServesTextOfAboutItsLength) {
  const Started started;
  for (int first = 1; first < 140; ++first) {
    for (int second = 1; second < 140; ++second) {
      { TBstr gone(u'g', first); }
      TBstr s(u's', second), other(u'o', second);
      ExpectText(std::u16string(static_cast<size_t>(second), u's'), s);
      ExpectText(std::u16string(static_cast<size_t>(second), u'o'), other);
      ASSERT_NE(s.GetString(), other.GetString());
    }
  }
}

// What the default hooks gave is of no use to others, and the other way round.
TEST(BstrBlocks, AClientsHooksSeeEachCall) {
  const Started started;
  { TBstr kept(KEST_TEXT("as long as that")); }
  TestAllocator allocator;
  {
    TBstr s(KEST_TEXT("as long as this"));
    EXPECT_EQ(1, allocator.Requests());
    const TBstr copy(s);
    EXPECT_EQ(2, allocator.Requests());
    s.Append(u'x');
    EXPECT_EQ(3, allocator.Requests());
    EXPECT_EQ(2u * 16 + 6, allocator.LastSize());
    s.Append(u'x');
    EXPECT_EQ(4, allocator.Requests());
    EXPECT_EQ(2, allocator.Live());
    s.TrimRight(u'x');
    EXPECT_EQ(5, allocator.Requests());
  }
  EXPECT_EQ(0, allocator.Live());
  { TBstr s(KEST_TEXT("as long as this")); }
  EXPECT_EQ(6, allocator.Requests());
}

TEST(BstrBlocks, TheDefaultHooksGetBackWhatTheyGave) {
  const Started started;
  std::thread([] {
    EXPECT_EQ(1, KestInitialize(nullptr));
    { TBstr kept(KEST_TEXT("text")); }
    TestAllocator allocator;
    KestUninitialize();
    EXPECT_EQ(0, allocator.Live()) << "a block that these hooks did not give";
  }).join();
}

// A string that claims to be as long as any can be.
TEST(BstrBlocks, TheLongestTextDoesNotGrow) {
  constexpr unsigned int kBytes = 2 * 0x7FFFFFFCu;
  char* block = static_cast<char*>(KestMemAlloc(16));
  memcpy(block, &kBytes, sizeof kBytes);
  TBstr s;
  s.Attach(reinterpret_cast<unsigned short*>(block + 4));
  s.Append(u'x');
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
}

// More than a 32-bit address space has.
TEST(BstrBlocks, GrowthWithoutMemoryLeavesTheStringEmpty) {
#if defined(__SANITIZE_ADDRESS__)
  GTEST_SKIP() << "the sanitizer ends the program instead";
#endif
  if (sizeof(void*) != 4) GTEST_SKIP() << "there may be so much memory";
  TBstr s(KEST_TEXT("text"));
  EXPECT_FALSE(s.InternalAppend(KEST_TEXT("x"), 0x7FFFFFF0));
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
  s = KEST_TEXT("text");
  EXPECT_FALSE(s.AdjustBuffer(0x7FFFFFF0, true));
  EXPECT_EQ(nullptr, *s.GetRawBstrPtr());
}
