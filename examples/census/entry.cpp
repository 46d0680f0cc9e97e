#include "entry.h"

#include "kest/file.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

const char* KindName(EKind kind) {
  switch (kind) {
    case kRegular:
      return "file";
    case kDirectory:
      return "directory";
    case kLink:
      return "link";
    case kFifo:
      return "fifo";
    case kSocket:
      return "socket";
    case kDevice:
      return "device";
    case kUnknown:
      break;
  }
  return "unknown";
}

TBstr SpecOf(const TBstr& root, const TBstr& path) {
  if (path.GetLength() == 1) return root;  // the "." that every path begins with
  return TFile::RemoveTrailingSeparator(root) + path.Mid(1);
}

}  // namespace census
