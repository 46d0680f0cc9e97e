// The system at its limits: no room on the device, no descriptors, no memory, no threads. Refused
// is what needs more; nothing is lost, and everything works on when there is room again.

#include <errno.h>
#include <fcntl.h>
#include <sched.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <functional>
#include <utility>
#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "support/test_allocator.h"

// What the module that is loaded here tells the program. Nothing is kept: there may be no memory.
extern "C" {
__attribute__((used)) int ModuleStarts(const char*, const char*) { return 1; }
__attribute__((used)) void ModuleStops(const char*) {}
__attribute__((used)) void ModuleIsUnloaded(const char*) {}
}

namespace {

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;
using KEST::TLibrary;
using KEST::TThread;
using kest_test::Bstr;
using kest_test::OpenDescriptors;
using kest_test::TempTree;
using kest_test::TestAllocator;

constexpr unsigned int kReadWrite = TFile::kOpenReadWrite;

// A limit of the process, for as long as it lives.
class Limit {
 public:
  Limit(__rlimit_resource resource, rlim_t limit) : resource_(resource) {
    getrlimit(resource_, &before_);
    Set(limit);
  }
  ~Limit() { setrlimit(resource_, &before_); }
  Limit(const Limit&) = delete;
  Limit& operator=(const Limit&) = delete;

  void Set(rlim_t limit) {
    const rlimit changed = {limit, before_.rlim_max};
    setrlimit(resource_, &changed);
  }

 private:
  __rlimit_resource resource_;
  rlimit before_;
};

int CountEntries(const TBstr& spec) {
  TFileFinder finder;
  int count = 0;
  for (bool more = finder.Find(spec.GetString(), true); more; more = finder.FindNext(false)) {
    ++count;
  }
  return count;
}

int Seven(void*) { return 7; }

bool RunThread() {
  TThread thread;
  int code = 0;
  return thread.Create(Seven, nullptr, false) && thread.WaitForExit(&code) && code == 7;
}

bool OpenAndClose(const TBstr& spec) {
  TFile file;
  return file.Open(spec, kReadWrite, true) && file.Close();
}

bool LoadAndFree(const TBstr& spec) {
  TLibrary library;
  return library.Load(spec) && library.Free();
}

const char kModule[] = KEST_TEST_MODULES "/pair.so";

// ---- A device that is always full

class FullDevice : public testing::Test {
 protected:
  void SetUp() override {
    if (access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full here";
    descriptors = OpenDescriptors();
    ASSERT_TRUE(file.Open("/dev/full", kReadWrite, false));
  }
  int descriptors;
  TFile file;
};

TEST_F(FullDevice, RefusesWhatIsFlushed) {
  EXPECT_EQ(3, file.Write("abc", 3)) << "as yet buffered";
  EXPECT_FALSE(file.Flush());
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_TRUE(file.IsOpen());
}

TEST_F(FullDevice, LeavesTheFileOpenForASecondClose) {
  EXPECT_EQ(3, file.Write("abc", 3));
  EXPECT_FALSE(file.Close());
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_TRUE(file.IsOpen());
  EXPECT_EQ(3, file.Write("abc", 3)) << "it can still be used";
  EXPECT_FALSE(file.Close()) << "the second close closes, and what is buffered is lost";
  EXPECT_FALSE(file.IsOpen());
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(FullDevice, TakesNoLargeBlock) {
  const std::vector<char> block(1 << 20, 'x');
  EXPECT_GT(1 << 20, file.Write(block.data(), 1 << 20));
  file.Close();
  file.Close();
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(FullDevice, DoesNotKeepTheDestructorFromClosing) {
  {
    TFile other;
    ASSERT_TRUE(other.Open("/dev/full", kReadWrite, true));
    EXPECT_EQ(3, other.Write("abc", 3));
  }
  EXPECT_EQ(descriptors + 1, OpenDescriptors());
}

// ---- A file system with room for 16 pages and 8 entries, its root among them

class TinyFileSystem : public testing::Test {
 protected:
  void SetUp() override {
    // The mount is this process's own and ends with it.
    if (unshare(CLONE_NEWNS) != 0 || mount("none", "/", nullptr, MS_REC | MS_PRIVATE, "") != 0 ||
        mount("tmpfs", tree.Path().c_str(), "tmpfs", 0, "size=64k,nr_inodes=8") != 0) {
      GTEST_SKIP() << "no file system can be mounted here: " << strerror(errno);
    }
    mounted = true;
  }
  void TearDown() override {
    EXPECT_TRUE(!mounted || umount(tree.Path().c_str()) == 0) << "something is still open";
  }
  TempTree tree;
  bool mounted = false;
};

TEST_F(TinyFileSystem, TakesTheWholeFileWhenThereIsRoomAgain) {
  const std::string content(40000, 'x');
  tree.MakeFile("ballast", content);
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  const int written = file.Write(content.data(), 40000);
  EXPECT_FALSE(written == 40000 && file.Flush());
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_EQ(1, file.Write("y", 1));
  EXPECT_FALSE(file.Close());
  EXPECT_TRUE(file.IsOpen());
  EXPECT_TRUE(TFile::Remove(tree.Spec("ballast")));
  // What is half written is written once more.
  EXPECT_TRUE(file.SetPosition(0, 0));
  EXPECT_EQ(40000, file.Write(content.data(), 40000));
  EXPECT_TRUE(file.Flush());
  EXPECT_TRUE(file.SetLength(40000));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(content, tree.Content("a"));
}

TEST_F(TinyFileSystem, RefusesNewEntriesOnly) {
  for (char name : std::string("bcdefgh")) {
    EXPECT_TRUE(OpenAndClose(tree.Spec(std::string(1, name)))) << name;
  }
  EXPECT_FALSE(OpenAndClose(tree.Spec("x")));
  EXPECT_EQ(ENOSPC, errno);
  EXPECT_FALSE(TFile::CreateDirectory(tree.Spec("x")));
  EXPECT_FALSE(TFile::CreatePath(tree.Spec("x/y")));
  EXPECT_EQ(7, CountEntries(tree.Spec("*")));
  EXPECT_TRUE(OpenAndClose(tree.Spec("b"))) << "it is there already";
  EXPECT_TRUE(TFile::Rename(tree.Spec("b"), tree.Spec("x")));
  EXPECT_TRUE(TFile::SetLastWriteTime(tree.Spec("x"), 1000000));
  // One entry is enough for the first directory of a path. It stays.
  EXPECT_TRUE(TFile::Remove(tree.Spec("x")));
  EXPECT_FALSE(TFile::CreatePath(tree.Spec("x/y")));
  EXPECT_TRUE(tree.Exists("x"));
  EXPECT_TRUE(TFile::Remove(tree.Spec("c")));
  EXPECT_TRUE(TFile::CreatePath(tree.Spec("x/y")));
}

// ---- A limit on the size of files

TEST(FileSizeLimit, IsAFullDeviceToTheFile) {
  const TempTree tree;
  const auto before = signal(SIGXFSZ, SIG_IGN);
  TFile file;
  ASSERT_TRUE(file.Open(tree.Spec("a"), kReadWrite, true));
  const std::string content(2000, 'x');
  {
    const Limit limit(RLIMIT_FSIZE, 1000);
    EXPECT_EQ(2000, file.Write(content.data(), 2000)) << "as yet buffered";
    EXPECT_FALSE(file.Flush());
    EXPECT_EQ(EFBIG, errno);
    EXPECT_FALSE(file.SetLength(2000));
    EXPECT_EQ(std::string(1000, 'x'), tree.Content("a"));
    EXPECT_TRUE(file.SetLength(500));
    EXPECT_EQ(500, file.GetLength());
  }
  EXPECT_TRUE(file.SetPosition(0, 0));
  EXPECT_EQ(2000, file.Write(content.data(), 2000));
  EXPECT_TRUE(file.Close());
  EXPECT_EQ(content, tree.Content("a"));
  signal(SIGXFSZ, before);
}

// ---- Descriptors

// Takes every descriptor that is left.
class NoDescriptors {
 public:
  NoDescriptors() : limit_(RLIMIT_NOFILE, 64) {
    taken_.reserve(64);
    for (int taken = dup(0); taken >= 0; taken = dup(0)) taken_.push_back(taken);
  }
  ~NoDescriptors() {
    while (!taken_.empty()) GiveBackOne();
  }
  void GiveBackOne() {
    close(taken_.back());
    taken_.pop_back();
  }

 private:
  Limit limit_;
  std::vector<int> taken_;
};

TEST(DescriptorLimit, OneIsEnoughForEverything) {
  const TempTree tree;
  tree.MakeFolder("d1/d2");
  tree.MakeFile("d1/d2/a");
  const int before = OpenDescriptors();
  TestAllocator allocator;
  const struct {
    const char* what;
    std::function<bool()> succeeds;
    bool needsNone;
  } kRows[] = {
    {"open a file", [&] { return OpenAndClose(tree.Spec("b")); }, false},
    {"find", [&] { return CountEntries(tree.Spec("d*")) == 2; }, false},
    {"walk a tree", [&] { return CountEntries(tree.Spec("*")) >= 3; }, false},
    {"load a module", [] { return LoadAndFree(kModule); }, false},
    {"describe an entry",
     [&] {
       TFileInfo info;
       return TFile::GetInfo(tree.Spec("d1"), info) && info.isDirectory;
     },
     true},
    {"create a path", [&] { return TFile::CreatePath(tree.Spec("x/y")); }, true},
    {"rename", [&] { return TFile::Rename(tree.Spec("x/y"), tree.Spec("x/z")); }, true},
    {"remove", [&] { return TFile::Remove(tree.Spec("x/z")); }, true},
    {"run a thread", RunThread, true},
#if !defined(__SANITIZE_ADDRESS__)  // which looks at objects through a pipe
    {"start and stop",
     [] {
       if (KestInitialize(nullptr) != 1) return false;
       KestUninitialize();
       return true;
     },
     true},
#endif
  };
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    {
      NoDescriptors none;
      const bool without = row.succeeds();
      none.GiveBackOne();
      const bool withOne = row.needsNone || row.succeeds();
      EXPECT_EQ(row.needsNone, without);
      EXPECT_TRUE(withOne);
    }
    EXPECT_EQ(before, OpenDescriptors());
  }
  EXPECT_EQ(0, allocator.Live());
}

// ---- Memory

#if !defined(__SANITIZE_ADDRESS__)

// The limit on the address space, reached. What malloc still has it has to give away too; the
// blocks are a chain, because there is no memory for anything else.
class NoMemory {
 public:
  NoMemory() : limit_(RLIMIT_AS, 0) {
    for (size_t size = 1 << 20; size > 1024; size /= 2) TakeAll(size);
    for (size_t size = 1024; size >= sizeof(SBlock); size -= sizeof(SBlock)) TakeAll(size);
  }
  ~NoMemory() {
    while (blocks_ != nullptr) free(std::exchange(blocks_, blocks_->next));
  }
  // From now on there is so much, in bytes.
  void Allow(rlim_t room) { limit_.Set(AddressSpace() + room); }

 private:
  struct SBlock {
    SBlock* next;
  };

  void TakeAll(size_t size) {
    for (void* block = malloc(size); block != nullptr; block = malloc(size)) {
      blocks_ = ::new (block) SBlock{blocks_};
    }
  }
  // Of this process, in bytes, without memory of its own.
  static rlim_t AddressSpace() {
    char text[32] = {};
    const int file = open("/proc/self/statm", O_RDONLY);
    const ssize_t length = read(file, text, sizeof(text) - 1);
    close(file);
    return length > 0 ? strtoul(text, nullptr, 10) * static_cast<rlim_t>(getpagesize()) : 0;
  }

  Limit limit_;
  SBlock* blocks_ = nullptr;
};

// The stack does not grow at the limit, so its pages are there before.
__attribute__((noinline)) void GrowTheStack() {
  volatile char bytes[256 * 1024];
  for (size_t i = 0; i < sizeof(bytes); i += 1024) bytes[i] = 1;
}

TEST(MemoryLimit, IsAResultEverywhere) {
  const TempTree tree;
  tree.MakeFolder("d1/d2");
  const TBstr spec = tree.Spec("a"), all = tree.Spec("*"), folder = tree.Spec("d1"),
              path = tree.Spec("x/y"), module = kModule;
  for (const TBstr* each : {&spec, &all, &folder, &path, &module}) each->GetMultibyteString();
  const struct {
    const char* what;
    std::function<bool()> succeeds;
  } kRows[] = {
      {"open a file", [&] { return OpenAndClose(spec); }},
      {"walk a tree", [&] { return CountEntries(all) >= 2; }},
      {"describe an entry",
       [&] {
         TFileInfo info;
         return TFile::GetInfo(folder, info) && info.isDirectory;
       }},
      {"create a path", [&] { return TFile::CreatePath(path); }},
      {"load a module", [&] { return LoadAndFree(module); }},
      {"run a thread", RunThread},
      {"start, keep data, post, stop",
       [] {
         const bool done = KestInitialize(nullptr) == 1 && KestTlsAddData(5, 100) != nullptr &&
                           KestPostMessage(1, nullptr, nullptr);
         KestUninitialize();
         return done;
       }},
      {"build a text of 100,000 units", [] { return TBstr(u'x', 100000).GetLength() == 100000; }},
  };
  GrowTheStack();
  const int before = OpenDescriptors();
  int total = 0;
  for (const auto& row : kRows) {
    SCOPED_TRACE(row.what);
    bool succeeded = false;
    int refusals = 0;
    for (rlim_t room = 0; !succeeded && room < (64 << 20); room = room * 5 / 4 + 4096) {
      NoMemory none;
      none.Allow(room);
      succeeded = row.succeeds();
      if (!succeeded) ++refusals;
    }
    EXPECT_TRUE(succeeded);
    EXPECT_LT(0, refusals) << "the limit was never reached";
    EXPECT_EQ(before, OpenDescriptors());
    total += refusals;
  }
  printf("%d operations refused for want of memory\n", total);
}

#endif

// ---- Threads

// In a process of its own, which gives up the rights that stand above the limit.
TEST(ThreadLimit, IsAResult) {
  enum { kDone, kFailed, kNotBound };
  const pid_t child = fork();
  ASSERT_LE(0, child);
  if (child == 0) {
    if (geteuid() == 0 && setresuid(65534, 65534, 65534) != 0) _exit(kNotBound);
    TestAllocator allocator;
    TThread thread;
    {
      const Limit limit(RLIMIT_NPROC, 0);
      if (thread.Create(Seven, nullptr, false)) _exit(kNotBound);
      if (KestCreateThread(Seven, nullptr, false) != nullptr) _exit(kFailed);
    }
    if (thread.WaitForExit(nullptr) || allocator.Live() != 0) _exit(kFailed);
    if (!thread.Create(Seven, nullptr, false) || !thread.WaitForExit(nullptr)) _exit(kFailed);
    _exit(kDone);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == kNotBound) GTEST_SKIP() << "no limit on threads binds this user here";
  EXPECT_EQ(kDone, WEXITSTATUS(status));
}

}  // namespace
