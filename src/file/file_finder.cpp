// TFileFinder's object layer: a stack of searches, one for each directory level.

#include "kest/file.h"

#include <utility>

#include "frame/layout.h"

namespace {

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;
using KEST::TPtrArray;

// Starts a search on top of the stack. False leaves the stack and the entry as they were; for that
// the room is made first.
bool PushSearch(TPtrArray& handles, const TBstr& spec, TFileInfo& entry) {
  const int level = handles.Add(nullptr);
  if (level < 0) return false;
  void* handle = TFileFinder::FileFinderFind(spec, entry);
  if (handle == nullptr) {
    handles.RemoveAt(level);
    return false;
  }
  handles.SetAt(level, handle);
  return true;
}

void PopSearch(TPtrArray& handles) {
  const int top = handles.GetSize() - 1;
  TFileFinder::FileFinderClose(handles[top]);
  handles.RemoveAt(top);
}

// The length of directory without its last part and the separators behind that.
int ParentLength(const TBstr& directory) {
  const unsigned short* text = directory.GetString();
  int length = directory.GetLength();
  while (length > 0 && text[length - 1] == TFile::kDirectorySeparator) --length;
  while (length > 0 && text[length - 1] != TFile::kDirectorySeparator) --length;
  return length;
}

// False, with directory unchanged, when there is no memory.
bool MoveToParent(TBstr& directory) {
  const int length = ParentLength(directory);
  TBstr parent = directory.Left(length);
  if (parent.GetLength() != length) return false;
  directory = std::move(parent);
  return true;
}

}  // namespace

namespace KEST {

const unsigned short TFileFinder::kCurrentDirectory[] = {'.', 0};
const unsigned short TFileFinder::kParentDirectory[] = {'.', '.', 0};

TFileFinder::TFileFinder() : recursive(false) {
  KEST_SIZE_IS(TFileFinder, 68, 120);
  KEST_FIELD_AT(TFileFinder, handles, 32, 56);
  KEST_FIELD_AT(TFileFinder, directory, 48, 80);
  KEST_FIELD_AT(TFileFinder, pattern, 56, 96);
  KEST_FIELD_AT(TFileFinder, recursive, 64, 112);
}

TFileFinder::~TFileFinder() {
  if (!handles.IsEmpty()) Close();
}

bool TFileFinder::Find(const unsigned short* spec, bool descend) {
  const bool given = spec != nullptr && *spec != 0;
  const TBstr search(given ? spec : KEST_TEXT("*"));
  TBstr searchDirectory = TFile::DirSpecFromFullSpec(search);
  TBstr searchPattern = TFile::FileNameFromFullSpec(search);
  // Without memory a part is missing; the entries' specifications would then be wrong.
  const int length = searchDirectory.GetLength() + searchPattern.GetLength();
  if (search.IsEmpty() || length != search.GetLength()) return false;
  if (!PushSearch(handles, search, *this)) return false;
  directory = std::move(searchDirectory);
  pattern = std::move(searchPattern);
  recursive = descend;
  return true;
}

bool TFileFinder::FindNext(bool skipSubdirectory) {
  if (handles.IsEmpty()) return false;
  // An empty pattern would find the directory itself in the directory, for ever.
  if (recursive && !skipSubdirectory && !pattern.IsEmpty() && isDirectory &&
      name != kCurrentDirectory && name != kParentDirectory) {
    TBstr entered = GetFileSpec();
    if (!entered.IsEmpty() &&
        PushSearch(handles, TFile::AppendFileNameToSpec(entered, pattern), *this)) {
      directory = std::move(entered);
      return true;
    }
  }
  while (!FileFinderFindNext(handles[handles.GetSize() - 1], *this)) {
    if (handles.GetSize() == 1 || !MoveToParent(directory)) return false;
    PopSearch(handles);
  }
  return true;
}

void TFileFinder::Close() {
  while (!handles.IsEmpty()) PopSearch(handles);
  handles.RemoveAll();
  Init(TBstr(), false, 0, 0, 0, 0);
}

TBstr TFileFinder::GetFileSpec() const { return TFile::AppendFileNameToSpec(directory, name); }

}  // namespace KEST
