#include <dlfcn.h>
#include <limits.h>
#include <sys/stat.h>

#include <type_traits>

#include "file/module_log.h"
#include "kest/frame.h"
#include "kest/kest.h"
#include "support/test_allocator.h"

namespace {

using KEST::TBstr;
using KEST::TLibrary;
using kest_test::Bstr;
using kest_test::BuiltModule;
using kest_test::Canonical;
using kest_test::CopyModule;
using kest_test::Log;
using kest_test::TakeLog;
using kest_test::TempTree;
using kest_test::Text;
using kest_test::WorkingDirectory;

bool Load(TLibrary& library, const std::string& path) { return library.Load(Bstr(path)); }

void ExpectUnloaded(const TLibrary& library) {
  EXPECT_FALSE(library.IsLoaded());
  EXPECT_TRUE(library.GetFileSpec().IsEmpty());
  EXPECT_EQ(nullptr, library.GetProcAddress("ModuleName"));
  EXPECT_EQ(nullptr, library.GetProcAddress("malloc"))
      << "the process has it, and no library is loaded";
}

class Library : public testing::Test {
 protected:
  void SetUp() override { TakeLog(); }

  // The module as the system has it at the moment.
  static bool IsInMemory(const std::string& path) {
    void* const module = dlopen(path.c_str(), RTLD_LAZY | RTLD_NOLOAD);
    if (module == nullptr) return false;
    dlclose(module);
    return true;
  }

  // Loads a file of the tree; true when its module was started under the name expected there.
  bool StartsAs(const std::string& spec, const std::string& expected) const {
    TLibrary library;
    TakeLog();
    if (!Load(library, spec)) return false;
    EXPECT_EQ(Log{"pair starts as " + Canonical(tree, expected)}, TakeLog());
    EXPECT_EQ(spec, Text(library.GetFileSpec()));
    const bool freed = library.Free();
    EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
    return freed;
  }

  TempTree tree;
};

TEST_F(Library, IsAPlainObjectThatIsNotCopied) {
  static_assert(!std::is_polymorphic_v<TLibrary>);
  static_assert(!std::is_copy_constructible_v<TLibrary>);
  static_assert(!std::is_copy_assignable_v<TLibrary>);
}

TEST_F(Library, ExtensionHasNoDot) { EXPECT_EQ("so", Text(TLibrary::kLibraryExtension)); }

TEST_F(Library, StartsWithoutAModule) {
  TLibrary library;
  ExpectUnloaded(library);
  EXPECT_FALSE(library.Free());
}

TEST_F(Library, LoadsStartsStopsAndUnloads) {
  const std::string path = BuiltModule("pair");
  TLibrary library;
  ASSERT_TRUE(Load(library, path));
  EXPECT_EQ(Log{"pair starts as " + path}, TakeLog());
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_EQ(path, Text(library.GetFileSpec()));
  EXPECT_TRUE(IsInMemory(path));
  EXPECT_TRUE(library.Free());
  EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
  ExpectUnloaded(library);
  EXPECT_FALSE(IsInMemory(path));
  EXPECT_FALSE(library.Free());
}

TEST_F(Library, AnObjectLoadsAgainAfterFree) {
  TLibrary library;
  for (const char* name : {"pair", "init", "pair"}) {
    ASSERT_TRUE(Load(library, BuiltModule(name)));
    EXPECT_EQ(BuiltModule(name), Text(library.GetFileSpec()));
    EXPECT_TRUE(library.Free());
  }
}

TEST_F(Library, DestructorFrees) {
  {
    TLibrary library;
    ASSERT_TRUE(Load(library, BuiltModule("pair")));
    TakeLog();
  }
  EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
  { TLibrary library; }
  EXPECT_EQ(Log{}, TakeLog());
}

// Columns: module, whether its SharedLibInit and its SharedLibTerm are called. Those of a library
// that the module is linked to are not its own, whether that is Kest or another.
TEST_F(Library, EntryPointsAreThoseOfTheModuleItself) {
  const struct {
    const char* module;
    bool starts, stops;
  } rows[] = {
      {"pair", true, true},
      {"init", true, false},
      {"term", false, true},
      {"none", false, false},
      {"mangled", false, false},
      {"pair_with_kest", true, true},
      {"init_with_kest", true, false},
      {"term_with_kest", false, true},
      {"none_with_kest", false, false},
      {"pair_with_pair", true, true},
      {"init_with_pair", true, false},
      {"term_with_pair", false, true},
      {"none_with_pair", false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.module);
    const std::string module = row.module;
    const bool hasDependency = module.find("_with_pair") != std::string::npos;
    Log expected;
    if (row.starts) expected.push_back(module + " starts as " + BuiltModule(module));
    if (row.stops) expected.push_back(module + " stops");
    expected.push_back(module + " is unloaded");
    if (hasDependency) expected.push_back("dependency is unloaded");

    TLibrary library;
    EXPECT_EQ(row.starts, Load(library, BuiltModule(module)));
    EXPECT_EQ(row.starts, library.IsLoaded());
    EXPECT_EQ(row.starts, library.Free());
    EXPECT_EQ(expected, TakeLog());
    ExpectUnloaded(library);
    EXPECT_FALSE(IsInMemory(BuiltModule(module)));
    EXPECT_TRUE(KEST::ModuleGetFileSpec().IsEmpty()) << "Kest's own entry point was called";
  }
}

TEST_F(Library, AModulesDependenciesWouldHaveEntryPoints) {
  for (const char* name : {"none_with_kest", "none_with_pair"}) {
    SCOPED_TRACE(name);
    void* const module = dlopen(BuiltModule(name).c_str(), RTLD_LAZY);
    ASSERT_NE(nullptr, module);
    EXPECT_NE(nullptr, TLibrary::LibraryGetProcAddress(module, "SharedLibInit"));
    EXPECT_NE(nullptr, TLibrary::LibraryGetProcAddress(module, "SharedLibTerm"));
    EXPECT_TRUE(TLibrary::LibraryFree(module));
  }
  EXPECT_EQ(
      (Log{"none_with_kest is unloaded", "none_with_pair is unloaded", "dependency is unloaded"}),
      TakeLog());
}

TEST_F(Library, ModulesLinkedToKestLeaveItsOwnEntryPairAlone) {
  kest_test::TestAllocator allocator;
  ASSERT_TRUE(SharedLibInit("/lib/kest.so"));
  for (const char* name : {"pair_with_kest", "init_with_kest", "term_with_kest"}) {
    TLibrary library;
    Load(library, BuiltModule(name));
    library.Free();
    EXPECT_EQ("/lib/kest.so", Text(KEST::ModuleGetFileSpec()));
  }
  SharedLibTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST_F(Library, KestItselfIsAModule) {
  kest_test::TestAllocator allocator;
  {
    TLibrary library;
    ASSERT_TRUE(Load(library, KEST_TEST_LIBRARY));
    EXPECT_EQ(KEST_TEST_LIBRARY, Text(KEST::ModuleGetFileSpec()));
    EXPECT_EQ(reinterpret_cast<void*>(KestGetVersion), library.GetProcAddress("KestGetVersion"));
    EXPECT_TRUE(library.Free());
    EXPECT_EQ(0, allocator.Live()) << "the path is freed";
  }
  EXPECT_STREQ(KEST_VERSION_STRING, KestGetVersion()) << "this program still uses it";
}

// Any number may come back, and its lowest byte counts.
TEST_F(Library, InitSucceededWhenItsByteIsNotZero) {
  const struct {
    int result;
    bool loads;
  } rows[] = {{0, false},   {1, true},        {2, true},      {0x80, true},
              {0xFF, true}, {0x100, false},   {0x102, true},  {0xFF00, false},
              {-1, true},   {INT_MIN, false}, {INT_MAX, true}};
  for (const auto& row : rows) {
    SCOPED_TRACE(row.result);
    kest_test::s_moduleResult = row.result;
    TLibrary library;
    EXPECT_EQ(row.loads, Load(library, BuiltModule("pair")));
    EXPECT_EQ(row.loads, library.IsLoaded());
  }
  kest_test::s_moduleResult = 1;
}

TEST_F(Library, AFailedStartIsStoppedOnceAndUnloaded) {
  kest_test::s_moduleResult = 0;
  TLibrary library;
  EXPECT_FALSE(Load(library, BuiltModule("pair")));
  const std::string started = "pair starts as " + BuiltModule("pair");
  EXPECT_EQ((Log{started, "pair stops", "pair is unloaded"}), TakeLog());
  ExpectUnloaded(library);
  EXPECT_FALSE(Load(library, BuiltModule("init"))) << "without SharedLibTerm";
  EXPECT_EQ((Log{"init starts as " + BuiltModule("init"), "init is unloaded"}), TakeLog());
  kest_test::s_moduleResult = 1;
  EXPECT_TRUE(Load(library, BuiltModule("pair"))) << "the object can be used again";
}

TEST_F(Library, ASecondLoadKeepsTheFirstModule) {
  TLibrary library;
  ASSERT_TRUE(Load(library, BuiltModule("pair")));
  TakeLog();
  EXPECT_FALSE(Load(library, BuiltModule("init")));
  EXPECT_FALSE(Load(library, BuiltModule("pair")));
  EXPECT_FALSE(Load(library, ""));
  EXPECT_EQ(Log{}, TakeLog());
  EXPECT_TRUE(library.IsLoaded());
  EXPECT_EQ(BuiltModule("pair"), Text(library.GetFileSpec()));
}

TEST_F(Library, TwoObjectsShareAModuleAndEachStartsAndStopsIt) {
  const std::string path = BuiltModule("pair");
  TLibrary first, second;
  ASSERT_TRUE(Load(first, path));
  ASSERT_TRUE(Load(second, path));
  EXPECT_EQ(first.GetProcAddress("ModuleName"), second.GetProcAddress("ModuleName"));
  EXPECT_TRUE(first.Free());
  EXPECT_TRUE(IsInMemory(path));
  EXPECT_TRUE(second.Free());
  EXPECT_EQ((Log{"pair starts as " + path, "pair starts as " + path, "pair stops", "pair stops",
                 "pair is unloaded"}),
            TakeLog());
}

TEST_F(Library, AModuleMayLoadAnotherWhileItStarts) {
  static TLibrary* inner;
  TLibrary innerLibrary;
  inner = &innerLibrary;
  kest_test::s_moduleHook = [] {
    kest_test::s_moduleHook = nullptr;
    EXPECT_TRUE(Load(*inner, BuiltModule("init")));
  };
  TLibrary outer;
  EXPECT_TRUE(Load(outer, BuiltModule("pair")));
  EXPECT_EQ((Log{"pair starts as " + BuiltModule("pair"), "init starts as " + BuiltModule("init")}),
            TakeLog());
  EXPECT_TRUE(outer.Free());
  EXPECT_TRUE(innerLibrary.Free());
}

TEST_F(Library, RunsTheEntryPairOnTheCallingThread) {
  static pthread_t thread;
  thread = pthread_t();
  kest_test::s_moduleHook = [] { thread = pthread_self(); };
  TLibrary library;
  EXPECT_TRUE(Load(library, BuiltModule("pair")));
  kest_test::s_moduleHook = nullptr;
  EXPECT_NE(0, pthread_equal(pthread_self(), thread));
}

TEST_F(Library, LooksUpFunctionsAndVariables) {
  TLibrary library;
  ASSERT_TRUE(Load(library, BuiltModule("pair")));
  using NameProc = const char* (*)();
  const auto name = reinterpret_cast<NameProc>(library.GetProcAddress("ModuleName"));
  ASSERT_NE(nullptr, name);
  EXPECT_STREQ("pair", name());
  EXPECT_NE(nullptr, library.GetProcAddress("SharedLibInit"));
  EXPECT_NE(nullptr, library.GetProcAddress("SharedLibTerm"));
  for (const char* missing : {"", "modulename", "ModuleNam", "ModuleName ", "Unload"}) {
    EXPECT_EQ(nullptr, library.GetProcAddress(missing)) << missing;
  }
  EXPECT_EQ(nullptr, library.GetProcAddress(TBstr()));
  ASSERT_TRUE(library.Free());
  ASSERT_TRUE(Load(library, BuiltModule("init")));
  int* const number = static_cast<int*>(library.GetProcAddress("moduleNumber"));
  ASSERT_NE(nullptr, number);
  EXPECT_EQ(42, *number);
}

TEST_F(Library, LookUpReachesTheLibrariesThatAModuleDependsOn) {
  TLibrary alone, linked;
  ASSERT_TRUE(Load(alone, BuiltModule("pair")));
  ASSERT_TRUE(Load(linked, BuiltModule("pair_with_kest")));
  EXPECT_EQ(nullptr, alone.GetProcAddress("KestInitialize"));
  EXPECT_EQ(reinterpret_cast<void*>(KestInitialize), linked.GetProcAddress("KestInitialize"));
}

TEST_F(Library, SymbolsStayLocalToTheModule) {
  TLibrary library;
  ASSERT_TRUE(Load(library, BuiltModule("pair")));
  EXPECT_EQ(nullptr, dlsym(RTLD_DEFAULT, "ModuleName"));
}

TEST_F(Library, FunctionsAreBoundWhenTheyAreCalled) {
  TLibrary library;
  EXPECT_TRUE(Load(library, BuiltModule("unbound")));
  EXPECT_NE(nullptr, library.GetProcAddress("CallsWhatIsMissing"));
}

TEST_F(Library, ABareNameIsLoadedFromTheWorkingDirectoryAlone) {
  CopyModule(tree, "pair", "mod.so");
  const WorkingDirectory inTree(tree.Path());
  EXPECT_TRUE(StartsAs("mod.so", "mod.so"));
  TLibrary library;
  EXPECT_FALSE(Load(library, "mod")) << "no extension is added";
  // On the loader's search path, in memory already, and a module.
  EXPECT_FALSE(Load(library, "libKest.so.1"));
  EXPECT_FALSE(Load(library, "libc.so.6"));
  const WorkingDirectory inRoot("/");
  EXPECT_FALSE(Load(library, "mod.so"));
}

TEST_F(Library, DirectoriesAreMadeAbsolute) {
  tree.MakeFolder("sub/deep/deeper");
  tree.MakeLink("link", "sub/deep");
  CopyModule(tree, "pair", "mod.so");
  CopyModule(tree, "pair", "sub/mod.so");
  CopyModule(tree, "pair", "sub/deep/deeper/mod.so");
  tree.MakeLink("sub/other.so", "mod.so");
  const WorkingDirectory inSub(tree.Path("sub"));
  // Columns: the spec, what the module is told, relative to the tree.
  const struct {
    std::string spec;
    const char* path;
  } rows[] = {
      {"mod.so", "sub/mod.so"},
      {"./mod.so", "sub/mod.so"},
      {".//mod.so", "sub/mod.so"},
      {"../mod.so", "mod.so"},
      {"deep/deeper/mod.so", "sub/deep/deeper/mod.so"},
      {"deep/../mod.so", "sub/mod.so"},
      {"deep//deeper/.//mod.so", "sub/deep/deeper/mod.so"},
      {"../link/deeper/mod.so", "sub/deep/deeper/mod.so"},
      {"other.so", "sub/other.so"},  // the file itself may be a link
      {tree.Path("sub/mod.so"), "sub/mod.so"},
      {tree.Path("link/../mod.so"), "sub/mod.so"},
      {tree.Path("sub/../mod.so"), "mod.so"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.spec);
    EXPECT_TRUE(StartsAs(row.spec, row.path));
  }
}

TEST_F(Library, NamesAreBytes) {
  for (const char* name : {"caf\xE9.so", "\xC3\xA9t\xC3\xA9.so", "\x80\xFF\x01", "with space.so",
                           "mod.so.1", "-", "a\nb", "*", "?", "\\"}) {
    SCOPED_TRACE(name);
    CopyModule(tree, "pair", name);
    EXPECT_TRUE(StartsAs(tree.Path(name), name));
  }
  tree.MakeFolder("d\xE9/\xFF");
  CopyModule(tree, "pair", "d\xE9/\xFF/\xFE.so");
  EXPECT_TRUE(StartsAs(tree.Path("d\xE9/\xFF/\xFE.so"), "d\xE9/\xFF/\xFE.so"));
}

TEST_F(Library, AUnitWithoutAByteIsAQuestionMark) {
  CopyModule(tree, "pair", "?.so");
  TLibrary library;
  EXPECT_TRUE(library.Load(tree.Spec() + KEST_TEXT("/\u0100.so")));
  EXPECT_EQ(Log{"pair starts as " + Canonical(tree, "?.so")}, TakeLog());
  EXPECT_EQ(0x100, library.GetFileSpec().GetAt(library.GetFileSpec().GetLength() - 4));
}

TEST_F(Library, AZeroUnitEndsTheName) {
  CopyModule(tree, "pair", "mod.so");
  std::string name = tree.Path("mod.so");
  name += std::string(1, '\0') + std::string(5000, 'x');
  const TBstr spec(name.c_str(), static_cast<int>(name.size()));
  TLibrary library;
  EXPECT_TRUE(library.Load(spec));
  EXPECT_EQ(static_cast<int>(name.size()), library.GetFileSpec().GetLength());
}

TEST_F(Library, RefusesWhatIsNoModule) {
  tree.MakeFolder("folder.so");
  tree.MakeFile("text.so", "a file");
  tree.MakeFile("empty.so");
  tree.MakeLink("dangling.so", "nowhere");
  CopyModule(tree, "pair", "cut.so");
  std::filesystem::resize_file(tree.Path("cut.so"), 100);
  TLibrary library;
  for (const char* name : {"folder.so", "folder.so/", "text.so", "text.so/", "empty.so",
                           "dangling.so", "cut.so", "missing.so", "missing/mod.so", ""}) {
    SCOPED_TRACE(name);
    EXPECT_FALSE(Load(library, tree.Path() + "/" + name));
    ExpectUnloaded(library);
  }
  for (const char* spec : {"", "/", "//", ".", "..", "./", "/mod.so"}) {
    SCOPED_TRACE(spec);
    EXPECT_FALSE(Load(library, spec));
  }
  EXPECT_FALSE(library.Load(TBstr()));
  EXPECT_FALSE(library.Load(TBstr("\0\0", 2)));
  EXPECT_EQ(Log{}, TakeLog());
}

TEST_F(Library, RefusesTheProgramItself) {
  TLibrary library;
  EXPECT_FALSE(Load(library, "/proc/self/exe"));
}

TEST_F(Library, NeedsAWorkingDirectoryForARelativeName) {
  tree.MakeFolder("gone");
  const WorkingDirectory inGone(tree.Path("gone"));
  std::filesystem::remove(tree.Path("gone"));
  TLibrary library;
  EXPECT_FALSE(Load(library, "mod.so"));
  EXPECT_FALSE(Load(library, "./mod.so"));
  EXPECT_TRUE(Load(library, BuiltModule("pair")));
}

// A spec is lengthened with "./", which leads to the same file.
TEST_F(Library, RefusesSpecsOf4096BytesAndMore) {
  CopyModule(tree, "pair", "mod.so");
  CopyModule(tree, "pair", "odd.so.");
  const auto lengthened = [&](const std::string& name, size_t length) {
    std::string spec = tree.Path() + "/";
    while (spec.size() + name.size() + 1 < length) spec += "./";
    return spec + name;
  };
  for (const char* name : {"mod.so", "odd.so."}) {
    for (size_t length = 4090; length < 4200; ++length) {
      const std::string spec = lengthened(name, length);
      if (spec.size() != length) continue;  // the other name has it
      SCOPED_TRACE(length);
      EXPECT_EQ(length < 4096, StartsAs(spec, name));
    }
  }
  TLibrary library;
  for (int length : {4095, 4096, 8192, 100000}) {
    EXPECT_FALSE(library.Load(TBstr(u'm', length))) << "as a name";
    EXPECT_FALSE(library.Load(TBstr(u'/', length))) << "as a directory";
    EXPECT_FALSE(library.Load(TBstr(u'm', length) + KEST_TEXT("/mod.so")));
  }
}

TEST_F(Library, WithoutMemoryNothingIsLeftLoaded) {
  const std::string path = BuiltModule("pair");
  const TBstr spec = Bstr(path);
  kest_test::ForEachRefusedRequest([&](kest_test::TestAllocator& allocator) {
    TBstr fresh(spec);  // without an 8-bit form as yet
    TLibrary library;
    const bool loaded = library.Load(fresh);
    EXPECT_EQ(loaded, library.IsLoaded());
    EXPECT_EQ(loaded, IsInMemory(path));
    EXPECT_EQ(allocator.Refused() == 0, loaded);
    if (loaded) {
      EXPECT_EQ(Log{"pair starts as " + path}, TakeLog());
    } else {
      EXPECT_EQ(Log{}, TakeLog()) << "it was started in vain";
    }
    library.Free();
    TakeLog();
  });
  EXPECT_FALSE(IsInMemory(path));
}

TEST_F(Library, StopsAModuleWithoutMemory) {
  TLibrary library;
  ASSERT_TRUE(Load(library, BuiltModule("pair")));
  TakeLog();
  const TBstr name("ModuleName");
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  EXPECT_EQ(nullptr, library.GetProcAddress(name)) << "no memory for its 8-bit form";
  EXPECT_TRUE(library.Free());
  EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
}

TEST_F(Library, PlatformLayerLoadsAndFreesByHandle) {
  const std::string path = BuiltModule("pair");
  void* const module = TLibrary::LibraryLoad(Bstr(path));
  ASSERT_NE(nullptr, module);
  EXPECT_EQ(Log{"pair starts as " + path}, TakeLog());
  EXPECT_NE(nullptr, TLibrary::LibraryGetProcAddress(module, "ModuleName"));
  EXPECT_TRUE(TLibrary::LibraryFree(module));
  EXPECT_EQ((Log{"pair stops", "pair is unloaded"}), TakeLog());
  EXPECT_EQ(nullptr, TLibrary::LibraryLoad(Bstr(BuiltModule("none"))));
  EXPECT_EQ(nullptr, TLibrary::LibraryLoad(TBstr()));
}

}  // namespace
