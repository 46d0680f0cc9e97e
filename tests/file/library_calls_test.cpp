// What TLibrary asks of the C library and the dynamic loader, and what becomes of their refusals.
// This program answers the calls that the library makes.

#include <dlfcn.h>
#include <errno.h>
#include <limits.h>
#include <stdlib.h>
#include <string.h>

#include "file/module_log.h"
#include "kest/file.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TLibrary;
using kest_test::Bstr;
using kest_test::BuiltModule;
using kest_test::Log;
using kest_test::TakeLog;

// What the last calls were given and what they are to answer.
struct {
  bool on;
  std::string directory;  // of realpath
  std::string resolved;   // its answer, when not empty
  bool realpathFails;
  int realpathCalls;
  std::string path;  // of dlopen
  int flags;
  bool dlopenFails;
  int dlopenCalls;
  void* closed;  // of dlclose
  int dlcloseResult;
  int dlcloseCalls;
} s_loader;

template <typename Function>
Function* Next(const char* name) {
  return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

}  // namespace

extern "C" {

char* realpath(const char* path, char* resolved) noexcept {
  const auto next = Next<char*(const char*, char*)>("realpath");
  if (!s_loader.on) return next(path, resolved);
  ++s_loader.realpathCalls;
  s_loader.directory = path;
  if (s_loader.realpathFails) {
    errno = ELOOP;
    return nullptr;
  }
  return s_loader.resolved.empty() ? next(path, resolved)
                                   : strcpy(resolved, s_loader.resolved.c_str());
}

// What a build with checked variants calls; size is that of the buffer.
char* __realpath_chk(const char* path, char* resolved, size_t size) noexcept {
  EXPECT_LE(size_t{PATH_MAX}, size);
  return realpath(path, resolved);
}

void* dlopen(const char* path, int flags) noexcept {
  if (s_loader.on) {
    ++s_loader.dlopenCalls;
    s_loader.path = path;
    s_loader.flags = flags;
    if (s_loader.dlopenFails) return nullptr;
  }
  return Next<void*(const char*, int)>("dlopen")(path, flags);
}

int dlclose(void* module) noexcept {
  if (s_loader.on) {
    ++s_loader.dlcloseCalls;
    s_loader.closed = module;
    // A refusal leaves the module in memory, other answers do not.
    if (s_loader.dlcloseResult == -1) return -1;
  }
  const int result = Next<int(void*)>("dlclose")(module);
  return s_loader.on ? s_loader.dlcloseResult : result;
}

}  // extern "C"

namespace {

class LibraryCalls : public testing::Test {
 protected:
  void SetUp() override {
    s_loader = {};
    s_loader.on = true;
    TakeLog();
  }
  void TearDown() override { s_loader = {}; }

  const std::string path = BuiltModule("pair");
  TLibrary library;
};

TEST_F(LibraryCalls, OpensTheAbsolutePathLazily) {
  EXPECT_TRUE(library.Load(Bstr(path)));
  EXPECT_EQ(KEST_TEST_MODULES, s_loader.directory);
  EXPECT_EQ(path, s_loader.path);
  EXPECT_EQ(1, s_loader.flags) << "RTLD_LAZY alone";
  EXPECT_EQ(1, s_loader.realpathCalls);
  EXPECT_EQ(1, s_loader.dlopenCalls);
  EXPECT_EQ(0, s_loader.dlcloseCalls);
}

// Columns: spec, what realpath is given, what dlopen is given when realpath says "/real".
TEST_F(LibraryCalls, SplitsAtTheLastSeparator) {
  const struct {
    const char *spec, *directory, *path;
  } rows[] = {
      {"mod.so", "./", "/real/mod.so"},
      {"./mod.so", ".", "/real/mod.so"},
      {"sub/mod.so", "sub", "/real/mod.so"},
      {"sub//mod.so", "sub/", "/real/mod.so"},
      {"/a/b/mod.so", "/a/b", "/real/mod.so"},
      {"/mod.so", "", "/real/mod.so"},
      {"//mod.so", "/", "/real/mod.so"},
      {"sub/", "sub", "/real/"},
      {"/", "", "/real/"},
      {"\xE9/\xFF.so", "\xE9", "/real/\xFF.so"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.spec);
    s_loader.resolved = "/real";
    EXPECT_FALSE(library.Load(row.spec));
    EXPECT_EQ(row.directory, s_loader.directory);
    EXPECT_EQ(row.path, s_loader.path);
  }
}

TEST_F(LibraryCalls, TheRootKeepsItsSeparator) {
  EXPECT_FALSE(library.Load("//no module.so"));
  EXPECT_EQ("//no module.so", s_loader.path);
}

TEST_F(LibraryCalls, AModuleInTheRootHasNoDirectory) {
  EXPECT_FALSE(library.Load("/mod.so"));
  EXPECT_EQ("", s_loader.directory);
  EXPECT_EQ(0, s_loader.dlopenCalls);
}

TEST_F(LibraryCalls, ADirectoryThatIsNotResolvedIsTheEnd) {
  s_loader.realpathFails = true;
  EXPECT_FALSE(library.Load(Bstr(path)));
  EXPECT_EQ(ELOOP, errno);
  EXPECT_EQ(1, s_loader.realpathCalls);
  EXPECT_EQ(0, s_loader.dlopenCalls);
  EXPECT_FALSE(library.IsLoaded());
}

TEST_F(LibraryCalls, LongSpecsAskForNothing) {
  EXPECT_FALSE(library.Load(TBstr(u'm', 4096)));
  EXPECT_EQ(0, s_loader.realpathCalls);
  EXPECT_FALSE(library.Load(TBstr(u'm', 4095)));
  EXPECT_EQ(1, s_loader.realpathCalls);
}

// The terminator included, a path has 4096 bytes at most.
TEST_F(LibraryCalls, AnAbsolutePathHasToFitAsWell) {
  s_loader.dlopenFails = true;
  for (size_t length : {1u, 4089u, 4090u, 4091u, 4092u, 4094u, 4095u}) {
    SCOPED_TRACE(length);
    s_loader.dlopenCalls = 0;
    s_loader.resolved = std::string(length, 'r');
    EXPECT_FALSE(library.Load("m.so"));
    EXPECT_EQ(length + 5 <= 4095 ? 1 : 0, s_loader.dlopenCalls);
    if (s_loader.dlopenCalls != 0) {
      EXPECT_EQ(s_loader.resolved + "/m.so", s_loader.path);
    }
  }
}

TEST_F(LibraryCalls, AModuleThatTheSystemRefusesIsNotLoaded) {
  s_loader.dlopenFails = true;
  EXPECT_FALSE(library.Load(Bstr(path)));
  EXPECT_EQ(1, s_loader.dlopenCalls);
  EXPECT_EQ(0, s_loader.dlcloseCalls);
  EXPECT_EQ(Log{}, TakeLog());
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_TRUE(library.GetFileSpec().IsEmpty());
}

TEST_F(LibraryCalls, ARefusedUnloadingKeepsTheModule) {
  ASSERT_TRUE(library.Load(Bstr(path)));
  TakeLog();
  s_loader.dlcloseResult = -1;
  EXPECT_FALSE(library.Free());
  EXPECT_EQ(Log{"pair stops"}, TakeLog());
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_EQ(path, kest_test::Text(library.GetFileSpec()));
  EXPECT_NE(nullptr, library.GetProcAddress("ModuleName"));
  void* const module = s_loader.closed;
  s_loader.dlcloseResult = 0;
  EXPECT_TRUE(library.Free()) << "another attempt, which stops it once more";
  EXPECT_EQ(module, s_loader.closed);
  EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
  EXPECT_FALSE(library.IsLoaded());
}

TEST_F(LibraryCalls, OnlyMinusOneIsARefusal) {
  for (int result : {0, 1, 2, -2}) {
    SCOPED_TRACE(result);
    s_loader.dlcloseResult = result;
    ASSERT_TRUE(library.Load(Bstr(path)));
    EXPECT_TRUE(library.Free());
    EXPECT_FALSE(library.IsLoaded());
  }
}

TEST_F(LibraryCalls, DestructorTriesOnce) {
  {
    TLibrary other;
    ASSERT_TRUE(other.Load(Bstr(path)));
    s_loader.dlcloseResult = -1;
  }
  EXPECT_EQ(1, s_loader.dlcloseCalls);
  s_loader.on = false;
  EXPECT_EQ(0, dlclose(s_loader.closed));
}

TEST_F(LibraryCalls, AFailedStartIsNoModuleEvenWhenItCannotBeUnloaded) {
  kest_test::s_moduleResult = 0;
  s_loader.dlcloseResult = -1;
  EXPECT_FALSE(library.Load(Bstr(path)));
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_EQ(1, s_loader.dlcloseCalls);
  EXPECT_EQ((Log{"pair starts as " + path, "pair stops"}), TakeLog());
  kest_test::s_moduleResult = 1;
  s_loader.on = false;
  EXPECT_EQ(0, dlclose(s_loader.closed));
}

TEST_F(LibraryCalls, ClosesAsOftenAsItOpens) {
  for (const char* name :
       {"pair", "init", "term", "none", "mangled", "none_with_kest", "term_with_pair", "missing"}) {
    library.Load(Bstr(BuiltModule(name)));
    library.Free();
  }
  EXPECT_EQ(8, s_loader.dlopenCalls);
  EXPECT_EQ(7, s_loader.dlcloseCalls);
}

}  // namespace
