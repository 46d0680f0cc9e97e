// The calls of kest/file.h; takes the path of the module that is made of module.cpp.

#include "kest/file.h"

#include <string.h>
#include <unistd.h>

#include "check.h"

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;
using KEST::TLibrary;

static void Specs() {
  //! [specs]
  const TBstr spec = TFile::AppendFileNameToSpec(KEST_TEXT("/home/ann"), KEST_TEXT("notes.txt"));
  Check(spec == KEST_TEXT("/home/ann/notes.txt"));
  Check(TFile::DirSpecFromFullSpec(spec) == KEST_TEXT("/home/ann/"));
  Check(TFile::FileNameFromFullSpec(spec) == KEST_TEXT("notes.txt"));
  Check(TFile::AddTrailingSeparator(KEST_TEXT("/home")) == KEST_TEXT("/home/"));
  Check(TFile::RemoveTrailingSeparator(KEST_TEXT("/home/")) == KEST_TEXT("/home"));
  Check(TFile::CanonicalizeSpec(KEST_TEXT("/home/./ann/../bob")) == KEST_TEXT("/home/bob"));
  Check(TFile::MakeValidSpec(spec, false) == spec);
  Check(TFile::SafeToConvert(spec));
  //! [specs]
}

static void Files(const TBstr& folder) {
  //! [file-write]
  const TBstr spec = TFile::AppendFileNameToSpec(folder, KEST_TEXT("notes.txt"));
  TFile file;
  Check(file.Open(spec, TFile::kOpenReadWrite, true));  // made, or emptied
  Check(file.Write("Hello, world", 12) == 12);
  Check(file.Flush());       // before reading, and before SetLength
  Check(file.SetLength(5));  // cut off
  Check(file.GetLength() == 5 && file.IsOpen() && file.GetFileSpec() == spec);
  Check(file.Close());  // false when the bytes could not be written
  //! [file-write]

  //! [file-read]
  TFile input;
  Check(input.Open(spec, 0, false));  // it has to exist
  char bytes[8];
  Check(input.Read(bytes, 8) == 5);  // fewer than asked for: the end
  Check(input.SetPosition(1, 0) && input.GetPosition() == 1);
  Check(input.Read(bytes, 2) == 2 && memcmp(bytes, "el", 2) == 0);
  //! [file-read]

  //! [file-info]
  TFileInfo info;
  Check(TFile::SetLastWriteTime(spec, 1000000000));
  Check(TFile::GetInfo(spec, info));
  Check(info.size == 5 && !info.isDirectory && info.lastWriteTime == 1000000000);
  Check(info.name == KEST_TEXT("notes.txt"));
  TFileInfo none;
  none.Init(KEST_TEXT("none"), false, 0, 0, 0, 0);
  //! [file-info]
}

static void Directories(const TBstr& folder) {
  //! [directories]
  const TBstr deep = TFile::AppendFileNameToSpec(folder, KEST_TEXT("a/b"));
  Check(TFile::CreatePath(deep));  // "a" as well
  const TBstr inner = TFile::AppendFileNameToSpec(deep, KEST_TEXT("c"));
  Check(TFile::CreateDirectory(inner));
  Check(TFile::RemoveDirectory(inner));
  const TBstr moved = TFile::AppendFileNameToSpec(folder, KEST_TEXT("a/d"));
  Check(TFile::Rename(deep, moved));
  Check(TFile::Remove(moved));  // a file, a link or an empty directory
  //! [directories]
}

static void Finding(const TBstr& folder) {
  //! [find]
  TFileFinder finder;
  const TBstr pattern = TFile::AppendFileNameToSpec(folder, KEST_TEXT("*"));
  int files = 0, directories = 0;
  for (bool more = finder.Find(pattern.GetString(), true); more; more = finder.FindNext(false)) {
    ++(finder.isDirectory ? directories : files);
    Check(!finder.GetFileSpec().IsEmpty());
  }
  finder.Close();
  Check(files == 1 && directories == 1);
  Check(TFileFinder::ComparePattern(KEST_TEXT("notes.txt"), KEST_TEXT("*.txt")) == 0);
  //! [find]
}

static void Temporary() {
  //! [temporary]
  // The name can be guessed and may be taken: not for secrets.
  const TBstr spec = TFile::CreateTempFileSpec();
  Check(TFile::DirSpecFromFullSpec(spec) == TFile::GetTempDirectory());
  //! [temporary]
}

static void Modules(const char* path) {
  //! [module-load]
  TLibrary module;
  Check(module.Load(path));  // calls its SharedLibInit
  Check(module.IsLoaded() && module.GetFileSpec() == TBstr(path));
  void* address = module.GetProcAddress("SharedLibInit");
  Check(address != nullptr);
  Check(module.Free());  // calls its SharedLibTerm
  //! [module-load]
}

int main(int argc, char** argv) {
  if (argc != 2 || !KestInitialize(nullptr)) return 1;
  {
    char folder[] = "calls-XXXXXX";
    Check(mkdtemp(folder) != nullptr);
    Specs();
    Files(folder);
    Directories(folder);
    Finding(folder);
    Temporary();
    Modules(argv[1]);
    Check(TFile::Remove(TFile::AppendFileNameToSpec(folder, KEST_TEXT("notes.txt"))));
    Check(TFile::Remove(TFile::AppendFileNameToSpec(folder, KEST_TEXT("a"))));
    Check(TFile::RemoveDirectory(folder));
  }
  KestUninitialize();
  puts("as shown");
  return 0;
}
