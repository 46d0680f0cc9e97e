// Creating directories, one or a whole path.

#include "file/directory.h"

#include <string.h>

#include "frame/object.h"
#include "kest/file.h"

namespace {

using KEST::InternalCreateDirectory;

constexpr char kSeparator = '/';

size_t LengthWithoutTrailingSeparators(const char* path, size_t length) {
  while (length > 0 && path[length - 1] == kSeparator) --length;
  return length;
}

// Length of the directory that the first length characters of path lie in, without the separators
// behind it; 0 when there is none but the root or the current directory.
size_t ParentLength(const char* path, size_t length) {
  while (length > 0 && path[length - 1] != kSeparator) --length;
  return LengthWithoutTrailingSeparators(path, length);
}

// Climbs until a directory can be created or exists, then creates the others on the way back. Each
// level is marked by a terminator in place of the separator behind it: there is one system call a
// level and direction, no copy of the path and no recursion, however many parts it has.
bool CreateAll(char* path) {
  const size_t whole = LengthWithoutTrailingSeparators(path, strlen(path));
  size_t length = whole;
  path[length] = 0;
  while (!InternalCreateDirectory(path)) {
    length = ParentLength(path, length);
    if (length == 0) return false;
    path[length] = 0;
  }
  while (length < whole) {
    path[length] = kSeparator;
    length += strlen(path + length);
    if (!InternalCreateDirectory(path)) return false;
  }
  return true;
}

}  // namespace

namespace KEST {

bool TFile::CreateDirectory(const TBstr& spec) {
  return InternalCreateDirectory(RemoveTrailingSeparator(spec).GetMultibyteString());
}

bool TFile::CreatePath(const TBstr& spec) {
  const int size = spec.GetLength() + 1;
  char* path = static_cast<char*>(AllocateArray(static_cast<unsigned int>(size), sizeof(char)));
  if (path == nullptr) return false;
  KestUnicodeToMultibyte(spec.GetString(), size, path, size);
  const bool created = CreateAll(path);
  KestMemFree(path);
  return created;
}

}  // namespace KEST
