// TFileFinder's object layer: a stack of searches, one for each directory level.

#include "kest/file.h"

#include <utility>

#include "file/search.h"
#include "frame/layout.h"

namespace {

using KEST::EFound;
using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;
using KEST::TFileInfo;
using KEST::TPtrArray;

// Starts a search on top of the stack. Without an entry the stack is as it was; for that the room
// is made first.
EFound PushSearch(TPtrArray& handles, const TBstr& spec, TFileInfo& entry) {
  const int level = handles.Add(nullptr);
  if (level < 0) return EFound::kNoMemory;
  void* handle;
  const EFound found = KEST::InternalFindFirst(spec, entry, handle);
  if (found == EFound::kEntry) {
    handles.SetAt(level, handle);
  } else {
    handles.RemoveAt(level);
  }
  return found;
}

void PopSearch(TPtrArray& handles) {
  const int top = handles.GetSize() - 1;
  TFileFinder::FileFinderClose(handles[top]);
  handles.RemoveAt(top);
}

// Whether a directory of this name can be searched. As a pattern, a backslash at the end would
// escape the separator behind it and find the directory that the name lies in, for ever.
bool CanBeEntered(const TBstr& name) {
  const unsigned short* text = name.GetString();
  int start = name.GetLength();
  while (start > 0 && text[start - 1] == '\\') --start;
  return (name.GetLength() - start) % 2 == 0 && name != TFileFinder::kCurrentDirectory &&
         name != TFileFinder::kParentDirectory;
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
  if (PushSearch(handles, search, *this) != EFound::kEntry) return false;
  directory = std::move(searchDirectory);
  pattern = std::move(searchPattern);
  recursive = descend;
  return true;
}

bool TFileFinder::FindNext(bool skipSubdirectory) {
  if (handles.IsEmpty()) return false;
  // An empty pattern would find the directory itself in the directory, for ever.
  if (recursive && !skipSubdirectory && !pattern.IsEmpty() && isDirectory && CanBeEntered(name)) {
    TBstr entered = GetFileSpec();
    const TBstr search = TFile::AppendFileNameToSpec(entered, pattern);
    if (entered.IsEmpty() || search.IsEmpty()) return false;
    const EFound found = PushSearch(handles, search, *this);
    if (found == EFound::kNoMemory) return false;
    if (found == EFound::kEntry) {
      directory = std::move(entered);
      return true;
    }
  }
  for (;;) {
    const EFound found = InternalFindNext(handles[handles.GetSize() - 1], *this);
    if (found == EFound::kEntry) return true;
    // Without memory everything stays, so that a later call can go on from here.
    if (found == EFound::kNoMemory || handles.GetSize() == 1) return false;
    if (!MoveToParent(directory)) return false;
    PopSearch(handles);
  }
}

void TFileFinder::Close() {
  while (!handles.IsEmpty()) PopSearch(handles);
  handles.RemoveAll();
  Init(TBstr(), false, 0, 0, 0, 0);
}

TBstr TFileFinder::GetFileSpec() const { return TFile::AppendFileNameToSpec(directory, name); }

}  // namespace KEST
