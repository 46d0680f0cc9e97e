// POSIX side of TFileFinder: a handle is a search record, never null except for FileFinderClose.

#include "kest/file.h"

#include <glob.h>
#include <string.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

#include "frame/object.h"

namespace {

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

// Links are described themselves, not what they point to. The 64-bit call also reports entries
// whose size or inode number does not fit 32 bits.
bool Describe(const char* path, KEST::TFileInfo& info) {
  struct stat64 status;
  if (lstat64(path, &status) != 0) return false;
  KEST::TBstr name(NameOf(path));
  if (name.IsEmpty() && *NameOf(path) != 0) return false;
  info.Init(KEST::TBstr(), S_ISDIR(status.st_mode), status.st_size, status.st_ctime,
            status.st_mtime, status.st_atime);
  info.name = std::move(name);
  return true;
}

}  // namespace

namespace KEST {

void* TFileFinder::FileFinderFind(const TBstr& spec, TFileInfo& info) {
  if (HasTooManyParts(spec.GetMultibyteString())) return nullptr;
  SSearch* search = CreateObject<SSearch>();
  if (search == nullptr) return nullptr;
  // With "/" glob finds nothing; GLOB_NOCHECK makes it report the root itself.
  const int flags = spec == KEST_TEXT("/") ? GLOB_NOSORT | GLOB_NOCHECK : GLOB_NOSORT;
  const int result = glob(spec.GetMultibyteString(), flags, nullptr, &search->paths);
  if (result == 0 && FileFinderFindNext(search, info)) return search;
  FileFinderClose(search);  // a search that failed may hold paths all the same
  return nullptr;
}

bool TFileFinder::FileFinderFindNext(void* handle, TFileInfo& info) {
  SSearch* search = static_cast<SSearch*>(handle);
  while (search->next < search->paths.gl_pathc) {
    if (Describe(search->paths.gl_pathv[search->next++], info)) return true;
  }
  return false;
}

void TFileFinder::FileFinderClose(void* handle) {
  if (handle == nullptr) return;
  SSearch* search = static_cast<SSearch*>(handle);
  globfree(&search->paths);
  DestroyObject(search);
}

}  // namespace KEST
