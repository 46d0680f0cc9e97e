#include <fcntl.h>
#include <limits.h>
#include <sys/stat.h>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileInfo;
using kest_test::Bstr;
using kest_test::TempTree;
using kest_test::Text;

TEST(FileInfo, IsEmptyAtFirst) {
  const TFileInfo info;
  EXPECT_TRUE(info.name.IsEmpty());
  EXPECT_FALSE(info.isDirectory);
  EXPECT_EQ(0, info.size);
  EXPECT_EQ(0, info.creationTime);
  EXPECT_EQ(0, info.lastWriteTime);
  EXPECT_EQ(0, info.lastAccessTime);
}

TEST(FileInfo, InitSetsEveryField) {
  TFileInfo info;
  info.Init("name", true, LLONG_MIN, LONG_MIN, LONG_MAX, -1);
  const TFileInfo copy = info;
  info.Init(info.name, false, 1, 2, 3, 4);
  EXPECT_EQ("name", Text(info.name));
  EXPECT_FALSE(info.isDirectory);
  EXPECT_EQ(1, info.size);
  EXPECT_EQ(2, info.creationTime);
  EXPECT_EQ(3, info.lastWriteTime);
  EXPECT_EQ(4, info.lastAccessTime);
  EXPECT_EQ("name", Text(copy.name));
  EXPECT_TRUE(copy.isDirectory);
  EXPECT_EQ(LLONG_MIN, copy.size);
  EXPECT_EQ(LONG_MIN, copy.creationTime);
  EXPECT_EQ(LONG_MAX, copy.lastWriteTime);
  EXPECT_EQ(-1, copy.lastAccessTime);
}

// GetInfo against lstat.
void ExpectDescribed(const std::string& path, const std::string& name) {
  SCOPED_TRACE(path);
  struct stat64 status = {};
  ASSERT_EQ(0, lstat64(path.c_str(), &status));
  TFileInfo info;
  ASSERT_TRUE(TFile::GetInfo(Bstr(path), info));
  EXPECT_EQ(name, Text(info.name));
  EXPECT_EQ(S_ISDIR(status.st_mode), info.isDirectory);
  EXPECT_EQ(status.st_size, info.size);
  EXPECT_EQ(status.st_ctime, info.creationTime);
  EXPECT_EQ(status.st_mtime, info.lastWriteTime);
  EXPECT_EQ(status.st_atime, info.lastAccessTime);
}

TEST(FileInfo, GetInfoDescribesOneEntry) {
  const TempTree tree;
  tree.MakeFile("file", "12345");
  tree.MakeFile(".hidden caf\xE9");
  tree.MakeFolder("folder");
  tree.MakeLink("link", "folder");
  tree.MakeLink("dangling", "a target of 24 characters");
  // The three times differ: access, modification, and the status change is now.
  const timespec times[2] = {{1000000001, 0}, {1000000002, 0}};
  ASSERT_EQ(0, utimensat(AT_FDCWD, tree.Path("file").c_str(), times, 0));
  for (const char* name : {"file", ".hidden caf\xE9", "folder", "link", "dangling"}) {
    ExpectDescribed(tree.Path(name), name);
  }
  ExpectDescribed("/", "");
  ExpectDescribed("/dev/null", "null");
  TFileInfo info;
  ASSERT_TRUE(TFile::GetInfo(tree.Spec("file"), info));
  EXPECT_EQ(1000000001, info.lastAccessTime);
  EXPECT_EQ(1000000002, info.lastWriteTime);
  EXPECT_LT(1000000002, info.creationTime);
}

TEST(FileInfo, LinksAreNoDirectories) {
  const TempTree tree;
  tree.MakeFolder("folder");
  tree.MakeLink("link", "folder");
  TFileInfo info;
  ASSERT_TRUE(TFile::GetInfo(tree.Spec("link"), info));
  EXPECT_FALSE(info.isDirectory);
  EXPECT_EQ(6, info.size) << "the length of its target's name";
}

TEST(FileInfo, SizesHave64Bits) {
  const TempTree tree;
  for (long long size : {0x7FFFFFFFLL, 0x80000000LL, 0xFFFFFFFFLL, 0x123456789LL}) {
    SCOPED_TRACE(size);
    tree.MakeSparseFile("large", size);
    for (const char* spec : {"large", "l*"}) {
      TFileInfo info;
      EXPECT_TRUE(TFile::GetInfo(tree.Spec(spec), info)) << spec;
      EXPECT_EQ(size, info.size) << spec;
    }
  }
}

TEST(FileInfo, GetInfoMatchesPatterns) {
  const TempTree tree;
  tree.MakeFile("abc");
  TFileInfo info;
  for (const char* pattern : {"*", "a?c", "[a-b]bc"}) {
    EXPECT_TRUE(TFile::GetInfo(tree.Spec(pattern), info)) << pattern;
    EXPECT_EQ("abc", Text(info.name));
  }
}

TEST(FileInfo, GetInfoWithoutASpecificationTakesTheFirstEntryHere) {
  const TempTree tree;
  tree.MakeFile("only");
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(tree.Path());
  TFileInfo info;
  EXPECT_TRUE(TFile::GetInfo(TBstr(), info));
  EXPECT_EQ("only", Text(info.name));
  std::filesystem::current_path(before);
}

TEST(FileInfo, FailedGetInfoLeavesTheInfo) {
  const TempTree tree;
  TFileInfo info;
  info.Init("before", true, 1, 2, 3, 4);
  EXPECT_FALSE(TFile::GetInfo(tree.Spec("missing"), info));
  EXPECT_FALSE(TFile::GetInfo(tree.Spec("*"), info));
  EXPECT_EQ("before", Text(info.name));
  EXPECT_EQ(4, info.lastAccessTime);
}

TEST(FileInfo, GetInfoMayWriteOverItsOwnSpecification) {
  const TempTree tree;
  tree.MakeFile("abc");
  TFileInfo info;
  info.name = tree.Spec("a*");
  EXPECT_TRUE(TFile::GetInfo(info.name, info));
  EXPECT_EQ("abc", Text(info.name));
}

TEST(FileInfo, GetInfoWithoutMemoryFails) {
  const TempTree tree;
  tree.MakeFile("abc", "12345");
  const TBstr spec = tree.Spec("abc"), expected("abc");
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    TFileInfo info;
    const bool found = TFile::GetInfo(spec, info);
    EXPECT_TRUE(found || allocator.Refused() != 0);
    EXPECT_TRUE(found ? info.name == expected : info.name.IsEmpty());
    EXPECT_EQ(found ? 5 : 0, info.size);
  });
}

}  // namespace
