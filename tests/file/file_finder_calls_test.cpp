// What TFileFinder asks of the C library, and what becomes of its refusals. This program answers
// the calls that the library makes.

#include <dlfcn.h>
#include <errno.h>
#include <glob.h>
#include <sys/stat.h>

#include <algorithm>
#include <string>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFileFinder;
using KEST::TFileInfo;
using kest_test::TempTree;
using kest_test::Text;

// What the last glob was given, how many results were not freed, and what fails.
struct {
  bool on;
  std::string pattern;
  int flags, calls, live, globResult;
  bool hadCallback;
  std::string unreadable;  // the name that lstat64 refuses
} s_glob;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

int glob(const char* pattern, int flags, int (*callback)(const char*, int),
         glob_t* found) noexcept {
  const int result = Next<int(const char*, int, int (*)(const char*, int), glob_t*)>("glob")(
      pattern, flags, callback, found);
  if (!s_glob.on) return result;
  s_glob.pattern = pattern;
  s_glob.flags = flags;
  s_glob.hadCallback = callback != nullptr;
  ++s_glob.calls;
  if (found->gl_pathv != nullptr) ++s_glob.live;
  return s_glob.globResult != 0 ? s_glob.globResult : result;
}

void globfree(glob_t* found) noexcept {
  if (s_glob.on && found->gl_pathv != nullptr) --s_glob.live;
  Next<void(glob_t*)>("globfree")(found);
}

int lstat64(const char* path, struct stat64* status) noexcept {
  const std::string& unreadable = s_glob.unreadable;
  const std::string text = path;
  if (!unreadable.empty() && text.size() > unreadable.size() &&
      text.substr(text.size() - unreadable.size()) == unreadable) {
    errno = EIO;
    return -1;
  }
  return Next<int(const char*, struct stat64*)>("lstat64")(path, status);
}

}  // extern "C"

namespace {

class FileFinderCalls : public testing::Test {
 protected:
  void SetUp() override {
    tree.MakeFile("a");
    tree.MakeFile("b");
    tree.MakeFile("c");
    s_glob = {};
    s_glob.on = true;
  }
  void TearDown() override {
    EXPECT_EQ(0, s_glob.live) << "results left";
    s_glob = {};
  }

  // The names found, sorted.
  std::string Found() const {
    std::string names;
    TFileFinder finder;
    for (bool more = finder.Find(tree.Spec("*").GetString(), true); more;
         more = finder.FindNext(false)) {
      names += Text(finder.name);
    }
    std::sort(names.begin(), names.end());
    return names;
  }

  TempTree tree;
};

TEST_F(FileFinderCalls, GlobIsAskedForAnUnsortedList) {
  TFileFinder finder;
  EXPECT_TRUE(finder.Find(tree.Spec("?").GetString(), false));
  EXPECT_EQ(tree.Path("?"), s_glob.pattern);
  EXPECT_EQ(GLOB_NOSORT, s_glob.flags);
  EXPECT_FALSE(s_glob.hadCallback);
  EXPECT_FALSE(TFileFinder().Find(KEST_TEXT("//missing"), false));
  EXPECT_EQ(GLOB_NOSORT, s_glob.flags);
}

TEST_F(FileFinderCalls, OnlyTheRootIsReportedUnchecked) {
  EXPECT_TRUE(TFileFinder().Find(KEST_TEXT("/"), false));
  EXPECT_EQ(GLOB_NOSORT | GLOB_NOCHECK, s_glob.flags);
  TFileFinder().Find(KEST_TEXT("//"), false);
  EXPECT_EQ(GLOB_NOSORT, s_glob.flags);
  TFileFinder().Find(KEST_TEXT("/."), false);
  EXPECT_EQ(GLOB_NOSORT, s_glob.flags);
}

TEST_F(FileFinderCalls, EmptySpecificationIsAStar) {
  TFileFinder().Find(KEST_TEXT(""), false);
  EXPECT_EQ("*", s_glob.pattern);
}

TEST_F(FileFinderCalls, PartlyFailedGlobGivesNoEntries) {
  for (int result : {GLOB_NOSPACE, GLOB_ABORTED, GLOB_NOMATCH}) {
    SCOPED_TRACE(result);
    s_glob.globResult = result;
    TFileFinder finder;
    EXPECT_FALSE(finder.Find(tree.Spec("*").GetString(), false));
    EXPECT_EQ(0, s_glob.live);
    EXPECT_FALSE(finder.FindNext(false));
    TFileInfo info;
    EXPECT_EQ(nullptr, TFileFinder::FileFinderFind(tree.Spec("*"), info));
    EXPECT_TRUE(info.name.IsEmpty());
  }
}

TEST_F(FileFinderCalls, UnreadableEntriesAreSkipped) {
  EXPECT_EQ("abc", Found());
  s_glob.unreadable = "/b";
  EXPECT_EQ("ac", Found());
  s_glob.unreadable = "/a";
  EXPECT_EQ("bc", Found());
}

TEST_F(FileFinderCalls, NothingReadableIsNoMatch) {
  // glob itself must not be refused: it lists the directory without looking at the entries.
  tree.MakeFolder("d");
  tree.MakeFile("d/x");
  s_glob.unreadable = "/x";
  TFileFinder finder;
  EXPECT_FALSE(finder.Find(tree.Spec("d/*").GetString(), false));
  EXPECT_TRUE(finder.name.IsEmpty());
  EXPECT_EQ(0, s_glob.live);
}

TEST_F(FileFinderCalls, DirectoryWithoutReadableEntriesIsNotEntered) {
  tree.MakeFolder("d");
  tree.MakeFile("d/x");
  s_glob.unreadable = "/x";
  EXPECT_EQ("abcd", Found());
}

TEST_F(FileFinderCalls, DescentAsksForThePatternInTheEntry) {
  tree.MakeFolder("d1");
  tree.MakeFile("d1/d2");
  TFileFinder finder;
  ASSERT_TRUE(finder.Find(tree.Spec("d?").GetString(), true));
  EXPECT_EQ(1, s_glob.calls);
  ASSERT_TRUE(finder.FindNext(false));
  EXPECT_EQ(2, s_glob.calls);
  EXPECT_EQ(tree.Path("d1/d?"), s_glob.pattern);
  EXPECT_EQ(tree.Path("d1/d2"), Text(finder.GetFileSpec()));
  EXPECT_FALSE(finder.FindNext(false));
  EXPECT_EQ(2, s_glob.calls) << "files are not entered";
}

TEST_F(FileFinderCalls, PlatformLayerWalksOneList) {
  TFileInfo info;
  void* handle = TFileFinder::FileFinderFind(tree.Spec("*"), info);
  ASSERT_NE(nullptr, handle);
  std::string names = Text(info.name);
  while (TFileFinder::FileFinderFindNext(handle, info)) names += Text(info.name);
  std::sort(names.begin(), names.end());
  EXPECT_EQ("abc", names);
  EXPECT_FALSE(TFileFinder::FileFinderFindNext(handle, info));
  EXPECT_EQ(1, s_glob.live);
  TFileFinder::FileFinderClose(handle);
  TFileFinder::FileFinderClose(nullptr);
}

TEST_F(FileFinderCalls, ResultsAreFreedWithoutMemory) {
  const TBstr spec = tree.Spec("*");
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator&) {
    TFileFinder finder;
    for (bool more = finder.Find(spec.GetString(), true); more;) more = finder.FindNext(false);
    finder.Close();
    EXPECT_EQ(0, s_glob.live);
  });
}

}  // namespace
