// Files, directories and the search for files while the system refuses.

#include <optional>
#include <string>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "platform/scenario.h"

namespace {

using namespace kest_test;
using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;

constexpr unsigned int kReadWrite = TFile::kOpenReadWrite;
const char kDigits[] = "0123456789";

// A tree with the file "a", which holds the ten digits.
struct DigitsTree : TempTree {
  DigitsTree() { MakeFile("a", kDigits); }
};

// The same, with the file open.
struct OpenDigits : DigitsTree {
  OpenDigits() { EXPECT_TRUE(file.Open(Spec("a"), kReadWrite, false)); }
  void ExpectUsable() {
    char buffer[11] = {};
    EXPECT_TRUE(file.SetPosition(0, 0));
    EXPECT_EQ(10, file.Write("9876543210", 10));
    EXPECT_TRUE(file.Flush());
    EXPECT_EQ(10, file.GetPosition());
    EXPECT_TRUE(file.SetPosition(0, 0));
    EXPECT_EQ(10, file.Read(buffer, 10));
    EXPECT_STREQ("9876543210", buffer);
    EXPECT_TRUE(file.SetLength(1));
    EXPECT_EQ(1, file.GetLength());
    EXPECT_TRUE(file.Close());
    EXPECT_EQ("9", Content("a"));
  }
  TFile file;
};

// ---- Files

std::string OpenFile() {
  const DigitsTree tree;
  const TBstr spec = tree.Spec("a");
  TFile file;
  const bool opened = Refusing([&] { return file.Open(spec, kReadWrite, false); });
  EXPECT_EQ(opened, file.IsOpen());
  EXPECT_EQ(!opened, file.Open(spec, kReadWrite, false));
  EXPECT_EQ(10, file.GetLength());
  return Say(opened);
}

std::string CreateFile() {
  const TempTree tree;
  const TBstr spec = tree.Spec("new");
  TFile file;
  const bool opened = Refusing([&] { return file.Open(spec, kReadWrite, true); });
  EXPECT_EQ(opened, tree.Exists("new"));
  EXPECT_EQ(!opened, file.Open(spec, kReadWrite, true));
  EXPECT_EQ(3, file.Write("abc", 3));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ("abc", tree.Content("new"));
  return Say(opened);
}

std::string CloseFile() {
  OpenDigits tree;
  EXPECT_EQ(3, tree.file.Write("abc", 3));
  const bool closed = Refusing([&] { return tree.file.Close(); });
  const bool isOpen = tree.file.IsOpen();
  EXPECT_EQ(isOpen, tree.file.Close());
  EXPECT_EQ("abc3456789", tree.Content("a"));
  EXPECT_TRUE(tree.file.Open(tree.Spec("a"), kReadWrite, false));
  tree.ExpectUsable();
  return Say(closed, isOpen);
}

std::string DestroyFile() {
  const DigitsTree tree;
  std::optional<TFile> file(std::in_place);
  EXPECT_TRUE(file->Open(tree.Spec("a"), kReadWrite, false));
  EXPECT_EQ(3, file->Write("abc", 3));
  Refusing([&] { file.reset(); });
  return tree.Content("a");
}

std::string ReadFile() {
  OpenDigits tree;
  char buffer[5] = {};
  const int count = Refusing([&] { return tree.file.Read(buffer, 4); });
  EXPECT_EQ(4 - count, tree.file.Read(buffer + count, 4 - count)) << "the rest";
  EXPECT_STREQ("0123", buffer);
  tree.ExpectUsable();
  return Say(count);
}

std::string WriteFile() {
  OpenDigits tree;
  const int count = Refusing([&] { return tree.file.Write("abcd", 4); });
  EXPECT_EQ(count, tree.file.GetPosition());
  EXPECT_EQ(4 - count, tree.file.Write(&"abcd"[count], 4 - count)) << "the rest";
  EXPECT_TRUE(tree.file.Flush());
  EXPECT_EQ("abcd456789", tree.Content("a"));
  tree.ExpectUsable();
  return Say(count);
}

std::string FlushFile() {
  OpenDigits tree;
  EXPECT_EQ(3, tree.file.Write("abc", 3));
  const bool flushed = Refusing([&] { return tree.file.Flush(); });
  EXPECT_EQ(flushed ? "abc3456789" : kDigits, tree.Content("a"));
  EXPECT_TRUE(tree.file.Flush());
  EXPECT_EQ("abc3456789", tree.Content("a"));
  tree.ExpectUsable();
  return Say(flushed);
}

std::string GetPosition() {
  OpenDigits tree;
  EXPECT_TRUE(tree.file.SetPosition(4, 0));
  const long long position = Refusing([&] { return tree.file.GetPosition(); });
  EXPECT_EQ(4, tree.file.GetPosition());
  tree.ExpectUsable();
  return Say(position);
}

std::string SetPosition() {
  OpenDigits tree;
  EXPECT_TRUE(tree.file.SetPosition(4, 0));
  const bool moved = Refusing([&] { return tree.file.SetPosition(-1, 2); });
  EXPECT_EQ(moved ? 9 : 4, tree.file.GetPosition());
  tree.ExpectUsable();
  return Say(moved);
}

// The length, and the position afterwards.
std::string GetLength() {
  OpenDigits tree;
  EXPECT_TRUE(tree.file.SetPosition(4, 0));
  const long long length = Refusing([&] { return tree.file.GetLength(); });
  const long long position = tree.file.GetPosition();
  EXPECT_EQ(10, tree.file.GetLength());
  tree.ExpectUsable();
  return Say(length, position);
}

std::string SetLength() {
  OpenDigits tree;
  const bool set = Refusing([&] { return tree.file.SetLength(3); });
  EXPECT_EQ(set ? "012" : kDigits, tree.Content("a"));
  EXPECT_TRUE(tree.file.SetLength(3));
  tree.ExpectUsable();
  return Say(set);
}

// ---- Directories and entries

std::string CreateDirectory() {
  const TempTree tree;
  const TBstr spec = tree.Spec("d");
  const bool created = Refusing([&] { return TFile::CreateDirectory(spec); });
  EXPECT_EQ(created, tree.Exists("d"));
  EXPECT_TRUE(TFile::CreateDirectory(spec));
  EXPECT_TRUE(tree.Exists("d"));
  return Say(created);
}

std::string CreatePath() {
  const TempTree tree;
  const TBstr spec = tree.Spec("x/y/z");
  const bool created = Refusing([&] { return TFile::CreatePath(spec); });
  EXPECT_EQ(created, tree.Exists("x/y/z"));
  EXPECT_TRUE(TFile::CreatePath(spec));
  EXPECT_TRUE(tree.Exists("x/y/z"));
  return Say(created);
}

std::string RemoveDirectory() {
  const TempTree tree;
  tree.MakeFolder("d");
  const TBstr spec = tree.Spec("d");
  const bool removed = Refusing([&] { return TFile::RemoveDirectory(spec); });
  EXPECT_EQ(removed, !tree.Exists("d"));
  EXPECT_EQ(!removed, TFile::RemoveDirectory(spec));
  return Say(removed);
}

std::string RemoveEntry() {
  const DigitsTree tree;
  const TBstr spec = tree.Spec("a");
  const bool removed = Refusing([&] { return TFile::Remove(spec); });
  EXPECT_EQ(removed, !tree.Exists("a"));
  EXPECT_EQ(!removed, TFile::Remove(spec));
  return Say(removed);
}

std::string RenameEntry() {
  const DigitsTree tree;
  const TBstr from = tree.Spec("a"), to = tree.Spec("b");
  const bool renamed = Refusing([&] { return TFile::Rename(from, to); });
  EXPECT_EQ(renamed, !tree.Exists("a"));
  EXPECT_EQ(!renamed, TFile::Rename(from, to));
  EXPECT_EQ(kDigits, tree.Content("b"));
  return Say(renamed);
}

long LastWriteTime(const TBstr& spec) {
  TFileInfo info;
  EXPECT_TRUE(TFile::GetInfo(spec, info));
  return info.lastWriteTime;
}

std::string SetLastWriteTime() {
  const DigitsTree tree;
  const TBstr spec = tree.Spec("a");
  const bool set = Refusing([&] { return TFile::SetLastWriteTime(spec, 1000000); });
  EXPECT_EQ(set, LastWriteTime(spec) == 1000000);
  EXPECT_TRUE(TFile::SetLastWriteTime(spec, 1000000));
  EXPECT_EQ(1000000, LastWriteTime(spec));
  return Say(set);
}

std::string GetInfo() {
  const DigitsTree tree;
  const TBstr spec = tree.Spec("a");
  TFileInfo info;
  info.size = 77;
  const bool got = Refusing([&] { return TFile::GetInfo(spec, info); });
  EXPECT_EQ(got ? 10 : 77, info.size);
  EXPECT_TRUE(TFile::GetInfo(spec, info));
  EXPECT_EQ(10, info.size);
  return Say(got);
}

// ---- The finder

// How many entries there are from the current one on.
int CountEntries(TFileFinder& finder, bool more) {
  int count = 0;
  for (; more; more = finder.FindNext(false)) ++count;
  return count;
}

// The first of three entries, in the directory's order; how many are left then.
std::string FindFirst() {
  const DigitsTree tree;
  tree.MakeFile("b");
  tree.MakeFile("c");
  const TBstr spec = tree.Spec("*");
  TFileFinder finder;
  const bool found = Refusing([&] { return finder.Find(spec.GetString(), false); });
  EXPECT_EQ(!found, finder.name.IsEmpty());
  const int count = CountEntries(finder, found);
  finder.Close();
  EXPECT_EQ(3, CountEntries(finder, finder.Find(spec.GetString(), false)));
  return Say(found, count);
}

std::string FindSecond() {
  const DigitsTree tree;
  tree.MakeFile("b");
  tree.MakeFile("c");
  const TBstr spec = tree.Spec("*");
  TFileFinder finder;
  EXPECT_TRUE(finder.Find(spec.GetString(), false));
  const bool found = Refusing([&] { return finder.FindNext(false); });
  const int count = CountEntries(finder, found);
  finder.Close();
  EXPECT_EQ(3, CountEntries(finder, finder.Find(spec.GetString(), false)));
  return Say(found, count);
}

// d1, d1/d2, d1/d2/d3 and a file in that, one level a search.
std::string WalkTree() {
  const TempTree tree;
  tree.MakeFolder("d1/d2/d3");
  tree.MakeFile("d1/d2/d3/a");
  const TBstr spec = tree.Spec("*");
  TFileFinder finder;
  const int count =
      Refusing([&] { return CountEntries(finder, finder.Find(spec.GetString(), true)); });
  Refusing([&] { finder.Close(); });
  EXPECT_EQ(4, CountEntries(finder, finder.Find(spec.GetString(), true)));
  return Say(count);
}

}  // namespace

namespace kest_test {

std::vector<Scenario> FileScenarios() {
  return {
      {"OpenFile", OpenFile, "true", {{"fopen", "false"}}},
      {"CreateFile", CreateFile, "true", {{"fopen", "false"}}},
      // Whether it has been closed, and whether it is still open.
      {"CloseFile", CloseFile, "true false", {{"fflush", "false true"}, {"fclose", "false false"}}},
      {"DestroyFile",
       DestroyFile,
       "abc3456789",
       {{"fflush", "abc3456789"}, {"fclose", "abc3456789"}}},
      {"ReadFile", ReadFile, "4", {{"fread", "0"}, {"fread short", "2"}}},
      {"WriteFile", WriteFile, "4", {{"fwrite", "0"}, {"fwrite short", "2"}}},
      {"FlushFile", FlushFile, "true", {{"fflush", "false"}}},
      {"GetPosition", GetPosition, "4", {{"ftell", "-1"}}},
      {"SetPosition", SetPosition, "true", {{"fseek", "false"}}},
      // No failure on the way is reported: the wrong length comes out, or the position is lost.
      {"GetLength",
       GetLength,
       "10 4",
       {{"ftell #1", "10 10"},
        {"ftell #2", "-1 4"},
        {"ftell #3", "10 4"},
        {"fseek #1", "4 4"},
        {"fseek #2", "10 10"}}},
      {"SetLength", SetLength, "true", {{"fileno", "false"}, {"ftruncate", "false"}}},

      {"CreateDirectory", CreateDirectory, "true", {{"mkdir", "false"}}},
      // z and y cannot be created before x, so three refusals on the way up change nothing. On the
      // way down they count.
      {"CreatePath",
       CreatePath,
       "true",
       {{"mkdir #1", "true"}, {"mkdir #2", "true"}, {"mkdir #3", "true"}, {"mkdir", "false"}}},
      {"RemoveDirectory", RemoveDirectory, "true", {{"rmdir", "false"}}},
      {"RemoveEntry", RemoveEntry, "true", {{"remove", "false"}}},
      {"RenameEntry", RenameEntry, "true", {{"rename", "false"}}},
      // Without a clock the access time alone is wrong.
      {"SetLastWriteTime", SetLastWriteTime, "true", {{"utime", "false"}, {"time", "true"}}},
      {"GetInfo", GetInfo, "true", {{"glob", "false"}, {"lstat64", "false"}}},

      // Entries that cannot be read are left out.
      {"FindFirst", FindFirst, "true 3", {{"glob", "false 0"}, {"lstat64", "true 2"}}},
      {"FindSecond", FindSecond, "true 2", {{"lstat64", "true 1"}}},
      // A level that cannot be read is not entered.
      {"WalkTree",
       WalkTree,
       "4",
       {{"glob #1", "0"},
        {"glob #2", "1"},
        {"glob #3", "2"},
        {"glob #4", "3"},
        {"lstat64 #1", "0"},
        {"lstat64 #2", "1"},
        {"lstat64 #3", "2"},
        {"lstat64 #4", "3"}}},
  };
}

}  // namespace kest_test
