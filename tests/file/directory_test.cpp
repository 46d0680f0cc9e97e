#include <dlfcn.h>
#include <errno.h>
#include <sys/stat.h>
#include <time.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using kest_test::Bstr;
using kest_test::TempTree;

constexpr long kFarFuture = 0x7FFFFFFF;

// While it lives, mkdir works on folders that are only remembered. At first there are "/", "/a" and
// "a"; whatever is called "f" is a file.
class FakeSystem;
FakeSystem* s_system = nullptr;

class FakeSystem {
 public:
  FakeSystem() { s_system = this; }
  ~FakeSystem() { s_system = nullptr; }

  int MakeFolder(const std::string& path) {
    ++calls_;
    if (path.empty()) return Fail(ENOENT);
    std::string folder = path[0] == '/' ? "/" : "", name;
    std::istringstream parts(path);
    for (std::string part; std::getline(parts, part, '/');) {
      if (part.empty() || part == ".") continue;
      if (folders_.count(folder) == 0) return Fail(ENOENT);
      name = part;
      folder += part + "/";
    }
    if (name == "f" || !folders_.insert(folder).second) return Fail(EEXIST);
    return 0;
  }
  const std::set<std::string>& Folders() const { return folders_; }
  int Calls() const { return calls_; }

 private:
  static int Fail(int error) {
    errno = error;
    return -1;
  }
  std::set<std::string> folders_ = {"", "/", "/a/", "a/"};
  int calls_ = 0;
};

}  // namespace

extern "C" int mkdir(const char* path, mode_t mode) noexcept {
  if (s_system != nullptr) return s_system->MakeFolder(path);
  static const auto real =
      reinterpret_cast<int (*)(const char*, mode_t)>(dlsym(RTLD_NEXT, "mkdir"));
  return real(path, mode);
}

namespace {

struct stat Status(const std::string& path) {
  struct stat status = {};
  EXPECT_EQ(0, stat(path.c_str(), &status)) << path;
  return status;
}

TEST(Directory, IsCreatedWithTheUsualRights) {
  const TempTree tree;
  const struct {
    const char* name;
    mode_t mask, mode;
  } kRows[] = {{"all", 0, 0775}, {"some", 027, 0750}, {"none", 0777, 0}};
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    const mode_t before = umask(row.mask);
    EXPECT_TRUE(TFile::CreateDirectory(tree.Spec(row.name)));
    umask(before);
    EXPECT_EQ(S_IFDIR | row.mode, Status(tree.Path(row.name)).st_mode);
  }
}

TEST(Directory, CreationIgnoresTrailingSeparators) {
  const TempTree tree;
  EXPECT_TRUE(TFile::CreateDirectory(tree.Spec("a///")));
  EXPECT_TRUE(std::filesystem::is_directory(tree.Path("a")));
  tree.MakeFile("file");
  EXPECT_TRUE(TFile::CreateDirectory(tree.Spec("file//")));
}

TEST(Directory, CreationSucceedsOnWhateverExists) {
  const TempTree tree;
  tree.MakeFolder("folder");
  tree.MakeFile("file", "kept");
  tree.MakeLink("link", "nowhere");
  for (const char* name : {"folder", "file", "link"}) {
    EXPECT_TRUE(TFile::CreateDirectory(tree.Spec(name))) << name;
    EXPECT_TRUE(TFile::CreatePath(tree.Spec(name))) << name;
  }
  EXPECT_EQ("kept", tree.Content("file"));
  EXPECT_FALSE(tree.Exists("nowhere"));
}

TEST(Directory, CreationFailsAsTheSystemDoes) {
  const TempTree tree;
  tree.MakeFile("file");
  for (const std::string& name :
       {std::string("missing/a"), std::string("file/a"), std::string(300, 'n')}) {
    EXPECT_FALSE(TFile::CreateDirectory(tree.Spec(name))) << name;
  }
  EXPECT_FALSE(tree.Exists("missing"));
  // The root's specification is empty without its separator.
  for (const char* spec : {"", "/", "//"}) {
    EXPECT_FALSE(TFile::CreateDirectory(spec)) << spec;
    EXPECT_FALSE(TFile::CreatePath(spec)) << spec;
  }
}

TEST(Directory, CreatePathMakesEveryMissingParent) {
  const TempTree tree;
  ASSERT_FALSE(TFile::CreateDirectory(tree.Spec("a/b/c")));
  EXPECT_TRUE(TFile::CreatePath(tree.Spec("a/b/c")));
  EXPECT_TRUE(std::filesystem::is_directory(tree.Path("a/b/c")));
  EXPECT_TRUE(TFile::CreatePath(tree.Spec("a/b/d///e//")));
  EXPECT_TRUE(std::filesystem::is_directory(tree.Path("a/b/d/e")));
  EXPECT_TRUE(TFile::CreatePath(tree.Spec("a/b/c")));
}

TEST(Directory, CreatePathStopsWhereItCannotGoOn) {
  const TempTree tree;
  tree.MakeFile("file");
  EXPECT_FALSE(TFile::CreatePath(tree.Spec("file/a/b")));
  const std::string tooLong(300, 'n');
  EXPECT_FALSE(TFile::CreatePath(tree.Spec("new/" + tooLong + "/a")));
  EXPECT_TRUE(tree.Exists("new")) << "what has been created stays";
}

TEST(Directory, CreatePathIsRelativeToTheWorkingDirectory) {
  const TempTree tree;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(tree.Path());
  EXPECT_TRUE(TFile::CreatePath("a/b"));
  EXPECT_TRUE(TFile::CreatePath("c"));
  std::filesystem::current_path(before);
  EXPECT_TRUE(tree.Exists("a/b"));
  EXPECT_TRUE(tree.Exists("c"));
}

// A name without a separator has no parent to try instead.
TEST(Directory, CreatePathOfANameThatFailsMakesNothing) {
  const TempTree tree;
  const std::filesystem::path before = std::filesystem::current_path();
  std::filesystem::current_path(tree.Path());
  EXPECT_FALSE(TFile::CreatePath(std::string(256, 'x').c_str()));
  EXPECT_TRUE(std::filesystem::is_empty("."));
  std::filesystem::current_path(before);
}

std::set<std::string> Everything(const std::string& root) {
  std::set<std::string> names;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    names.insert(entry.path().string().substr(root.size()));
  }
  return names;
}

// The rules one by one, recursively.
bool CreateByRecursion(const TBstr& spec) {
  if (TFile::CreateDirectory(spec)) return true;
  const TBstr parent = TFile::DirSpecFromFullSpec(TFile::RemoveTrailingSeparator(spec));
  if (parent.IsEmpty()) return false;
  return CreateByRecursion(parent) && TFile::CreateDirectory(spec);
}

TEST(Directory, CreatePathDoesWhatTheRecursionDoes) {
  std::vector<std::string> names = {""};
  for (size_t i = 0; names[i].size() < 6; ++i) {
    for (char c : {'/', 'a', 'b', 'f', '.'}) names.push_back(names[i] + c);
  }
  for (const std::string& name : names) {
    const TBstr spec = Bstr(name);
    FakeSystem expected;
    const bool created = CreateByRecursion(spec);
    FakeSystem seen;
    ASSERT_EQ(created, TFile::CreatePath(spec)) << name;
    ASSERT_EQ(expected.Folders(), seen.Folders()) << name;
  }
}

TEST(Directory, CreatePathAsksTwiceALevelAtMost) {
  std::string name = "0";
  for (int i = 1; i < 1000; ++i) name += "/" + std::to_string(i);
  FakeSystem system;
  EXPECT_TRUE(TFile::CreatePath(Bstr(name)));
  EXPECT_EQ(1004u, system.Folders().size());
  EXPECT_EQ(1999, system.Calls());
  EXPECT_TRUE(TFile::CreatePath(Bstr(name)));
  EXPECT_EQ(2000, system.Calls());
}

TEST(Directory, CreatePathMakesTheLongestPath) {
  const TempTree tree;
  std::string path = tree.Path("d");
  while (path.size() < 3900) path += "/" + std::string(150, 'd');
  EXPECT_TRUE(TFile::CreatePath(Bstr(path)));
  EXPECT_TRUE(std::filesystem::is_directory(path));
}

// Recursion would run out of stack; a copy of the path a level would take minutes.
TEST(Directory, CreatePathOfAHostilePathFails) {
  const TempTree tree;
  tree.MakeFile("f");
  std::string path = tree.Path("f");
  for (int i = 0; i < 300000; ++i) path += "/d";
  EXPECT_FALSE(TFile::CreatePath(Bstr(path)));
  EXPECT_FALSE(TFile::CreatePath(Bstr(tree.Path("f/") + std::string(1000000, '/') + "a/b")));
}

TEST(Directory, IsRemovedWhenEmpty) {
  const TempTree tree;
  tree.MakeFolder("a/b");
  tree.MakeFile("file");
  EXPECT_FALSE(TFile::RemoveDirectory(tree.Spec("a")));
  EXPECT_FALSE(TFile::RemoveDirectory(tree.Spec("file")));
  EXPECT_FALSE(TFile::RemoveDirectory(tree.Spec("missing")));
  EXPECT_FALSE(TFile::RemoveDirectory(TBstr()));
  EXPECT_TRUE(TFile::RemoveDirectory(tree.Spec("a/b")));
  EXPECT_TRUE(TFile::RemoveDirectory(tree.Spec("a/")));
  EXPECT_FALSE(tree.Exists("a"));
  EXPECT_TRUE(tree.Exists("file"));
}

TEST(Directory, RemoveTakesFilesLinksAndEmptyDirectories) {
  const TempTree tree;
  tree.MakeFolder("full/empty");
  tree.MakeFile("file");
  tree.MakeLink("link", "file");
  EXPECT_TRUE(TFile::Remove(tree.Spec("link")));
  EXPECT_TRUE(tree.Exists("file"));
  EXPECT_TRUE(TFile::Remove(tree.Spec("file")));
  EXPECT_FALSE(tree.Exists("file"));
  EXPECT_FALSE(TFile::Remove(tree.Spec("file")));
  EXPECT_FALSE(TFile::Remove(tree.Spec("full")));
  EXPECT_TRUE(TFile::Remove(tree.Spec("full/empty")));
  EXPECT_FALSE(TFile::Remove(TBstr()));
}

TEST(Directory, RenameMovesAndReplaces) {
  const TempTree tree;
  tree.MakeFile("a", "first");
  tree.MakeFile("b", "second");
  tree.MakeFolder("folder");
  EXPECT_TRUE(TFile::Rename(tree.Spec("a"), tree.Spec("b")));
  EXPECT_FALSE(tree.Exists("a"));
  EXPECT_EQ("first", tree.Content("b"));
  EXPECT_TRUE(TFile::Rename(tree.Spec("b"), tree.Spec("folder/c")));
  EXPECT_EQ("first", tree.Content("folder/c"));
  EXPECT_TRUE(TFile::Rename(tree.Spec("folder"), tree.Spec("other")));
  EXPECT_EQ("first", tree.Content("other/c"));
  EXPECT_FALSE(TFile::Rename(tree.Spec("missing"), tree.Spec("x")));
  EXPECT_FALSE(TFile::Rename(tree.Spec("other"), tree.Spec("missing/x")));
  EXPECT_FALSE(TFile::Rename(tree.Spec("other"), TBstr()));
  EXPECT_FALSE(TFile::Rename(TBstr(), tree.Spec("x")));
}

TEST(Directory, StampsFilesAndDirectories) {
  const TempTree tree;
  tree.MakeFile("file");
  tree.MakeFolder("folder");
  tree.MakeLink("link", "file");
  for (const char* name : {"file", "folder", "link"}) {
    for (long stamp : {0L, 1L, 1000000000L, kFarFuture, -1L}) {
      SCOPED_TRACE(testing::Message() << name << " " << stamp);
      const time_t before = time(nullptr);
      EXPECT_TRUE(TFile::SetLastWriteTime(tree.Spec(name), stamp));
      const time_t after = time(nullptr);
      const struct stat status = Status(tree.Path(name));
      EXPECT_EQ(stamp, status.st_mtime);
      EXPECT_LE(before, status.st_atime);
      EXPECT_GE(after, status.st_atime);
    }
  }
  EXPECT_FALSE(TFile::SetLastWriteTime(tree.Spec("missing"), 1));
  EXPECT_FALSE(TFile::SetLastWriteTime(TBstr(), 1));
}

TEST(Directory, WithoutMemoryNothingHappens) {
  const TempTree tree;
  tree.MakeFolder("empty");
  tree.MakeFile("file", "kept");
  const std::set<std::string> before = Everything(tree.Path());
  const std::string empty = tree.Path("empty"), file = tree.Path("file"), made = tree.Path("x/y");
  const auto check = [&](const kest_test::TestAllocator& allocator, bool done) {
    EXPECT_EQ(allocator.Refused() == 0, done);
    EXPECT_EQ(!done, before == Everything(tree.Path()));
  };
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    check(allocator, TFile::CreateDirectory(Bstr(tree.Path("x"))));
    std::filesystem::remove_all(tree.Path("x"));
  });
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    check(allocator, TFile::CreatePath(Bstr(made)));
    std::filesystem::remove_all(tree.Path("x"));
  });
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    check(allocator, TFile::RemoveDirectory(Bstr(empty)));
    std::filesystem::create_directory(empty);
  });
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    check(allocator, TFile::Rename(Bstr(file), Bstr(file + "2")));
    std::filesystem::remove(file + "2");
    tree.MakeFile("file");
  });
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    check(allocator, TFile::Remove(Bstr(file)));
    tree.MakeFile("file");
  });
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    const bool done = TFile::SetLastWriteTime(Bstr(file), 5);
    EXPECT_EQ(allocator.Refused() == 0, done);
    EXPECT_EQ(done, Status(file).st_mtime == 5);
    tree.MakeFile("file");
  });
}

}  // namespace
