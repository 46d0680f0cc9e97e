#include "formats.h"

#include "format.h"
#include "input.h"
#include "kest/file.h"
#include "names.h"

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TLibrary;

namespace census {

namespace {

const char* const kPart = "formats";
constexpr int kSampleSize = 100;  // files of the tree that a format hears of, or just above
constexpr long long kLargest = 16 * 1024 * 1024;  // bytes of one of them

// What a format sees of the census: the results so far, and files from all over the tree.
class Host {
 public:
  Host(const OutputFolder& ownFolder, const SResult& result, OutputFile& ownOut)
      : folder(ownFolder), root(result.directory), out(ownOut), resultCount(folder.GetCount() - 1) {
    const Inventory& inventory = result.inventory;
    const int step = inventory.GetTotals().digested / kSampleSize + 1;
    for (int i = 0, digested = 0; i < inventory.GetCount(); ++i) {
      const Entry& entry = inventory.GetAt(i);
      if (!entry.digested || digested++ % step != 0 || entry.size > kLargest) continue;
      sample.Add(entry.path);
    }
  }

  SFormatHost GetView() { return {this, resultCount + sample.GetCount(), GetFile, Put}; }

 private:
  static bool GetFile(void* self, int index, SFormatFile* file) {
    return static_cast<Host*>(self)->Get(index, file);
  }
  static void Put(void* self, const char* text) { static_cast<Host*>(self)->out.Put(text); }

  bool Get(int index, SFormatFile* file) {
    if (index < 0 || index >= resultCount + sample.GetCount()) return false;
    bool escaped;
    if (index < resultCount) {
      path = folder.GetNameAt(index);
      spec = folder.PartOf(path);
    } else {
      const TBstr& name = sample.GetAt(index - resultCount);
      spec = SpecOf(root, name);
      path = EscapeForSums(name, &escaped);
    }
    file->path = path.GetMultibyteString();
    file->spec = spec.GetMultibyteString();
    return true;
  }

  const OutputFolder& folder;
  TBstr root;
  OutputFile& out;
  int resultCount;  // without the file that is being written
  TextList sample;
  TBstr path;
  TBstr spec;
};

// The name has to be that of a file which lies in the folder itself and is not there yet.
bool IsGoodName(const OutputFolder& folder, const TBstr& name) {
  if (name.IsEmpty() || name.GetAt(0) == u'.' || name.Find(TFile::kDirectorySeparator) >= 0) {
    return false;
  }
  for (int i = 0; i < folder.GetCount(); ++i) {
    if (folder.GetNameAt(i) == name) return false;
  }
  return true;
}

bool WriteFormat(OutputFolder& folder, const TBstr& module, SResult* result) {
  TLibrary library;
  Notes& notes = result->notes;
  if (!library.Load(module)) {
    notes.Add(kPart, module, "no module, or not ready");
    return true;
  }
  const auto getName = reinterpret_cast<FormatNameProc>(library.GetProcAddress("CensusFormatName"));
  const auto write = reinterpret_cast<FormatWriteProc>(library.GetProcAddress("CensusFormatWrite"));
  const TBstr name = getName != nullptr ? TBstr(getName()) : TBstr();
  if (write == nullptr || !IsGoodName(folder, name)) {
    notes.Add(kPart, module, "no output format");
    return true;
  }
  OutputFile out;
  if (!folder.Begin(out, name, kBytes)) return false;
  Host host(folder, *result, out);
  const SFormatHost view = host.GetView();
  const bool written = write(&view);
  if (!folder.End(out)) return false;
  if (!written) {
    folder.Drop();
    notes.Add(kPart, module, "gave up");
  }
  return true;
}

}  // namespace

bool WriteFormats(OutputFolder& folder, const TBstr& modules, SResult* result) {
  TextList names;
  TFileFinder finder;
  const TBstr pattern = GlobLiteral(modules) + TBstr("/*.") + TBstr(TLibrary::kLibraryExtension);
  for (bool more = finder.Find(pattern.GetString(), false); more; more = finder.FindNext(true)) {
    names.Add(finder.name);
  }
  names.Sort();
  if (names.GetCount() == 0) result->notes.Add(kPart, modules, "no formats here");
  for (int i = 0; i < names.GetCount(); ++i) {
    const TBstr module = TFile::AppendFileNameToSpec(modules, names.GetAt(i));
    if (!WriteFormat(folder, module, result)) return false;
  }
  return true;
}

}  // namespace census
