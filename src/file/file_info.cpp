// The record that describes one directory entry.

#include "kest/file.h"

#include <utility>

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TFileInfo, 32, 56);
KEST_FIELD_AT(TFileInfo, name, 0, 0);
KEST_FIELD_AT(TFileInfo, isDirectory, 8, 16);
KEST_FIELD_AT(TFileInfo, size, 12, 24);
KEST_FIELD_AT(TFileInfo, creationTime, 20, 32);
KEST_FIELD_AT(TFileInfo, lastWriteTime, 24, 40);
KEST_FIELD_AT(TFileInfo, lastAccessTime, 28, 48);

TFileInfo::TFileInfo()
    : isDirectory(false), size(0), creationTime(0), lastWriteTime(0), lastAccessTime(0) {}

void TFileInfo::Init(const TBstr& entryName, bool directory, long long bytes, long created,
                     long written, long accessed) {
  name = entryName;
  isDirectory = directory;
  size = bytes;
  creationTime = created;
  lastWriteTime = written;
  lastAccessTime = accessed;
}

bool TFile::GetInfo(const TBstr& spec, TFileInfo& info) {
  TFileFinder finder;
  if (!finder.Find(spec.GetString(), false)) return false;
  info = std::move(static_cast<TFileInfo&>(finder));
  return true;
}

}  // namespace KEST
