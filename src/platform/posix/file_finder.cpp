// POSIX side of TFileFinder: a handle is a search record, never null except for FileFinderClose.

#include "file/search.h"

#include <glob.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "frame/object.h"

namespace {

using KEST::TBstr;

// The paths that glob has found. next is the index of the first one not reported yet.
struct SSearch {
  glob_t paths;
  size_t next;
};

// glob calls itself for every part from the first wildcard on, with some 4 KB of stack each. More
// than this many parts could be a hostile tree's way to end the process.
constexpr int kMaxParts = 256;

bool HasTooManyParts(const char* pattern) {
  const char* wildcard = strpbrk(pattern, "*?[");
  if (wildcard == nullptr) return false;
  return std::count(wildcard, wildcard + strlen(wildcard), '/') > kMaxParts;
}

const char* NameOf(const char* path) {
  const char* separator = strrchr(path, '/');
  return separator != nullptr ? separator + 1 : path;
}

// In one block, without a copy in between: every entry found has a name to widen. Without memory it
// is empty.
TBstr Widen(const char* text) {
  const int length = static_cast<int>(strlen(text));
  TBstr wide;
  unsigned short* const units = KestAllocStringLen(nullptr, static_cast<unsigned int>(length));
  if (units != nullptr) KestMultibyteToUnicode(text, length, units, length);
  wide.Attach(units);
  return wide;
}

// kNone when there is no such entry any more. Links are described themselves, not what they point
// to. The 64-bit call also reports entries whose size or inode number does not fit 32 bits.
KEST::EFound Describe(const char* path, KEST::TFileInfo& info) {
  struct stat64 status;
  if (lstat64(path, &status) != 0) return KEST::EFound::kNone;
  const char* const narrow = NameOf(path);
  TBstr name = Widen(narrow);
  if (name.IsEmpty() && *narrow != 0) return KEST::EFound::kNoMemory;
  info.name = std::move(name);
  info.isDirectory = S_ISDIR(status.st_mode);
  info.size = status.st_size;
  info.creationTime = status.st_ctime;
  info.lastWriteTime = status.st_mtime;
  info.lastAccessTime = status.st_atime;
  return KEST::EFound::kEntry;
}

}  // namespace

namespace KEST {

EFound InternalFindFirst(const TBstr& spec, TFileInfo& info, void*& handle) {
  handle = nullptr;
  // Taken once: a copy that fails now may succeed later, and would then go unchecked.
  const char* const path = spec.GetMultibyteString();
  if (*path == 0 && spec.GetAt(0) != 0) return EFound::kNoMemory;
  if (HasTooManyParts(path)) return EFound::kNone;
  SSearch* search = CreateObject<SSearch>();
  if (search == nullptr) return EFound::kNoMemory;
  // With "/" glob finds nothing; GLOB_NOCHECK makes it report the root itself.
  const int flags = spec == KEST_TEXT("/") ? GLOB_NOSORT | GLOB_NOCHECK : GLOB_NOSORT;
  const int result = glob(path, flags, nullptr, &search->paths);
  EFound found = result == GLOB_NOSPACE ? EFound::kNoMemory : EFound::kNone;
  if (result == 0) found = InternalFindNext(search, info);
  if (found == EFound::kEntry) {
    handle = search;
  } else {
    TFileFinder::FileFinderClose(search);  // a failed search may hold paths all the same
  }
  return found;
}

EFound InternalFindNext(void* handle, TFileInfo& info) {
  SSearch* search = static_cast<SSearch*>(handle);
  for (; search->next < search->paths.gl_pathc; ++search->next) {
    const EFound found = Describe(search->paths.gl_pathv[search->next], info);
    if (found == EFound::kEntry) ++search->next;
    if (found != EFound::kNone) return found;
  }
  return EFound::kNone;
}

void* TFileFinder::FileFinderFind(const TBstr& spec, TFileInfo& info) {
  void* handle;
  InternalFindFirst(spec, info, handle);
  return handle;
}

bool TFileFinder::FileFinderFindNext(void* handle, TFileInfo& info) {
  return InternalFindNext(handle, info) == EFound::kEntry;
}

void TFileFinder::FileFinderClose(void* handle) {
  if (handle == nullptr) return;
  SSearch* search = static_cast<SSearch*>(handle);
  globfree(&search->paths);
  DestroyObject(search);
}

}  // namespace KEST
