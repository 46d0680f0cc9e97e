// What TFile asks of the C library, and what becomes of its refusals. This program answers the
// calls that the library makes on a stream.

#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdio.h>
#include <unistd.h>

#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"

namespace {

using KEST::TFile;
using kest_test::OpenDescriptors;
using kest_test::TempTree;
using kest_test::Text;

constexpr unsigned int kReadWrite = TFile::kOpenReadWrite;

// While it lives, calls are noted, and those of the function named fail with EIO.
class Calls;
Calls* s_calls = nullptr;

class Calls {
 public:
  explicit Calls(const char* failing = "") : failing_(failing) { s_calls = this; }
  ~Calls() { s_calls = nullptr; }

  bool Note(const char* function, const std::string& arguments) {
    seen_.push_back(function + arguments);
    if (failing_ != function) return false;
    errno = EIO;
    return true;
  }
  const std::vector<std::string>& Seen() const { return seen_; }

 private:
  std::string failing_;
  std::vector<std::string> seen_;
};

bool Fails(const char* function, const std::string& arguments = "") {
  return s_calls != nullptr && s_calls->Note(function, arguments);
}

// What ftell answers instead of the true position, when it is set.
long s_position = 0;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

std::string Arguments(long offset, int origin) {
  return "(" + std::to_string(offset) + "," + std::to_string(origin) + ")";
}

}  // namespace

extern "C" {

FILE* fopen(const char* path, const char* mode) {
  if (Fails("fopen", std::string("(") + mode + ")")) return nullptr;
  return Next<FILE*(const char*, const char*)>("fopen")(path, mode);
}
int fclose(FILE* stream) {
  const bool fails = Fails("fclose");
  const int result = Next<int(FILE*)>("fclose")(stream);  // the stream is gone in either case
  if (!fails) return result;
  errno = EIO;
  return EOF;
}
int fflush(FILE* stream) { return Fails("fflush") ? EOF : Next<int(FILE*)>("fflush")(stream); }
long ftell(FILE* stream) {
  if (Fails("ftell")) return -1;
  return s_position != 0 ? s_position : Next<long(FILE*)>("ftell")(stream);
}
int fseek(FILE* stream, long offset, int origin) {
  if (Fails("fseek", Arguments(offset, origin))) return -1;
  return Next<int(FILE*, long, int)>("fseek")(stream, offset, origin);
}
int fileno(FILE* stream) noexcept {
  return Fails("fileno") ? -1 : Next<int(FILE*)>("fileno")(stream);
}
int ftruncate(int descriptor, off_t length) noexcept {
  if (Fails("ftruncate", "(" + std::to_string(length) + ")")) return -1;
  return Next<int(int, off_t)>("ftruncate")(descriptor, length);
}

}  // extern "C"

namespace {

using Names = std::vector<std::string>;

TEST(FileCalls, StreamModeFollowsTheFlags) {
  const TempTree tree;
  tree.MakeFile("a");
  const struct {
    unsigned int flags;
    bool create;
    const char* call;
  } kRows[] = {
      {0, false, "fopen(rb)"},           {kReadWrite, false, "fopen(r+b)"},
      {kReadWrite, true, "fopen(w+b)"},  {0, true, "fopen(wb)"},
      {~kReadWrite, false, "fopen(rb)"}, {UINT_MAX, false, "fopen(r+b)"},
      {UINT_MAX, true, "fopen(w+b)"},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.call);
    const KEST::TBstr spec = tree.Spec("a");
    Calls calls;
    void* stream = TFile::FileOpen(spec, row.flags, row.create);
    EXPECT_EQ(Names{row.call}, calls.Seen());
    ASSERT_NE(nullptr, stream);
    EXPECT_TRUE(TFile::FileClose(stream));
  }
}

TEST(FileCalls, OpenReportsAFailure) {
  const TempTree tree;
  tree.MakeFile("a");
  const KEST::TBstr spec = tree.Spec("a");
  TFile file;
  Calls calls("fopen");
  EXPECT_FALSE(file.Open(spec, 0, false));
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.GetFileSpec().IsEmpty());
}

class OpenedFile : public testing::Test {
 protected:
  void SetUp() override {
    descriptors = OpenDescriptors();
    ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
    ASSERT_EQ(10, file.Write("0123456789", 10));
  }
  void TearDown() override { s_position = 0; }
  TempTree tree;
  TFile file;
  int descriptors;
};

TEST_F(OpenedFile, CloseFlushesFirst) {
  Calls calls;
  EXPECT_TRUE(file.Close());
  EXPECT_EQ((Names{"fflush", "fclose"}), calls.Seen());
}

TEST_F(OpenedFile, FailedFlushLeavesItOpenForASecondClose) {
  {
    Calls calls("fflush");
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(EIO, errno);
    EXPECT_EQ(Names{"fflush"}, calls.Seen());
  }
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(tree.Path("a"), Text(file.GetFileSpec()));
  EXPECT_EQ(descriptors + 1, OpenDescriptors());
  EXPECT_TRUE(file.Close());
  EXPECT_FALSE(file.IsOpen());
  EXPECT_TRUE(file.GetFileSpec().IsEmpty());
  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ("0123456789", tree.Content("a"));
}

TEST_F(OpenedFile, SecondCloseClosesAlthoughEveryFlushFails) {
  {
    Calls calls("fflush");
    EXPECT_FALSE(file.Close());
    file.Close();
    EXPECT_FALSE(file.Close());
    EXPECT_EQ("fclose", calls.Seen().back());
  }
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(OpenedFile, WorksOnAfterAFailedClose) {
  {
    Calls calls("fflush");
    EXPECT_FALSE(file.Close());
  }
  EXPECT_FALSE(file.Open(tree.Spec("b"), kReadWrite, true));
  EXPECT_EQ(10, file.GetPosition());
  EXPECT_EQ(1, file.Write("X", 1));
  EXPECT_TRUE(file.Flush());
  EXPECT_EQ(11, file.GetLength());
  EXPECT_TRUE(file.SetPosition(9, 0));
  char buffer[3] = {};
  EXPECT_EQ(2, file.Read(buffer, 2));
  EXPECT_STREQ("9X", buffer);
  EXPECT_TRUE(file.SetLength(10));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ("0123456789", tree.Content("a"));
  // Nothing of the failure is left for the next file.
  ASSERT_TRUE(file.Open(tree.Spec("b"), kReadWrite, true));
  Calls calls("fflush");
  EXPECT_FALSE(file.Close());
  EXPECT_TRUE(file.IsOpen());
}

TEST_F(OpenedFile, FailedCloseAfterAGoodFlushEndsTheStream) {
  {
    Calls calls("fclose");
    EXPECT_FALSE(file.Close());
    EXPECT_EQ(EIO, errno);
    EXPECT_FALSE(file.IsOpen());
    EXPECT_TRUE(file.GetFileSpec().IsEmpty());
    EXPECT_FALSE(file.Close());
    EXPECT_EQ((Names{"fflush", "fclose"}), calls.Seen()) << "no second close";
  }
  EXPECT_EQ(descriptors, OpenDescriptors());
  EXPECT_EQ("0123456789", tree.Content("a"));
  EXPECT_TRUE(file.Open(tree.Spec("a"), 0, false));
}

TEST(FileCalls, DestructorClosesOnceWhateverFails) {
  const TempTree tree;
  const int before = OpenDescriptors();
  const struct {
    const char* failing;
    Names calls;
  } kRows[] = {
      {"", {"fflush", "fclose"}},
      {"fclose", {"fflush", "fclose"}},
      {"fflush", {"fflush", "fclose"}},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.failing);
    Calls calls(row.failing);
    {
      const KEST::TBstr spec = tree.Spec("a");
      TFile file;
      ASSERT_TRUE(file.Open(spec, kReadWrite, true));
      EXPECT_EQ(1, file.Write("x", 1));
    }
    EXPECT_EQ(row.calls, Names(calls.Seen().end() - 2, calls.Seen().end()));
    EXPECT_EQ("fopen(w+b)", calls.Seen().end()[-3]);
  }
  EXPECT_EQ(before, OpenDescriptors());
}

TEST_F(OpenedFile, FlushReportsAFailure) {
  Calls calls("fflush");
  EXPECT_FALSE(file.Flush());
  EXPECT_EQ(EIO, errno);
  EXPECT_TRUE(file.IsOpen());
}

TEST_F(OpenedFile, PositionIsMinusOneWithoutOne) {
  Calls calls("ftell");
  EXPECT_EQ(-1, file.GetPosition());
  EXPECT_EQ(Names{"ftell"}, calls.Seen());
}

TEST_F(OpenedFile, PositionIsSignExtendedFromItsLowWord) {
  for (long long position : {0x7FFFFFFFLL, 0x80000000LL, 0xFFFFFFFFLL, 0x500000001LL}) {
    SCOPED_TRACE(position);
    s_position = static_cast<long>(position);
    EXPECT_EQ(static_cast<int>(position), file.GetPosition());
    EXPECT_EQ(static_cast<int>(position), file.GetLength());
  }
}

TEST_F(OpenedFile, OffsetsAreSignExtendedFromTheirLowWord) {
  const struct {
    long long offset;
    long passed;
  } kRows[] = {
      {5, 5},
      {-5, -5},
      {0x100000005, 5},
      {0x7FFFFFFF, 0x7FFFFFFF},
      {0x80000000, -0x7FFFFFFF - 1},
      {0xFFFFFFFF, -1},
      {LLONG_MAX, -1},
      {LLONG_MIN, 0},
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.offset);
    for (int origin : {0, 1, 2, -7, INT_MAX}) {
      Calls calls("fseek");
      EXPECT_FALSE(file.SetPosition(row.offset, origin));
      EXPECT_EQ(Names{"fseek" + Arguments(row.passed, origin)}, calls.Seen());
    }
    Calls calls("ftruncate");
    EXPECT_FALSE(file.SetLength(row.offset));
    EXPECT_EQ((Names{"fileno", "ftruncate(" + std::to_string(row.passed) + ")"}), calls.Seen());
  }
}

TEST_F(OpenedFile, LengthIsFoundAtTheEnd) {
  ASSERT_TRUE(file.SetPosition(4, 0));
  Calls calls;
  EXPECT_EQ(10, file.GetLength());
  EXPECT_EQ((Names{"ftell", "fseek(0,2)", "ftell", "fseek(4,0)", "ftell"}), calls.Seen());
}

TEST_F(OpenedFile, LengthChecksNoStep) {
  ASSERT_TRUE(file.SetPosition(4, 0));
  {
    Calls calls("fseek");
    EXPECT_EQ(4, file.GetLength());
    EXPECT_EQ(5u, calls.Seen().size());
  }
  Calls calls("ftell");
  EXPECT_EQ(-1, file.GetLength());
  EXPECT_EQ(5u, calls.Seen().size());
}

TEST_F(OpenedFile, SetLengthWithoutADescriptorFails) {
  {
    Calls calls("fileno");
    EXPECT_FALSE(file.SetLength(3));
    EXPECT_EQ(Names{"fileno"}, calls.Seen());
  }
  EXPECT_TRUE(file.SetLength(3));
}

TEST_F(OpenedFile, PlatformLayerTransfersNothingForCountsBelowOne) {
  void* stream = TFile::FileOpen(tree.Spec("a"), kReadWrite, false);
  ASSERT_NE(nullptr, stream);
  char buffer[1] = {'-'};
  for (int count : {0, -1, INT_MIN}) {
    SCOPED_TRACE(count);
    EXPECT_EQ(0, TFile::FileRead(stream, buffer, count));
    EXPECT_EQ(0, TFile::FileWrite(stream, buffer, count));
  }
  EXPECT_EQ('-', buffer[0]);
  EXPECT_TRUE(TFile::FileClose(stream));
}

}  // namespace
