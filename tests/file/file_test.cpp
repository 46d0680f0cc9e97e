#include "kest/file.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>

#include <type_traits>

#include "file/temp_tree.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using kest_test::Bstr;
using kest_test::OpenDescriptors;
using kest_test::TempTree;
using kest_test::Text;

constexpr unsigned int kReadWrite = TFile::kOpenReadWrite;
constexpr bool kWideLong = sizeof(long) == 8;

std::string ReadAll(TFile& file) {
  std::string text(1000, '\0');
  text.resize(static_cast<size_t>(file.Read(text.data(), 1000)));
  return text;
}

TEST(File, HasNoBaseNoVirtualFunctionAndNoCopy) {
  static_assert(!std::is_polymorphic_v<TFile>);
  static_assert(!std::is_copy_constructible_v<TFile> && !std::is_copy_assignable_v<TFile>);
  static_assert(TFile::kOpenReadWrite == 2);
}

TEST(File, IsClosedAtFirst) {
  const TFile file;
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.GetFileSpec().IsEmpty());
}

void ExpectRefusesAll(TFile& file) {
  char buffer[2] = {'x', 'y'};
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.GetFileSpec().IsEmpty());
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(0, file.Read(buffer, 2));
  EXPECT_EQ('x', buffer[0]);
  EXPECT_EQ(0, file.Write(buffer, 2));
  EXPECT_FALSE(file.Flush());
  EXPECT_EQ(0, file.GetPosition());
  EXPECT_FALSE(file.SetPosition(0, 0));
  EXPECT_EQ(0, file.GetLength());
  EXPECT_FALSE(file.SetLength(0));
}

TEST(File, RefusesEveryCallWhileClosed) {
  const TempTree tree;
  TFile file;
  ExpectRefusesAll(file);
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  ASSERT_TRUE(file.Close());
  ExpectRefusesAll(file);
}

TEST(File, OpenKeepsTheSpecification) {
  const TempTree tree;
  TBstr spec = tree.Spec("a");
  TFile file;
  ASSERT_TRUE(file.Open(spec, kReadWrite, true));
  spec = "other";
  EXPECT_EQ(tree.Path("a"), Text(file.GetFileSpec()));
  EXPECT_TRUE(file.Close());
  EXPECT_TRUE(file.GetFileSpec().IsEmpty());
}

TEST(File, OpenOfAnOpenObjectLeavesTheFirstFile) {
  const TempTree tree;
  tree.MakeFile("a", "first");
  tree.MakeFile("b", "second");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), 0, false));
  EXPECT_FALSE(file.Open(tree.Spec("b"), kReadWrite, true));
  EXPECT_EQ(tree.Path("a"), Text(file.GetFileSpec()));
  EXPECT_EQ("first", ReadAll(file));
  EXPECT_EQ("second", tree.Content("b"));
}

TEST(File, OpenOfAnEmptySpecificationFails) {
  TFile file;
  errno = 0;
  EXPECT_FALSE(file.Open(TBstr(), 0, false));
  EXPECT_FALSE(file.Open(TBstr(), kReadWrite, true));
  EXPECT_EQ(0, errno) << "the file system was asked";
  EXPECT_FALSE(file.IsOpen());
}

TEST(File, CreatingTakesTheReadWriteFlag) {
  const TempTree tree;
  tree.MakeFile("a", "kept");
  TFile file;
  for (unsigned int flags : {0u, 1u, 4u, ~kReadWrite}) {
    SCOPED_TRACE(flags);
    EXPECT_FALSE(file.Open(tree.Spec("a"), flags, true));
    EXPECT_FALSE(file.Open(tree.Spec("new"), flags, true));
  }
  EXPECT_EQ("kept", tree.Content("a"));
  EXPECT_FALSE(tree.Exists("new"));
}

TEST(File, CreatesOrTruncates) {
  const TempTree tree;
  tree.MakeFile("old", "content");
  for (const char* name : {"old", "new"}) {
    for (unsigned int flags : {kReadWrite, UINT_MAX}) {
      TFile file;
      ASSERT_TRUE(file.Open(tree.Spec(name), flags, true));
      EXPECT_EQ(0, file.GetLength());
      EXPECT_EQ(5, file.Write("abcde", 5));
      EXPECT_TRUE(file.SetPosition(0, 0));
      EXPECT_EQ("abcde", ReadAll(file));
    }
  }
}

TEST(File, OpensWhatExists) {
  const TempTree tree;
  tree.MakeFile("a", "abc");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, false));
  EXPECT_EQ(1, file.Write("X", 1));
  ASSERT_TRUE(file.Close());
  EXPECT_EQ("Xbc", tree.Content("a"));
  ASSERT_TRUE(file.Open(tree.Spec("a"), ~kReadWrite, false));
  EXPECT_EQ(0, file.Write("Y", 1)) << "read only";
  EXPECT_EQ("Xbc", ReadAll(file));
  ASSERT_TRUE(file.Close());
  EXPECT_EQ("Xbc", tree.Content("a"));
}

TEST(File, OpenFailsAsTheSystemDoes) {
  const TempTree tree;
  tree.MakeFile("a");
  const struct {
    std::string name;
    bool create;
    int error;
  } kRows[] = {
      {"missing", false, ENOENT}, {"missing/a", true, ENOENT},
      {"a/b", true, ENOTDIR},     {std::string(300, 'n'), true, ENAMETOOLONG},
      {"", true, EISDIR},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.name);
    TFile file;
    EXPECT_FALSE(file.Open(tree.Spec(row.name), kReadWrite, row.create));
    EXPECT_EQ(row.error, errno);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(file.GetFileSpec().IsEmpty());
  }
}

TEST(File, NamesAreBytesOneAUnit) {
  const TempTree tree;
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("caf\xE9\xFF\x80"), kReadWrite, true));
  EXPECT_TRUE(tree.Exists("caf\xE9\xFF\x80"));
  ASSERT_TRUE(file.Close());
  // Above U+00FF there is no byte.
  ASSERT_TRUE(file.Open(tree.Spec("x") + u'\u0416', kReadWrite, true));
  EXPECT_TRUE(tree.Exists("x?"));
}

TEST(File, ReadGivesWhatIsLeft) {
  const TempTree tree;
  tree.MakeFile("a", "abcdefgh");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), 0, false));
  char buffer[10] = "---------";
  EXPECT_EQ(3, file.Read(buffer, 3));
  EXPECT_EQ("abc------", std::string(buffer));
  EXPECT_EQ(5, file.Read(buffer, 9));
  EXPECT_EQ("defgh----", std::string(buffer));
  EXPECT_EQ(0, file.Read(buffer, 9));
  EXPECT_EQ("defgh----", std::string(buffer));
}

TEST(File, ReadsAndWritesMoreThanAnyBuffer) {
  const TempTree tree;
  std::string data(1000003, '\0');
  for (size_t i = 0; i < data.size(); ++i) data[i] = static_cast<char>(i * 7 + i / 256);
  const int size = static_cast<int>(data.size());
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  EXPECT_EQ(size, file.Write(data.data(), size));
  EXPECT_EQ(size, file.GetLength());
  EXPECT_TRUE(file.SetPosition(0, 0));
  std::string read(data.size(), '\0');
  EXPECT_EQ(size, file.Read(read.data(), size));
  EXPECT_TRUE(data == read);
}

TEST(File, NullBuffersAndCountsBelowOneTransferNothing) {
  const TempTree tree;
  tree.MakeFile("a", "abc");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, false));
  EXPECT_EQ(0, file.Read(nullptr, 3));
  EXPECT_EQ(0, file.Write(nullptr, 3));
  char buffer[1] = {'-'};
  for (int count : {0, -1, INT_MIN}) {
    SCOPED_TRACE(count);
    EXPECT_EQ(0, file.Read(buffer, count));
    EXPECT_EQ(0, file.Write(buffer, count));
  }
  EXPECT_EQ('-', buffer[0]);
  EXPECT_EQ(0, file.GetPosition());
  ASSERT_TRUE(file.Close());
  EXPECT_EQ("abc", tree.Content("a"));
}

TEST(File, FlushWritesWhatIsBuffered) {
  const TempTree tree;
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  EXPECT_EQ(3, file.Write("abc", 3));
  EXPECT_EQ("", tree.Content("a"));
  EXPECT_TRUE(file.Flush());
  EXPECT_EQ("abc", tree.Content("a"));
}

TEST(File, SetPositionCountsFromItsOrigin) {
  const TempTree tree;
  tree.MakeFile("a", "0123456789");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), 0, false));
  const struct {
    long long offset;
    int origin;
    bool moves;
    long long position;  // afterwards; every row starts at 4
  } kRows[] = {
      {0, 0, true, 0},
      {7, 0, true, 7},
      {7, 1, true, 11},
      {-3, 1, true, 1},
      {0, 2, true, 10},
      {-10, 2, true, 0},
      {100, 2, true, 110},
      {0x100000005, 0, true, 5},  // the high word is dropped,
      {0xFFFFFFFF, 2, true, 9},   // the low word is signed: -1
      {-0x100000000 + 3, 0, true, 3},
      {LLONG_MIN, 0, true, 0},
      {0x7FFFFFFF, 0, true, 0x7FFFFFFF},
      {-1, 0, false, 4},
      {0x80000000, 0, false, 4},
      {-5, 1, false, 4},
      {-11, 2, false, 4},
      {0, -1, false, 4},
      {0, 9, false, 4},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.offset << " from " << row.origin);
    ASSERT_TRUE(file.SetPosition(4, 0));
    EXPECT_EQ(row.moves, file.SetPosition(row.offset, row.origin));
    EXPECT_EQ(row.position, file.GetPosition());
  }
}

TEST(File, GetLengthLeavesThePosition) {
  const TempTree tree;
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  EXPECT_EQ(0, file.GetLength());
  EXPECT_EQ(10, file.Write("0123456789", 10));
  EXPECT_EQ(10, file.GetLength()) << "what is buffered counts";
  for (long long position : {0, 3, 10, 99}) {
    SCOPED_TRACE(position);
    ASSERT_TRUE(file.SetPosition(position, 0));
    EXPECT_EQ(10, file.GetLength());
    EXPECT_EQ(position, file.GetPosition());
  }
  ASSERT_TRUE(file.SetPosition(6, 0));
  EXPECT_EQ(10, file.GetLength());
  EXPECT_EQ("6789", ReadAll(file));
}

TEST(File, SetLengthCutsAndExtends) {
  const TempTree tree;
  tree.MakeFile("a", "0123456789");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, false));
  ASSERT_TRUE(file.SetPosition(5, 0));
  EXPECT_TRUE(file.SetLength(4));
  EXPECT_EQ("0123", tree.Content("a"));
  EXPECT_TRUE(file.SetLength(6));
  EXPECT_EQ(std::string("0123\0\0", 6), tree.Content("a"));
  EXPECT_EQ(5, file.GetPosition());
  EXPECT_TRUE(file.SetLength(0x100000003)) << "the high word is dropped";
  EXPECT_EQ("012", tree.Content("a"));
  EXPECT_FALSE(file.SetLength(-1));
  EXPECT_FALSE(file.SetLength(0x80000000));
  EXPECT_EQ("012", tree.Content("a"));
  EXPECT_TRUE(file.SetLength(0));
  EXPECT_EQ("", tree.Content("a"));
}

TEST(File, SetLengthOfAReadOnlyFileFails) {
  const TempTree tree;
  tree.MakeFile("a", "abc");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), 0, false));
  EXPECT_FALSE(file.SetLength(1));
  EXPECT_EQ("abc", tree.Content("a"));
}

TEST(File, SetLengthDoesNotFlushFirst) {
  const TempTree tree;
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  EXPECT_EQ(6, file.Write("abcdef", 6));
  EXPECT_TRUE(file.SetLength(2));
  EXPECT_EQ(std::string(2, '\0'), tree.Content("a"));
  EXPECT_TRUE(file.Flush());
  EXPECT_EQ("abcdef", tree.Content("a"));
}

// Large files are not supported: the 32-bit target does not open them, the other reports what is
// left in 32 bits.
TEST(File, KnowsLengthsOf32Bits) {
  const TempTree tree;
  const struct {
    long long size;
    bool everywhere;
    long long length;
  } kRows[] = {
      {0x7FFFFFFF, true, 0x7FFFFFFF},
      {0x80000000, false, -0x80000000LL},
      {0xFFFFFFFF, false, -1},
      {0x100000005, false, 5},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.size);
    tree.MakeSparseFile("a", row.size);
    TFile file;
    const bool opens = row.everywhere || kWideLong;
    EXPECT_EQ(opens, file.Open(tree.Spec("a"), 0, false));
    EXPECT_EQ(opens ? row.length : 0, file.GetLength());
  }
}

TEST(File, PositionsWrapAt32Bits) {
  const TempTree tree;
  tree.MakeFile("a", "01234");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, false));
  ASSERT_TRUE(file.SetPosition(0x7FFFFFFF, 0));
  ASSERT_TRUE(file.SetPosition(0x7FFFFFFF, 1));
  EXPECT_EQ(kWideLong ? -2 : -1, file.GetPosition()) << "-1: no position in a 32-bit long";
  EXPECT_EQ(5, file.GetLength());
  if (!kWideLong) return;
  EXPECT_EQ(1, file.Write("x", 1)) << "the length left the position where it was";
  ASSERT_TRUE(file.Close());
  EXPECT_EQ(0xFFFFFFFFu, std::filesystem::file_size(tree.Path("a")));
}

TEST(File, DestructorCloses) {
  const TempTree tree;
  const int before = OpenDescriptors();
  {
    TFile file;
    ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
    EXPECT_EQ(3, file.Write("abc", 3));
    EXPECT_EQ(before + 1, OpenDescriptors());
  }
  EXPECT_EQ(before, OpenDescriptors());
  EXPECT_EQ("abc", tree.Content("a"));
}

TEST(File, CanBeOpenedAgainAfterClose) {
  const TempTree tree;
  tree.MakeFile("a", "abc");
  tree.MakeFile("b", "def");
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), 0, false));
  ASSERT_TRUE(file.Close());
  EXPECT_FALSE(file.Close());
  ASSERT_TRUE(file.Open(tree.Spec("b"), 0, false));
  EXPECT_EQ("def", ReadAll(file));
}

TEST(File, FullDeviceFailsTheFlushOrTheWrite) {
  TFile file;
  ASSERT_TRUE(file.Open("/dev/full", kReadWrite, false));
  EXPECT_EQ(3, file.Write("abc", 3));
  EXPECT_FALSE(file.Flush());
  EXPECT_EQ(ENOSPC, errno);
  const std::string large(1000000, 'x');
  EXPECT_GT(1000000, file.Write(large.data(), 1000000));
}

TEST(File, FirstCloseOnAFullDeviceKeepsItOpenTheSecondCloses) {
  const int before = OpenDescriptors();
  TFile file;
  ASSERT_TRUE(file.Open("/dev/full", kReadWrite, false));
  EXPECT_EQ(3, file.Write("abc", 3));
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ("/dev/full", Text(file.GetFileSpec()));
  EXPECT_EQ(before + 1, OpenDescriptors());
  file.Close();
  ExpectRefusesAll(file);
  EXPECT_EQ(before, OpenDescriptors());
}

TEST(File, DestructorClosesOnAFullDevice) {
  const int before = OpenDescriptors();
  for (bool closed : {false, true}) {
    SCOPED_TRACE(closed);
    TFile file;
    ASSERT_TRUE(file.Open("/dev/full", kReadWrite, false));
    EXPECT_EQ(3, file.Write("abc", 3));
    EXPECT_EQ(closed, closed && !file.Close());
  }
  EXPECT_EQ(before, OpenDescriptors());
}

TEST(File, OpenWithoutMemoryTouchesNoFile) {
  const TempTree tree;
  tree.MakeFile("a", "kept");
  const std::string path = tree.Path("a");
  const TBstr expected = tree.Spec("a");
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    const int before = OpenDescriptors();
    const bool granted = [&] {
      TFile file;
      const bool opened = file.Open(Bstr(path), kReadWrite, true);
      EXPECT_EQ(allocator.Refused() == 0, opened);
      EXPECT_EQ(opened, file.IsOpen());
      EXPECT_TRUE(opened ? file.GetFileSpec() == expected : file.GetFileSpec().IsEmpty());
      return opened;
    }();
    EXPECT_EQ(before, OpenDescriptors());
    EXPECT_EQ(granted ? "" : "kept", tree.Content("a"));
    tree.MakeFile("a", "kept");
  });
}

}  // namespace
