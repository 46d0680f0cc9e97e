// POSIX side of the directory and entry functions. A specification that has no 8-bit form for want
// of memory arrives as an empty path, which every call here refuses.

#include "file/directory.h"

#include <errno.h>
#include <stdio.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>
#include <utime.h>

#include "kest/file.h"

namespace KEST {

bool InternalCreateDirectory(const char* path) { return mkdir(path, 0775) == 0 || errno == EEXIST; }

bool TFile::RemoveDirectory(const TBstr& spec) { return rmdir(spec.GetMultibyteString()) == 0; }

bool TFile::Remove(const TBstr& spec) { return remove(spec.GetMultibyteString()) == 0; }

bool TFile::Rename(const TBstr& from, const TBstr& to) {
  return rename(from.GetMultibyteString(), to.GetMultibyteString()) == 0;
}

bool TFile::SetLastWriteTime(const TBstr& spec, long modified) {
  utimbuf times = {};
  times.actime = time(nullptr);
  times.modtime = modified;
  return utime(spec.GetMultibyteString(), &times) == 0;
}

}  // namespace KEST
