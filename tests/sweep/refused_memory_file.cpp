// Operations of kest/file.h that ask for memory.

#include "kest/file.h"

#include <dlfcn.h>

#include <optional>

#include "file/temp_tree.h"
#include "kest/frame.h"
#include "kest/kest.h"
#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

// A spec made from another one.
template <typename Operation>
auto Spec(const char* given, Operation make) {
  return [=](Attempts& attempts) {
    const TBstr spec(given);
    attempts([&] { return Said(make(spec)); });
  };
}

// A folder with the folder "d", the file "d/f" and the file "x", or what an operation leaves of
// that.
class Folder {
 public:
  Folder() { Restore(); }
  void Restore() {
    for (const auto& entry : std::filesystem::directory_iterator(tree.Path())) {
      std::filesystem::remove_all(entry);
    }
    tree.MakeFolder("d");
    tree.MakeFile("d/f", "12345");
    tree.MakeFile("x", "abc");
    // Without the 8-bit copies that an earlier use has made.
    d = tree.Spec("d");
    f = tree.Spec("d/f");
    x = tree.Spec("x");
    fresh = tree.Spec("new");
    all = tree.Spec("d*");
  }
  std::string Entries() const {
    std::string said;
    for (const char* name : {"d", "d/f", "x", "new", "new/y"}) {
      if (tree.Exists(name)) said += std::string(" ") + name;
    }
    return said;
  }

  TempTree tree;
  TBstr d, f, x, fresh, all;
};

// An operation on the folder, which the expected result goes on to list.
template <typename Operation>
auto Changes(Operation operation) {
  return [operation](Attempts& attempts) {
    Folder folder;
    attempts([&] { folder.Restore(); },
             [&] {
               const bool done = operation(folder);
               return Said(done) + folder.Entries();
             });
  };
}

constexpr unsigned int kReadWrite = TFile::kOpenReadWrite;

// The library's own file, which is a module with an entry pair as well.
const char* LibraryPath() {
  Dl_info info = {};
  dladdr(reinterpret_cast<void*>(&KestGetVersion), &info);
  return info.dli_fname;
}

}  // namespace

std::vector<RefusedMemoryRow> FileRows() {
  return {
      {{"KEST::TFileInfo::Init(KEST::TBstr const&, bool, long long, long, long, long)"},
       "name true 5",
       {" true 5"},
       [](Attempts& attempts) {
         const TBstr name("name");
         TFileInfo info;
         attempts([&] {
           info.Init(name, true, 5, 6, 7, 8);
           return Said(info.name, info.isDirectory, static_cast<int>(info.size));
         });
       }},

      {{"KEST::TFile::AddTrailingSeparator(KEST::TBstr const&)"},
       "a/b/",
       {""},
       Spec("a/b", TFile::AddTrailingSeparator)},
      {{"KEST::TFile::RemoveTrailingSeparator(KEST::TBstr const&)"},
       "a/b",
       {""},
       Spec("a/b//", TFile::RemoveTrailingSeparator)},
      {{"KEST::TFile::AppendFileNameToSpec(KEST::TBstr const&, KEST::TBstr const&)"},
       "a/b/a/b",
       {""},
       Spec("a/b", [](const TBstr& spec) { return TFile::AppendFileNameToSpec(spec, spec); })},
      {{"KEST::TFile::DirSpecFromFullSpec(KEST::TBstr const&)"},
       "a/",
       {""},
       Spec("a/b", TFile::DirSpecFromFullSpec)},
      {{"KEST::TFile::FileNameFromFullSpec(KEST::TBstr const&)"},
       "b",
       {""},
       Spec("a/b", TFile::FileNameFromFullSpec)},
      {{"KEST::TFile::CanonicalizeSpec(KEST::TBstr const&)"},
       "a/c",
       {""},
       Spec("a/./b/../c", TFile::CanonicalizeSpec)},
      {{"KEST::TFile::MakeValidSpec(KEST::TBstr const&, bool)"},
       "a/b",
       {""},
       Spec("a/b", [](const TBstr& spec) { return TFile::MakeValidSpec(spec, true); })},
      {{"KEST::TFile::GetTempDirectory()"},
       "/tmp/",
       {""},
       Spec("", [](const TBstr&) { return TFile::GetTempDirectory(); })},
      {{"KEST::TFile::CreateTempFileSpec()"},
       "17",
       {"0"},
       Spec("", [](const TBstr&) { return TFile::CreateTempFileSpec().GetLength(); })},

      {{"KEST::TFile::Open(KEST::TBstr const&, unsigned int, bool)"},
       "true true d d/f x new",
       {"false false d d/f x"},
       [](Attempts& attempts) {
         Folder folder;
         TFile file;
         attempts(
             [&] {
               file.Close();
               folder.Restore();
             },
             [&] {
               const bool done = file.Open(folder.fresh, kReadWrite, true);
               return Said(done, file.IsOpen()) + folder.Entries();
             });
       }},
      {{"KEST::TFile::FileOpen(KEST::TBstr const&, unsigned int, bool)"},
       "true d d/f x new",
       {"false d d/f x"},
       Changes([](Folder& folder) {
         void* const handle = TFile::FileOpen(folder.fresh, kReadWrite, true);
         return handle != nullptr && TFile::FileClose(handle);
       })},
      {{"KEST::TFile::Close()"},
       "true false ",
       {},
       [](Attempts& attempts) {
         const Folder folder;
         TFile file;
         attempts([&] { file.Open(folder.x, 0, false); },
                  [&] {
                    const bool done = file.Close();
                    return Said(done, file.IsOpen(), file.GetFileSpec());
                  });
       }},
      {{"KEST::TFile::~TFile()"},
       "closed",
       {},
       [](Attempts& attempts) {
         const Folder folder;
         std::optional<TFile> file;
         attempts([&] { file.emplace().Open(folder.x, 0, false); },
                  [&] {
                    file.reset();
                    return Said("closed");
                  });
       }},

      {{"KEST::TFile::GetInfo(KEST::TBstr const&, KEST::TFileInfo&)"},
       "true f 5",
       {"false old 0"},
       [](Attempts& attempts) {
         Folder folder;
         TFileInfo info;
         attempts(
             [&] {
               folder.Restore();
               info.Init("old", false, 0, 0, 0, 0);
             },
             [&] {
               const bool found = TFile::GetInfo(folder.f, info);
               return Said(found, info.name, static_cast<int>(info.size));
             });
       }},
      {{"KEST::TFile::CreateDirectory(KEST::TBstr const&)"},
       "true d d/f x new",
       {"false d d/f x"},
       Changes([](Folder& folder) { return TFile::CreateDirectory(folder.fresh); })},
      {{"KEST::TFile::CreatePath(KEST::TBstr const&)"},
       "true d d/f x new new/y",
       {"false d d/f x"},
       Changes([](Folder& folder) { return TFile::CreatePath(folder.tree.Spec("new/y")); })},
      {{"KEST::TFile::RemoveDirectory(KEST::TBstr const&)"},
       "true x",
       {"false d x"},
       [](Attempts& attempts) {
         Folder folder;
         attempts(
             [&] {
               folder.Restore();
               std::filesystem::remove(folder.tree.Path("d/f"));
             },
             [&] {
               const bool done = TFile::RemoveDirectory(folder.d);
               return Said(done) + folder.Entries();
             });
       }},
      {{"KEST::TFile::Remove(KEST::TBstr const&)"},
       "true d d/f",
       {"false d d/f x"},
       Changes([](Folder& folder) { return TFile::Remove(folder.x); })},
      {{"KEST::TFile::Rename(KEST::TBstr const&, KEST::TBstr const&)"},
       "true d d/f new",
       {"false d d/f x"},
       Changes([](Folder& folder) { return TFile::Rename(folder.x, folder.fresh); })},
      {{"KEST::TFile::SetLastWriteTime(KEST::TBstr const&, long)"},
       "true d d/f x",
       {"false d d/f x"},
       Changes([](Folder& folder) { return TFile::SetLastWriteTime(folder.x, 5); })},

      {{"KEST::TFileFinder::Find(unsigned short const*, bool)"},
       "true d",
       {"false "},
       [](Attempts& attempts) {
         const Folder folder;
         TFileFinder finder;
         attempts([&] { finder.Close(); },
                  [&] {
                    const bool found = finder.Find(folder.all.GetString(), true);
                    return Said(found, finder.name);
                  });
       }},
      // Neither the folder nor the entry that comes next is passed over.
      {{"KEST::TFileFinder::FindNext(bool)"},
       "true dd",
       {"false same"},
       [](Attempts& attempts) {
         const Folder folder;
         for (const char* path : {"d/dd", "da/dd"}) folder.tree.MakeFolder(path);
         TFileFinder finder;
         TBstr before;
         attempts(
             [&] {
               finder.Close();
               finder.Find(folder.all.GetString(), true);
               before = finder.name;
             },
             [&] {
               const bool found = finder.FindNext(false);
               return Said(found, finder.name == before ? "same" : Said(finder.name).c_str());
             });
       }},
      {{"KEST::TFileFinder::FindNext(bool)"},
       "true other",
       {"false same"},
       [](Attempts& attempts) {
         const Folder folder;
         folder.tree.MakeFolder("da");
         TFileFinder finder;
         TBstr before;
         attempts(
             [&] {
               finder.Close();
               finder.Find(folder.all.GetString(), false);
               before = finder.name;
             },
             [&] {
               const bool found = finder.FindNext(false);
               return Said(found, finder.name == before ? "same" : "other");
             });
       }},
      {{"KEST::TFileFinder::GetFileSpec() const"},
       "found",
       {""},
       [](Attempts& attempts) {
         const Folder folder;
         TFileFinder finder;
         finder.Find(folder.all.GetString(), false);
         attempts([&] {
           const TBstr spec = finder.GetFileSpec();
           return spec == folder.d ? "found" : Said(spec);
         });
       }},
      {{"KEST::TFileFinder::FileFinderFind(KEST::TBstr const&, KEST::TFileInfo&)"},
       "there d",
       {"null "},
       [](Attempts& attempts) {
         Folder folder;
         TFileInfo info;
         attempts(
             [&] {
               folder.Restore();
               info.name.Empty();
             },
             [&] {
               void* const handle = TFileFinder::FileFinderFind(folder.all, info);
               TFileFinder::FileFinderClose(handle);
               return Said(handle, info.name);
             });
       }},
      {{"KEST::TFileFinder::FileFinderFindNext(void*, KEST::TFileInfo&)"},
       "true other",
       {"false same"},
       [](Attempts& attempts) {
         const Folder folder;
         folder.tree.MakeFolder("da");
         TFileInfo info;
         TBstr before;
         void* handle = nullptr;
         attempts(
             [&] {
               TFileFinder::FileFinderClose(handle);
               handle = TFileFinder::FileFinderFind(folder.all, info);
               before = info.name;
             },
             [&] {
               const bool found = TFileFinder::FileFinderFindNext(handle, info);
               return Said(found, info.name == before ? "same" : "other");
             });
         TFileFinder::FileFinderClose(handle);
       }},
      {{"KEST::TFileFinder::Close()"},
       " false",
       {},
       [](Attempts& attempts) {
         const Folder folder;
         TFileFinder finder;
         attempts([&] { finder.Find(folder.all.GetString(), true); },
                  [&] {
                    finder.Close();
                    const bool more = finder.FindNext(false);
                    return Said(finder.name, more);
                  });
       }},
      {{"KEST::TFileFinder::~TFileFinder()"},
       "closed",
       {},
       [](Attempts& attempts) {
         const Folder folder;
         std::optional<TFileFinder> finder;
         attempts([&] { finder.emplace().Find(folder.all.GetString(), true); },
                  [&] {
                    finder.reset();
                    return Said("closed");
                  });
       }},

      // The third request is the module's own, which starts without the memory as well.
      {{"KEST::TLibrary::Load(KEST::TBstr const&)"},
       "true true",
       {"false false", "false false", "true true"},
       [](Attempts& attempts) {
         TBstr spec;
         TLibrary library;
         attempts(
             [&] {
               library.Free();
               spec = LibraryPath();
             },
             [&] {
               const bool loaded = library.Load(spec);
               return Said(loaded, library.IsLoaded());
             });
       }},
      {{"KEST::TLibrary::LibraryLoad(KEST::TBstr const&)"},
       "there",
       {"null", "there"},
       [](Attempts& attempts) {
         TBstr spec;
         attempts([&] { spec = LibraryPath(); },
                  [&] {
                    void* const handle = TLibrary::LibraryLoad(spec);
                    if (handle != nullptr) TLibrary::LibraryFree(handle);
                    return Said(handle);
                  });
       }},
      {{"KEST::TLibrary::GetProcAddress(KEST::TBstr const&) const",
        "KEST::TLibrary::LibraryGetProcAddress(void*, KEST::TBstr const&)"},
       "there",
       {"null"},
       [](Attempts& attempts) {
         TLibrary library;
         library.Load(LibraryPath());
         TBstr name;
         attempts([&] { name = "KestGetVersion"; },
                  [&] { return Said(library.GetProcAddress(name)); });
       }},
      {{"KEST::TLibrary::Free()"},
       "true false ",
       {},
       [](Attempts& attempts) {
         TLibrary library;
         attempts([&] { library.Load(LibraryPath()); },
                  [&] {
                    const bool freed = library.Free();
                    return Said(freed, library.IsLoaded(), library.GetFileSpec());
                  });
       }},
      {{"KEST::TLibrary::~TLibrary()"},
       "freed",
       {},
       [](Attempts& attempts) {
         std::optional<TLibrary> library;
         attempts([&] { library.emplace().Load(LibraryPath()); },
                  [&] {
                    library.reset();
                    return Said("freed");
                  });
       }},
  };
}

}  // namespace kest_test
