#include <string>
#include <vector>

#include "kest/file.h"

namespace {

int Compare(const std::u16string& name, const std::u16string& pattern) {
  return KEST::TFileFinder::ComparePattern(
      reinterpret_cast<const unsigned short*>(name.c_str()),
      reinterpret_cast<const unsigned short*>(pattern.c_str()));
}

TEST(ComparePattern, Rows) {
  const struct {
    const char16_t* name;
    const char16_t* pattern;
    int result;
  } kRows[] = {
      {u"", u"", 0},
      {u"abc", u"abc", 0},
      {u"abc", u"a?c", 0},
      {u"abc", u"???", 0},
      {u"abc", u"a*", 0},
      {u"abc", u"*", 0},
      {u"", u"*", 0},
      {u"", u"**", 0},
      {u"abc", u"a*c", 0},
      {u"ac", u"a*c", 0},
      {u"abbbc", u"*bc", -'c' + 'b'},  // stops at the first b, for good
      {u"acbc", u"a*c", 'b'},
      {u"a.b.c", u"*.*", 0},
      {u"abc", u"abd", -1},
      {u"abd", u"abc", 1},
      {u"ABC", u"abc", 'A' - 'a'},
      {u"abc", u"ab", 'c'},
      {u"ab", u"abc", -'c'},
      {u"ab", u"ab?", -'?'},  // a "?" stands for one unit, not for none
      {u"", u"?", -'?'},
      {u"ab", u"*?", -'?'},  // "*" stretches to a "?" in the name, or to its end
      {u"a?", u"*?", 0},
      {u"a*b", u"*", 0},
      {u"ab", u"**", 0},
      {u"a*", u"**", 0},
      {u"a*b", u"**", 0},
      {u"?", u"a", '?' - 'a'},  // a pattern's characters mean nothing in a name
      {u"*", u"a", '*' - 'a'},
      {u"\xFFFF", u"a", 0xFFFF - 'a'},  // differences of unsigned units
      {u"a", u"\xFFFF", 'a' - 0xFFFF},
      {u"\xFFFF", u"", 0xFFFF},
      {u"", u"\xFFFF", -0xFFFF},
      {u"\u0416x", u"?x", 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.name << " against " << row.pattern);
    EXPECT_EQ(row.result, Compare(row.name, row.pattern));
  }
}

TEST(ComparePattern, NullIsEmpty) {
  const unsigned short* a = KEST_TEXT("a");
  EXPECT_EQ(0, KEST::TFileFinder::ComparePattern(nullptr, nullptr));
  EXPECT_EQ(0, KEST::TFileFinder::ComparePattern(nullptr, KEST_TEXT("*")));
  EXPECT_EQ('a', KEST::TFileFinder::ComparePattern(a, nullptr));
  EXPECT_EQ(-'a', KEST::TFileFinder::ComparePattern(nullptr, a));
}

// The rules one by one, on indexes.
int Model(const std::u16string& name, const std::u16string& pattern) {
  size_t i = 0, j = 0;
  if (name.empty() && pattern.empty()) return 0;
  while (i < name.size() || j < pattern.size()) {
    const int a = i < name.size() ? name[i] : 0;
    const int d = j < pattern.size() ? pattern[j] : 0;
    if (d == '*') {
      const int following = j + 1 < pattern.size() ? pattern[j + 1] : 0;
      if (a != 0 && a != following) {
        while (i < name.size() && name[i] != following) ++i;
      }
      ++j;
    } else if (a == d || (d == '?' && a != 0)) {
      ++i;
      ++j;
    } else {
      return a - d;
    }
  }
  return 0;
}

TEST(ComparePattern, AgreesWithTheRulesOnAllShortPairs) {
  std::vector<std::u16string> texts = {u""};
  for (size_t i = 0; texts[i].size() < 4; ++i) {
    for (char16_t unit : u"ab*?") {
      if (unit != 0) texts.push_back(texts[i] + unit);
    }
  }
  ASSERT_EQ(341u, texts.size());
  for (const std::u16string& name : texts) {
    for (const std::u16string& pattern : texts) {
      ASSERT_EQ(Model(name, pattern), Compare(name, pattern))
          << testing::PrintToString(name) << " against " << testing::PrintToString(pattern);
    }
  }
}

TEST(ComparePattern, TakesOnePass) {
  const std::u16string name(1000000, 'a');
  std::u16string pattern;
  for (int i = 0; i < 500000; ++i) pattern += u"*a";
  EXPECT_EQ('a', Compare(name, pattern));
  EXPECT_EQ(0, Compare(name, pattern + u"*"));
}

}  // namespace
