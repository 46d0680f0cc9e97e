// Files: a directory is made, a file is written in it, found, read back and removed.

#include <stdio.h>
#include <string.h>

#include "kest/file.h"
#include "kest/frame.h"

using KEST::TBstr;
using KEST::TFile;

// Through a second name, so that readers see the old content or the new, never a part.
static bool Save(const TBstr& spec, const char* text) {
  const TBstr draft = spec + KEST_TEXT(".new");
  const int length = static_cast<int>(strlen(text));
  TFile file;
  if (draft.IsEmpty() || !file.Open(draft, TFile::kOpenReadWrite, true)) return false;
  const bool written = file.Write(text, length) == length;
  return file.Close() && written && TFile::Rename(draft, spec);  // closing writes the rest
}

static bool Print(const TBstr& spec) {
  char text[64];
  TFile file;
  if (!file.Open(spec, 0, false)) return false;
  const int count = file.Read(text, sizeof(text));
  return count == file.GetLength() && printf("%.*s\n", count, text) >= 0;
}

static bool Use(const TBstr& directory) {
  const TBstr spec = TFile::AppendFileNameToSpec(directory, "greeting.txt");
  const TBstr pattern = TFile::AppendFileNameToSpec(directory, "*");
  if (spec.IsEmpty() || pattern.IsEmpty()) return false;  // no memory
  if (!Save(spec, "Hello") || !Save(spec, "Hello, world")) return false;

  KEST::TFileFinder finder;
  for (bool more = finder.Find(pattern.GetString(), true); more; more = finder.FindNext(false)) {
    printf("%s has %lld bytes:\n", finder.GetFileSpec().GetMultibyteString(), finder.size);
    if (!Print(finder.GetFileSpec())) return false;
  }
  return TFile::Remove(spec);
}

static bool Run() {
  const TBstr directory("example/notes");  // below the working directory
  const bool done = TFile::CreatePath(directory) && Use(directory);
  return TFile::RemoveDirectory(directory) && TFile::RemoveDirectory("example") && done;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
