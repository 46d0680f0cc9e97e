// Wildcard comparison of plain text, without the file system.

#include "kest/file.h"

namespace KEST {

int TFileFinder::ComparePattern(const unsigned short* name, const unsigned short* pattern) {
  if (name == nullptr) name = KEST_TEXT("");
  if (pattern == nullptr) pattern = KEST_TEXT("");
  for (;;) {
    if (*pattern == '*') {
      // Only as far as the first occurrence of what follows, on purpose: there is no way back.
      ++pattern;
      while (*name != 0 && *name != *pattern) ++name;
      continue;
    }
    const bool same = *name == *pattern || *pattern == '?';
    if (!same || *name == 0) return *name - *pattern;
    ++name;
    ++pattern;
  }
}

}  // namespace KEST
