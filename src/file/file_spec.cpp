// Taking file specifications apart, putting them together and cleaning them.
//
// Each result is built in one block, so that without memory it is empty, never a different path.

#include <stdlib.h>
#include <string.h>

#include <algorithm>

#include "kest/file.h"

namespace {

using KEST::TBstr;
using KEST::TFile;

const unsigned short kTempDirectory[] = {'/', 't', 'm', 'p', '/', 0};

int LengthWithoutTrailingSeparators(const TBstr& spec) {
  const unsigned short* text = spec.GetString();
  int length = spec.GetLength();
  while (length > 0 && text[length - 1] == TFile::kDirectorySeparator) --length;
  return length;
}

// Folds "." and ".." segments in place, from left to right. The units before kept are final and
// those from next on are still to be looked at; kept is also where the plain method, which deletes
// from one string, would continue its search.
class Folder {
 public:
  Folder(unsigned short* units, int count) : text(units), length(count) {}

  // The folded length: 0 when a ".." climbs above the start.
  int Fold() {
    while (CopyToNextDot()) {
      if (!BeginsSegment()) {
        Copy(1);
      } else if (EndsSegment(1)) {
        Skip(2);
      } else if (text[next + 1] != '.' || !EndsSegment(2)) {
        Copy(1);
      } else if (kept < 2) {
        return 0;
      } else {
        DropParent();
      }
    }
    return kept;
  }

 private:
  // False when there is none: the rest is then copied. A zero unit ends the search, as it does in
  // TBstr::Find.
  bool CopyToNextDot() {
    int end = next;
    while (end < length && text[end] != 0 && text[end] != '.') ++end;
    const bool found = end < length && text[end] == '.';
    Copy((found ? end : length) - next);
    return found;
  }

  bool BeginsSegment() const { return kept == 0 || text[kept - 1] == '/'; }

  bool EndsSegment(int dots) const { return next + dots >= length || text[next + dots] == '/'; }

  void Skip(int count) { next += std::min(count, length - next); }

  void Copy(int count) {
    count = std::min(count, length - next);
    memmove(text + kept, text + next, static_cast<size_t>(count) * sizeof(*text));
    kept += count;
    next += count;
  }

  // Removes the segment before the ".." with all that belongs to both. As many units of the rest as
  // that segment had are passed over unseen, on purpose: "/a/b/../../c" gives "/a/../c".
  void DropParent() {
    const int resume = kept;
    do {
      --kept;
    } while (kept > 0 && text[kept - 1] != '/');
    Skip(3);
    Copy(resume - kept);
  }

  unsigned short* text;
  int length;
  int kept = 0;
  int next = 0;
};

}  // namespace

namespace KEST {

const unsigned short TFile::kDirectorySeparator = '/';
const unsigned short TFile::kUnsafeConversions[] = {0x2044, 0x2215, 0xFF0F, 0xFF0E, 0};

TBstr TFile::AddTrailingSeparator(const TBstr& spec) { return AppendFileNameToSpec(spec, TBstr()); }

TBstr TFile::RemoveTrailingSeparator(const TBstr& spec) {
  return spec.Left(LengthWithoutTrailingSeparators(spec));
}

TBstr TFile::AppendFileNameToSpec(const TBstr& dirSpec, const TBstr& name) {
  const int dirLength = dirSpec.GetLength();
  const int nameLength = name.GetLength();
  const bool separate = dirLength > 0 && dirSpec.GetAt(dirLength - 1) != kDirectorySeparator;
  const unsigned int length = static_cast<unsigned int>(dirLength) + (separate ? 1u : 0u) +
                              static_cast<unsigned int>(nameLength);
  TBstr joined;
  unsigned short* end = KestAllocStringLen(nullptr, length);
  joined.Attach(end);
  if (end == nullptr) return joined;
  end = std::copy_n(dirSpec.GetString(), dirLength, end);
  if (separate) *end++ = kDirectorySeparator;
  std::copy_n(name.GetString(), nameLength, end);
  return joined;
}

TBstr TFile::DirSpecFromFullSpec(const TBstr& spec) {
  return spec.Left(spec.ReverseFind(kDirectorySeparator) + 1);
}

TBstr TFile::FileNameFromFullSpec(const TBstr& spec) {
  return spec.Mid(spec.ReverseFind(kDirectorySeparator) + 1);
}

TBstr TFile::CanonicalizeSpec(const TBstr& spec) {
  TBstr folded(spec);
  if (folded.IsEmpty()) return folded;
  folded.AdjustBuffer(Folder(*folded.GetRawBstrPtr(), folded.GetLength()).Fold(), true);
  return folded;
}

TBstr TFile::MakeValidSpec(const TBstr& spec, bool) { return spec; }

bool TFile::SafeToConvert(const TBstr& spec) { return spec.FindOneOf(kUnsafeConversions) < 0; }

TBstr TFile::GetTempDirectory() { return TBstr(kTempDirectory); }

TBstr TFile::CreateTempFileSpec() {
  TBstr spec;
  spec.Format(KEST_TEXT("%skest%04x.tmp"), kTempDirectory, rand() & 0xFFFF);
  return spec;
}

}  // namespace KEST
