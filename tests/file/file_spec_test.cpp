#include <stdio.h>
#include <stdlib.h>

#include <functional>
#include <iterator>
#include <random>
#include <string>
#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using kest_test::Text;

// All texts of up to length units over an alphabet, the empty one first.
std::vector<std::u16string> AllTexts(const std::u16string& alphabet, size_t length) {
  std::vector<std::u16string> texts = {u""};
  for (size_t i = 0; texts[i].size() < length; ++i) {
    for (char16_t unit : alphabet) texts.push_back(texts[i] + unit);
  }
  return texts;
}

TBstr Bstr16(const std::u16string& text) {
  return TBstr(reinterpret_cast<const unsigned short*>(text.data()), static_cast<int>(text.size()));
}

std::u16string Text16(const TBstr& text) {
  return std::u16string(reinterpret_cast<const char16_t*>(text.GetString()),
                        static_cast<size_t>(text.GetLength()));
}

TEST(FileSpec, Constants) {
  EXPECT_EQ(u'/', TFile::kDirectorySeparator);
  const unsigned short expected[] = {0x2044, 0x2215, 0xFF0F, 0xFF0E, 0};
  for (int i = 0; i < 5; ++i) EXPECT_EQ(expected[i], TFile::kUnsafeConversions[i]) << i;
}

// Columns: specification, with a trailing separator, without, its directory, its name.
constexpr const char* kParts[][5] = {
    {"", "", "", "", ""},
    {"/", "/", "", "/", ""},
    {"///", "///", "", "///", ""},
    {"/a", "/a/", "/a", "/", "a"},
    {"/a/", "/a/", "/a", "/a/", ""},
    {"/a///", "/a///", "/a", "/a///", ""},
    {"b.txt", "b.txt/", "b.txt", "", "b.txt"},
    {"/a/b.txt", "/a/b.txt/", "/a/b.txt", "/a/", "b.txt"},
    {"a//b", "a//b/", "a//b", "a//", "b"},
    {"a\\b", "a\\b/", "a\\b", "", "a\\b"},
};

TEST(FileSpec, Parts) {
  for (const auto& row : kParts) {
    SCOPED_TRACE(row[0]);
    const TBstr spec(row[0]);
    EXPECT_EQ(row[1], Text(TFile::AddTrailingSeparator(spec)));
    EXPECT_EQ(row[2], Text(TFile::RemoveTrailingSeparator(spec)));
    EXPECT_EQ(row[3], Text(TFile::DirSpecFromFullSpec(spec)));
    EXPECT_EQ(row[4], Text(TFile::FileNameFromFullSpec(spec)));
    EXPECT_EQ(row[0], Text(spec)) << "the argument has changed";
  }
}

TEST(FileSpec, DirectoryAndNameMakeTheSpecification) {
  for (const std::u16string& text : AllTexts(u"/a\uFF0F", 5)) {
    const TBstr spec = Bstr16(text);
    const TBstr directory = TFile::DirSpecFromFullSpec(spec);
    const TBstr name = TFile::FileNameFromFullSpec(spec);
    ASSERT_EQ(text, Text16(directory) + Text16(name));
    ASSERT_EQ(text, Text16(TFile::AppendFileNameToSpec(directory, name)));
    ASSERT_EQ(-1, name.Find(u'/'));
  }
}

TEST(FileSpec, AppendsAName) {
  constexpr const char* kRows[][3] = {
      {"", "x", "x"},       {"a", "x", "a/x"}, {"a/", "x", "a/x"},    {"/", "x", "/x"},
      {"a//", "x", "a//x"}, {"a", "", "a/"},   {"a/", "", "a/"},      {"", "", ""},
      {"a", "/x", "a//x"},  {"", "/x", "/x"},  {"a", "b/c", "a/b/c"}, {"/a b", "\xE9", "/a b/\xE9"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row[0] << " and " << row[1]);
    EXPECT_EQ(row[2], Text(TFile::AppendFileNameToSpec(row[0], row[1])));
  }
}

TEST(FileSpec, KeepsUnitsOfAllValues) {
  const std::u16string text = u"/\u0416\uFFFF\xD83D/x";
  EXPECT_EQ(text + u"/", Text16(TFile::AddTrailingSeparator(Bstr16(text))));
  EXPECT_EQ(text, Text16(TFile::RemoveTrailingSeparator(Bstr16(text + u"//"))));
  EXPECT_EQ(text, Text16(TFile::CanonicalizeSpec(Bstr16(text))));
  const std::u16string inner = std::u16string(u"a\0b", 3);
  EXPECT_EQ(inner + u"/" + inner,
            Text16(TFile::AppendFileNameToSpec(Bstr16(inner), Bstr16(inner))));
}

TEST(FileSpec, Canonicalizes) {
  constexpr const char* kRows[][2] = {
      {"", ""},
      {"/a/./b", "/a/b"},
      {"/a/b/.", "/a/b/"},
      {"./a", "a"},
      {".", ""},
      {"./", ""},
      {"/.", "/"},
      {"././.", ""},
      {"/a/b/../c", "/a/c"},
      {"/a/b/..", "/a/"},
      {"a/..", ""},
      {"a/../b", "b"},
      {"a.b/.c", "a.b/.c"},
      {".profile", ".profile"},
      {"/a/...x/..a/a..", "/a/...x/..a/a.."},
      {"...", "..."},
      {"../x", ""},
      {"/../x", ""},
      {"/..", ""},
      {"..", ""},
      {"./..", ""},
      {"a//../b", "a/b"},
      // One pass: what moved to the left of the search is not looked at again, on purpose.
      {"/a/b/../../c", "/a/../c"},
      {"/a/../../b", "/../b"},
      {"abc/.././../x", "./../x"},
      {"a/b/../../../x", "a/x"},
      {"/ab/../../..", "/"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row[0]);
    EXPECT_EQ(row[1], Text(TFile::CanonicalizeSpec(row[0])));
  }
}

// The rules one by one, deleting from one string.
std::u16string CanonicalizeByDeleting(std::u16string text) {
  const auto find = [&text](size_t start) {
    while (start < text.size() && text[start] != 0 && text[start] != '.') ++start;
    return start < text.size() && text[start] == '.' ? start : std::u16string::npos;
  };
  const auto at = [&text](size_t i) { return i < text.size() ? text[i] : u'\0'; };
  for (size_t pos = find(0); pos != std::u16string::npos;) {
    if (pos > 0 && text[pos - 1] != '/') {
      pos = find(pos + 1);
    } else if (pos + 1 == text.size() || at(pos + 1) == '/') {
      text.erase(pos, 2);
      pos = find(pos);
    } else if (at(pos + 1) == '.' && pos + 2 < text.size() && at(pos + 2) != '/') {
      pos = find(pos + 1);
    } else if (at(pos + 1) == '.') {
      if (pos <= 1) return u"";
      size_t j = pos - 1;
      while (j > 0 && text[j - 1] != '/') --j;
      text.erase(j, pos - j + 3);
      pos = find(pos);
    } else {
      pos = find(pos + 1);
    }
  }
  return text;
}

void ExpectCanonicalizedByTheRules(const std::u16string& text) {
  ASSERT_EQ(testing::PrintToString(CanonicalizeByDeleting(text)),
            testing::PrintToString(Text16(TFile::CanonicalizeSpec(Bstr16(text)))))
      << "of " << testing::PrintToString(text);
}

TEST(FileSpec, CanonicalizesAllShortTextsByTheRules) {
  for (const std::u16string& text : AllTexts(u"/.a", 8)) ExpectCanonicalizedByTheRules(text);
}

TEST(FileSpec, CanonicalizesTextsWithZeroUnitsByTheRules) {
  const std::u16string alphabet(u"/.a\0", 4);
  for (const std::u16string& text : AllTexts(alphabet, 7)) ExpectCanonicalizedByTheRules(text);
}

TEST(FileSpec, CanonicalizesLongTextsByTheRules) {
  std::mt19937 random(1);
  const char16_t* const kPieces[] = {u"/", u"/", u"/../", u"/./", u"..",
                                     u".", u"a", u"bc",   u"defg"};
  for (int i = 0; i < 5000; ++i) {
    std::u16string text;
    for (auto n = random() % 40; n > 0; --n) text += kPieces[random() % std::size(kPieces)];
    ExpectCanonicalizedByTheRules(text);
  }
}

// Deleting from one string would copy a terabyte for the first two.
TEST(FileSpec, CanonicalizesHostileTextsInOnePass) {
  const auto repeat = [](const std::u16string& part) {
    std::u16string text;
    for (int i = 0; i < 700000; ++i) text += part;
    return text;
  };
  EXPECT_EQ(u"", Text16(TFile::CanonicalizeSpec(Bstr16(repeat(u"./")))));
  EXPECT_EQ(u"", Text16(TFile::CanonicalizeSpec(Bstr16(repeat(u"a/../")))));
  const std::u16string kept = repeat(u"/..a");
  EXPECT_TRUE(kept == Text16(TFile::CanonicalizeSpec(Bstr16(kept))));
}

TEST(FileSpec, MakesNothingValid) {
  for (const char* text : {"", "/a/b", "a:b*?", "/../x/."}) {
    for (bool flag : {false, true}) EXPECT_EQ(text, Text(TFile::MakeValidSpec(text, flag)));
  }
}

TEST(FileSpec, KnowsWhatIsUnsafeToConvert) {
  EXPECT_TRUE(TFile::SafeToConvert(TBstr()));
  EXPECT_TRUE(TFile::SafeToConvert("/a/../b.txt"));
  EXPECT_TRUE(TFile::SafeToConvert(Bstr16(u"/caf\u00E9/\u0416\uFF0D\u2043\u2216")));
  for (char16_t unit : {u'\u2044', u'\u2215', u'\uFF0F', u'\uFF0E'}) {
    SCOPED_TRACE(static_cast<int>(unit));
    EXPECT_FALSE(TFile::SafeToConvert(Bstr16({unit})));
    EXPECT_FALSE(TFile::SafeToConvert(Bstr16({u'/', u'a', unit})));
    EXPECT_FALSE(TFile::SafeToConvert(Bstr16({unit, u'/', u'a'})));
  }
}

TEST(FileSpec, TemporaryDirectoryEndsWithASeparator) {
  EXPECT_EQ("/tmp/", Text(TFile::GetTempDirectory()));
}

TEST(FileSpec, TemporaryNamesComeFromTheLowWordOfRand) {
  for (unsigned int seed : {1u, 2u, 99u}) {
    std::vector<std::string> expected, made;
    srand(seed);
    for (int i = 0; i < 100; ++i) {
      char name[30];
      snprintf(name, sizeof name, "/tmp/kest%04x.tmp", static_cast<unsigned int>(rand()) & 0xFFFF);
      expected.push_back(name);
    }
    srand(seed);
    for (int i = 0; i < 100; ++i) made.push_back(Text(TFile::CreateTempFileSpec()));
    EXPECT_EQ(expected, made);
  }
}

TEST(FileSpec, TemporaryNamesAreNotCreatedAndNotSeeded) {
  srand(123);
  const std::string first = Text(TFile::CreateTempFileSpec());
  const std::string second = Text(TFile::CreateTempFileSpec());
  EXPECT_NE(first, second);
  const bool existed = std::filesystem::exists(first);
  srand(123);
  EXPECT_EQ(first, Text(TFile::CreateTempFileSpec()));
  EXPECT_EQ(existed, std::filesystem::exists(first));
}

// A part of the text would be the name of something else.
TEST(FileSpec, WithoutMemoryResultsAreWholeOrEmpty) {
  const TBstr spec("/a/./b//"), name("x");
  const struct {
    const char* what;
    std::function<TBstr()> make;
    TBstr whole;
  } kRows[] = {
      {"add", [&] { return TFile::AddTrailingSeparator(name); }, "x/"},
      {"remove", [&] { return TFile::RemoveTrailingSeparator(spec); }, "/a/./b"},
      {"append", [&] { return TFile::AppendFileNameToSpec(spec, name); }, "/a/./b//x"},
      {"append with separator", [&] { return TFile::AppendFileNameToSpec(name, name); }, "x/x"},
      {"directory", [&] { return TFile::DirSpecFromFullSpec(spec); }, "/a/./b//"},
      {"name", [&] { return TFile::FileNameFromFullSpec(name); }, "x"},
      {"canonicalize", [&] { return TFile::CanonicalizeSpec(spec); }, "/a/b//"},
      {"valid", [&] { return TFile::MakeValidSpec(spec, true); }, "/a/./b//"},
      {"temporary directory", [&] { return TFile::GetTempDirectory(); }, "/tmp/"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
      const TBstr made = row.make();
      EXPECT_TRUE(allocator.Refused() == 0 ? made == row.whole : made.IsEmpty());
    });
  }
  kest_test::ForEachRefusedRequest([](kest_test::TestAllocator& allocator) {
    const TBstr made = TFile::CreateTempFileSpec();
    EXPECT_EQ(allocator.Refused() == 0 ? 17 : 0, made.GetLength());
  });
}

}  // namespace
