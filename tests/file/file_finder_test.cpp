#include <glob.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;
using kest_test::TempTree;
using kest_test::Text;
using kest_test::WorkingDirectory;

using Names = std::vector<std::string>;

Names Sorted(Names names) {
  std::sort(names.begin(), names.end());
  return names;
}

bool Find(TFileFinder& finder, const std::string& spec, bool recursive) {
  return finder.Find(kest_test::Bstr(spec).GetString(), recursive);
}

// The specifications of all entries, in the order they are found. The finder is then at its end.
Names FindAll(TFileFinder& finder, const std::string& spec, bool recursive) {
  Names found;
  for (bool more = Find(finder, spec, recursive); more; more = finder.FindNext(false)) {
    found.push_back(Text(finder.GetFileSpec()));
    EXPECT_EQ(Text(finder.name), Text(TFile::FileNameFromFullSpec(finder.GetFileSpec())));
  }
  return found;
}

Names FindAll(const std::string& spec, bool recursive) {
  TFileFinder finder;
  return FindAll(finder, spec, recursive);
}

void ExpectNoEntry(const TFileFinder& finder) {
  EXPECT_TRUE(finder.name.IsEmpty());
  EXPECT_FALSE(finder.isDirectory);
  EXPECT_EQ(0, finder.size);
  EXPECT_EQ(0, finder.creationTime);
  EXPECT_EQ(0, finder.lastWriteTime);
  EXPECT_EQ(0, finder.lastAccessTime);
}

TEST(FileFinder, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TFileFinder>);
  static_assert(!std::is_copy_assignable_v<TFileFinder>);
}

TEST(FileFinder, IsItsOwnCurrentEntry) {
  static_assert(std::is_base_of_v<TFileInfo, TFileFinder>);
  static_assert(!std::is_polymorphic_v<TFileFinder>);
  TFileFinder finder;
  ExpectNoEntry(finder);
  EXPECT_TRUE(finder.GetFileSpec().IsEmpty());
  EXPECT_FALSE(finder.FindNext(false));
  finder.Close();
  EXPECT_FALSE(finder.FindNext(true));
}

TEST(FileFinder, Constants) {
  EXPECT_EQ(".", Text(TFileFinder::kCurrentDirectory));
  EXPECT_EQ("..", Text(TFileFinder::kParentDirectory));
}

// A tree with everything that names may be made of.
class FileFinderInATree : public testing::Test {
 protected:
  void SetUp() override {
    for (const char* folder : {"a", "a/deep", "a/deep/deeper", "b.txt", "empty", "with space",
                               ".hidden", "caf\xE9", "a.txt", "z"}) {
      tree.MakeFolder(folder);
    }
    for (const char* file : {"1",
                             "2.txt",
                             "a/3",
                             "a/4.txt",
                             "a/deep/5",
                             "a/deep/deeper/6.txt",
                             "b.txt/7.txt",
                             "b.txt/8",
                             "with space/a name",
                             ".hidden/9",
                             ".dot",
                             "a/.dot",
                             "caf\xE9/\xFF\x80\x01",
                             "a*b",
                             "[x]",
                             "q?",
                             "back\\slash",
                             "a.txt/c.txt",
                             "z/last",
                             "-dash",
                             "~tilde"}) {
      tree.MakeFile(file, file);
    }
    tree.MakeLink("link", "a");
    tree.MakeLink("a/up", "..");
    tree.MakeLink("dangling", "nowhere");
  }

  // What lies below the tree's folder, found by reading the directories. Names that begin with a
  // dot are left out, with everything below them, and links are not followed.
  Names Visible(const std::string& folder = "") const {
    Names names;
    for (const auto& entry : std::filesystem::directory_iterator(tree.Path(folder))) {
      const std::string name = entry.path().filename();
      if (name[0] == '.') continue;
      const std::string path = folder.empty() ? name : folder + "/" + name;
      names.push_back(tree.Path(path));
      if (!std::filesystem::is_directory(entry.symlink_status())) continue;
      const Names below = Visible(path);
      names.insert(names.end(), below.begin(), below.end());
    }
    return names;
  }

  TempTree tree;
};

// Pre-order by glob itself.
Names GlobbedInOrder(const std::string& folder, const std::string& pattern) {
  Names names;
  glob_t found = {};
  if (glob((folder + "/" + pattern).c_str(), GLOB_NOSORT, nullptr, &found) != 0) return names;
  for (size_t i = 0; i < found.gl_pathc; ++i) {
    names.push_back(found.gl_pathv[i]);
    if (!std::filesystem::is_directory(std::filesystem::symlink_status(names.back()))) continue;
    const Names below = GlobbedInOrder(names.back(), pattern);
    names.insert(names.end(), below.begin(), below.end());
  }
  globfree(&found);
  return names;
}

TEST_F(FileFinderInATree, RecursiveSearchVisitsEveryFileOnce) {
  const Names found = FindAll(tree.Path("*"), true);
  EXPECT_EQ(Sorted(Visible()), Sorted(found));
  EXPECT_EQ(30u, found.size());
}

TEST_F(FileFinderInATree, EntriesComeInPreOrderAsListed) {
  for (const char* pattern : {"*", "*.txt", "?", "a*", "[!a]*"}) {
    SCOPED_TRACE(pattern);
    EXPECT_EQ(GlobbedInOrder(tree.Path(), pattern), FindAll(tree.Path(pattern), true));
  }
}

TEST_F(FileFinderInATree, PlainSearchStaysInTheDirectory) {
  Names expected;
  for (const std::string& path : Visible()) {
    if (path.find('/', tree.Path().size() + 1) == std::string::npos) expected.push_back(path);
  }
  EXPECT_EQ(Sorted(expected), Sorted(FindAll(tree.Path("*"), false)));
}

TEST_F(FileFinderInATree, EntersOnlyDirectoriesThatMatch) {
  const Names expected = {"2.txt", "a.txt", "a.txt/c.txt", "b.txt", "b.txt/7.txt"};
  Names paths;
  for (const std::string& name : expected) paths.push_back(tree.Path(name));
  EXPECT_EQ(paths, Sorted(FindAll(tree.Path("*.txt"), true)));
}

TEST_F(FileFinderInATree, HiddenNamesTakeAPatternWithADot) {
  const Names expected = {tree.Path("."), tree.Path(".."), tree.Path(".dot"), tree.Path(".hidden")};
  EXPECT_EQ(expected, Sorted(FindAll(tree.Path(".*"), false)));
  // The directory itself and its parent are not entered; hidden directories are.
  Names recursive = {tree.Path(".hidden/."), tree.Path(".hidden/..")};
  recursive.insert(recursive.end(), expected.begin(), expected.end());
  EXPECT_EQ(Sorted(recursive), Sorted(FindAll(tree.Path(".*"), true)));
}

TEST_F(FileFinderInATree, SkippedDirectoriesAreNotEntered) {
  for (const char* skipped : {"a", "b.txt", "empty", "caf\xE9", "deep", "2.txt"}) {
    SCOPED_TRACE(skipped);
    Names expected = Visible();
    expected.erase(std::remove_if(expected.begin(), expected.end(),
                                  [&](const std::string& path) {
                                    return path.find("/" + std::string(skipped) + "/",
                                                     tree.Path().size()) != std::string::npos;
                                  }),
                   expected.end());
    Names found;
    TFileFinder finder;
    for (bool more = Find(finder, tree.Path("*"), true); more;
         more = finder.FindNext(Text(finder.name) == skipped)) {
      found.push_back(Text(finder.GetFileSpec()));
    }
    EXPECT_EQ(Sorted(expected), Sorted(found));
  }
}

TEST_F(FileFinderInATree, DescribesEveryEntry) {
  TFileFinder finder;
  for (bool more = Find(finder, tree.Path("*"), true); more; more = finder.FindNext(false)) {
    const std::string path = Text(finder.GetFileSpec());
    SCOPED_TRACE(path);
    const auto status = std::filesystem::symlink_status(path);
    EXPECT_EQ(std::filesystem::is_directory(status), finder.isDirectory);
    if (std::filesystem::is_regular_file(status)) {
      EXPECT_EQ(path.size() - tree.Path().size() - 1, static_cast<size_t>(finder.size));
    }
    EXPECT_LT(1600000000, finder.creationTime);
    EXPECT_LT(1600000000, finder.lastWriteTime);
    EXPECT_LT(1600000000, finder.lastAccessTime);
  }
}

TEST_F(FileFinderInATree, SpecificationsOpenWhatWasFound) {
  TFileFinder finder;
  int opened = 0;
  for (bool more = Find(finder, tree.Path("*"), true); more; more = finder.FindNext(false)) {
    TFile file;
    if (finder.isDirectory || !file.Open(finder.GetFileSpec(), 0, false)) continue;
    EXPECT_TRUE(Text(finder.name) == "link" || Text(finder.name) == "up" ||
                finder.size == file.GetLength());
    ++opened;
  }
  EXPECT_EQ(20, opened) << "all 18 visible files and the two links to directories";
}

TEST_F(FileFinderInATree, RelativeSearchesHaveRelativeSpecifications) {
  const WorkingDirectory inTree(tree.Path());
  Names expected = Visible();
  for (std::string& path : expected) path.erase(0, tree.Path().size() + 1);
  EXPECT_EQ(Sorted(expected), Sorted(FindAll("*", true)));
  EXPECT_EQ(Sorted(FindAll("*", false)), Sorted(FindAll("", false)));
  EXPECT_EQ(Sorted(expected), Sorted(FindAll("", true)));
  TFileFinder finder;
  EXPECT_TRUE(finder.Find(nullptr, false));
  EXPECT_EQ(Names{"a/deep"}, FindAll("a/d*", false));
  EXPECT_EQ(Names{"./z"}, FindAll("./z", false));
}

TEST_F(FileFinderInATree, FindsOneNameLiterally) {
  EXPECT_EQ(Names{tree.Path("a/3")}, FindAll(tree.Path("a/3"), false));
  EXPECT_EQ(Names{tree.Path("dangling")}, FindAll(tree.Path("dangling"), false));
  EXPECT_EQ(Names{tree.Path("caf\xE9")}, FindAll(tree.Path("caf\xE9"), true));
  EXPECT_EQ(Names{tree.Path("a*b")}, FindAll(tree.Path("a\\*b"), false));
  EXPECT_EQ(Names{}, FindAll(tree.Path("missing"), false));
}

TEST_F(FileFinderInATree, WithoutANameNeverDescends) {
  TFileFinder finder;
  ASSERT_TRUE(Find(finder, tree.Path("a/"), true));
  EXPECT_TRUE(finder.name.IsEmpty());
  EXPECT_TRUE(finder.isDirectory);
  EXPECT_EQ(tree.Path("a/"), Text(finder.GetFileSpec()));
  EXPECT_FALSE(finder.FindNext(false));
}

TEST(FileFinder, RootIsOneEntryWithoutAName) {
  for (bool recursive : {false, true}) {
    TFileFinder finder;
    ASSERT_TRUE(finder.Find(KEST_TEXT("/"), recursive));
    EXPECT_TRUE(finder.name.IsEmpty());
    EXPECT_TRUE(finder.isDirectory);
    EXPECT_EQ("/", Text(finder.GetFileSpec()));
    EXPECT_FALSE(finder.FindNext(false));
  }
}

TEST_F(FileFinderInATree, NoMatchLeavesTheFinderAsItWas) {
  TFileFinder finder;
  EXPECT_FALSE(Find(finder, tree.Path("no*match"), true));
  ExpectNoEntry(finder);
  EXPECT_TRUE(finder.GetFileSpec().IsEmpty());
  EXPECT_FALSE(finder.FindNext(false));
  // In the middle of another search, too.
  ASSERT_TRUE(Find(finder, tree.Path("a/deep/*"), true));
  const std::string current = Text(finder.GetFileSpec());
  EXPECT_FALSE(Find(finder, tree.Path("no*match"), false));
  EXPECT_EQ(current, Text(finder.GetFileSpec()));
  Names found = {current};
  while (finder.FindNext(false)) found.push_back(Text(finder.GetFileSpec()));
  const Names expected = {tree.Path("a/deep/5"), tree.Path("a/deep/deeper"),
                          tree.Path("a/deep/deeper/6.txt")};
  EXPECT_EQ(expected, Sorted(found));
}

TEST_F(FileFinderInATree, EndKeepsTheLastEntryUntilClose) {
  TFileFinder finder;
  const Names found = FindAll(finder, tree.Path("z/*"), false);
  ASSERT_EQ(Names{tree.Path("z/last")}, found);
  EXPECT_FALSE(finder.FindNext(false));
  EXPECT_EQ("last", Text(finder.name));
  finder.Close();
  ExpectNoEntry(finder);
  EXPECT_FALSE(finder.FindNext(false));
  EXPECT_EQ(tree.Path("z/"), Text(finder.GetFileSpec())) << "the directory stays";
  finder.Close();
}

TEST_F(FileFinderInATree, CloseInTheMiddleFreesEveryLevel) {
  kest_test::TestAllocator allocator;
  {
    TFileFinder finder;
    ASSERT_TRUE(Find(finder, tree.Path("*"), true));
    while (finder.name != KEST_TEXT("deeper")) ASSERT_TRUE(finder.FindNext(false));
    ASSERT_TRUE(finder.FindNext(false));
    finder.Close();
    ExpectNoEntry(finder);
    ASSERT_TRUE(Find(finder, tree.Path("z/*"), false));
    EXPECT_EQ("last", Text(finder.name));
    ASSERT_TRUE(Find(finder, tree.Path("a/deep/*"), true));
    while (finder.name != KEST_TEXT("6.txt")) ASSERT_TRUE(finder.FindNext(false));
  }
  EXPECT_EQ(0, allocator.Live()) << "the destructor closes";
}

// An earlier search stays below a new one and goes on behind it.
TEST_F(FileFinderInATree, FindDoesNotCloseAnEarlierSearch) {
  TFileFinder finder;
  ASSERT_TRUE(Find(finder, tree.Path("a/deep/*"), false));
  Names found = {Text(finder.name)};
  ASSERT_TRUE(Find(finder, tree.Path("z/*"), false));
  EXPECT_EQ("last", Text(finder.name));
  while (finder.FindNext(false)) found.push_back(Text(finder.name));
  EXPECT_EQ((Names{"5", "deeper"}), Sorted(found));
}

TEST_F(FileFinderInATree, EntriesThatVanishAreSkipped) {
  TFileFinder finder;
  ASSERT_TRUE(Find(finder, tree.Path("a/*"), false));
  const std::string first = Text(finder.name);
  for (const char* name : {"3", "4.txt", "up"}) std::filesystem::remove(tree.Path("a/") + name);
  int more = 0;
  while (finder.FindNext(false)) ++more;
  EXPECT_EQ(first == "deep" ? 0 : 1, more);
}

TEST_F(FileFinderInATree, WildcardsInTheDirectoryPartAreMatchedToo) {
  const Names names = FindAll(tree.Path("*/4.txt"), false);
  ASSERT_EQ(2u, names.size()) << "one of them through the link";
  EXPECT_EQ(tree.Path("*/4.txt"), names[0]) << "the directory is as it was asked for";
}

// A directory's name is a part of the pattern that lists it.
TEST(FileFinder, NamesOfEnteredDirectoriesAreMatchedAsPatterns) {
  const TempTree tree;
  tree.MakeFolder("[x]");
  tree.MakeFile("[x]/never");
  EXPECT_EQ(Names{tree.Path("[x]")}, FindAll(tree.Path("*"), true));
}

TEST(FileFinder, EveryByteOfANameRoundTrips) {
  const TempTree tree;
  Names expected;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') continue;
    expected.push_back(tree.Path(std::string("n") + static_cast<char>(byte)));
    tree.MakeFile(std::string("n") + static_cast<char>(byte));
  }
  EXPECT_EQ(Sorted(expected), Sorted(FindAll(tree.Path("n*"), false)));
  TFileFinder finder;
  ASSERT_TRUE(Find(finder, tree.Path("n\xFF"), false));
  EXPECT_EQ(0xFF, finder.name.GetAt(1)) << "a byte is a unit";
}

// A character above U+00FF becomes a question mark, which then matches any character.
TEST(FileFinder, CharactersWithoutAByteBecomeAWildcard) {
  const TempTree tree;
  tree.MakeFile("caf\xE9");
  TFileFinder finder;
  const TBstr spec = tree.Spec("caf") + u'\u0416';
  EXPECT_TRUE(finder.Find(spec.GetString(), false));
  EXPECT_EQ("caf\xE9", Text(finder.name));
}

TEST(FileFinder, VisitsDeepTrees) {
  const TempTree tree;
  std::string path = "d";
  for (int i = 0; i < 60; ++i) path += "/d";
  tree.MakeFolder(path);
  tree.MakeFile(path + "/end");
  const Names found = FindAll(tree.Path("*"), true);
  EXPECT_EQ(62u, found.size());
  EXPECT_EQ(tree.Path(path + "/end"), found.back());
}

// A directory whose name is a pattern is entered as that pattern, and so gives again what lies in
// others. A link that leads back ends where the system follows no more of them.
TEST(FileFinder, EndsInTreesWhoseNamesArePatterns) {
  const TempTree nested;
  for (const std::string outer : {"*", "?", "[", "\\"}) {
    for (const char* inner : {"/*", "/?", "/[", "/\\"}) nested.MakeFolder(outer + inner);
  }
  EXPECT_LE(20u, FindAll(nested.Path("*"), true).size());
  const TempTree looped;
  looped.MakeFolder("*");
  looped.MakeLink("back", ".");
  EXPECT_LE(40u, FindAll(looped.Path("*"), true).size());
}

// The C library's matcher would run out of stack.
TEST(FileFinder, MoreThan256PartsBehindAWildcardMatchNothing) {
  const TempTree tree;
  std::string path = "d";
  for (int i = 0; i < 257; ++i) path += "/d";
  tree.MakeFolder(path);
  const std::string below = path.substr(1);  // 257 parts
  EXPECT_EQ(Names{}, FindAll(tree.Path("?" + below), false));
  EXPECT_EQ(1u, FindAll(tree.Path("?" + below.substr(2)), false).size());
  EXPECT_EQ(1u, FindAll(tree.Path(path), false).size()) << "without a wildcard";
  for (const char* part : {"*/", "?/", "[d]/", "d/"}) {
    std::string hostile = "*/";
    for (int i = 0; i < 1000000; ++i) hostile += part;
    TFileFinder finder;
    EXPECT_FALSE(Find(finder, hostile, true)) << part;
  }
}

// A specification that lacks a part would be the name of something else.
TEST_F(FileFinderInATree, WithoutMemoryEntriesAreRightOrMissing) {
  const WorkingDirectory inTree(tree.Path());
  Names expected = Visible("a");
  for (std::string& path : expected) path.erase(0, tree.Path().size() + 1);
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    Names found;
    bool complete = true;
    TFileFinder finder;
    for (bool more = finder.Find(KEST_TEXT("a/*"), true); more; more = finder.FindNext(false)) {
      const std::string spec = Text(finder.GetFileSpec());
      if (spec.empty()) complete = false;
      if (!spec.empty()) found.push_back(spec);
    }
    for (const std::string& spec : found) {
      EXPECT_EQ(1, std::count(expected.begin(), expected.end(), spec)) << spec;
      EXPECT_EQ(1, std::count(found.begin(), found.end(), spec)) << spec;
    }
    if (allocator.Refused() != 0) return;
    EXPECT_TRUE(complete);
    EXPECT_EQ(expected.size(), found.size());
  });
}

// Whichever of the directories is listed first, the other one comes after the climb out of it.
TEST(FileFinder, AClimbThatLacksMemoryCanBeTriedAgain) {
  const TempTree tree;
  for (const char* folder : {"1", "2"}) {
    tree.MakeFolder(folder);
    tree.MakeFile(std::string(folder) + "/file");
  }
  const TBstr spec = tree.Spec("*");
  const Names expected = FindAll(tree.Path("*"), true);
  ASSERT_EQ(4u, expected.size());
  TFileFinder finder;
  ASSERT_TRUE(finder.Find(spec.GetString(), true));
  ASSERT_TRUE(finder.FindNext(false));
  {
    kest_test::TestAllocator allocator;
    allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
    EXPECT_FALSE(finder.FindNext(false));
    EXPECT_NE(0, allocator.Refused());
  }
  EXPECT_EQ(expected[1], Text(finder.GetFileSpec())) << "the entry stays";
  for (size_t i : {2u, 3u}) {
    EXPECT_TRUE(finder.FindNext(false));
    EXPECT_EQ(expected[i], Text(finder.GetFileSpec()));
  }
  EXPECT_FALSE(finder.FindNext(false));
}

TEST_F(FileFinderInATree, FindWithoutMemoryLeavesTheFinder) {
  const std::string path = tree.Path("z/*");
  const TBstr spec = kest_test::Bstr(path), directory = tree.Spec("z/");
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    TFileFinder finder;
    if (finder.Find(spec.GetString(), true)) {
      EXPECT_EQ(4, finder.name.GetLength());
      return;
    }
    EXPECT_NE(0, allocator.Refused());
    ExpectNoEntry(finder);
    allocator.RefuseNone();
    EXPECT_TRUE(finder.GetFileSpec().IsEmpty());
    EXPECT_FALSE(finder.FindNext(false));
    EXPECT_TRUE(finder.Find(spec.GetString(), true));
    EXPECT_FALSE(finder.FindNext(false));
  });
}

// A folder that could not be entered, or an entry whose name could not be kept, for lack of memory
// was passed over as if it had vanished: the search went on and nothing told that it was not whole.
TEST(FormerBug, AnEntryWasPassedOverForLackOfMemory) {
  const TempTree tree;
  for (const char* folder : {"1", "2"}) {
    tree.MakeFolder(folder);
    tree.MakeFile(std::string(folder) + "/file");
  }
  const TBstr spec = tree.Spec("*");
  const Names expected = FindAll(tree.Path("*"), true);
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    TFileFinder finder;
    const int refusedBefore = allocator.Refused();
    bool found = finder.Find(spec.GetString(), true);
    if (allocator.Refused() != refusedBefore) return;
    for (size_t i = 1; i < expected.size(); ++i) {
      const int refused = allocator.Refused();
      found = finder.FindNext(false);
      EXPECT_EQ(allocator.Refused() == refused, found);
      allocator.RefuseNone();
      if (!found) {
        EXPECT_TRUE(finder.FindNext(false)) << "it goes on from the same entry";
      }
      EXPECT_EQ(expected[i], Text(finder.GetFileSpec()));
    }
  });
}

// The 8-bit form was asked for twice. Without memory at the first time, the test for too many parts
// saw an empty pattern, and the whole one went to the system all the same.
TEST(FormerBug, AHugePatternPassedUncheckedWhenMemoryCameBack) {
  const TempTree tree;
  std::string parts;
  for (int i = 0; i < 257; ++i) parts += "/d";
  tree.MakeFolder("d" + parts);
  const TBstr spec = tree.Spec("?" + parts);
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator&) {
    TFileInfo info;
    const TBstr fresh(spec.GetString());
    EXPECT_EQ(nullptr, TFileFinder::FileFinderFind(fresh, info));
    EXPECT_TRUE(info.name.IsEmpty());
  });
}

// A directory whose name was a backslash was searched as the directory it lies in, because the
// backslash escaped the separator, and so was entered again and again until the path was too long.
TEST(FormerBug, ANameThatEndsInABackslashWasEnteredForEver) {
  const TempTree tree;
  tree.MakeFolder("a\\\\");  // two of them are a plain one
  for (const char* name : {"\\", "a\\"}) {
    tree.MakeFolder(name);
    tree.MakeFile(std::string(name) + "/file");
  }
  EXPECT_EQ((Names{tree.Path("\\"), tree.Path("a\\"), tree.Path("a\\\\"), tree.Path("a\\\\/file")}),
            Sorted(FindAll(tree.Path("*"), true)));
}

}  // namespace
