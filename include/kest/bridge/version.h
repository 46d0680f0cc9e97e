// Do the headers that a program was compiled with and the library that it runs with belong
// together?
//
//   if (!KEST::IsLibraryCompatible()) return 1;  // first of all, before KestInitialize
//
// The dynamic linker compares the major number alone, which is in the name libKest.so.1. A library
// that is older than the headers may lack what they declare, and the program then ends in the
// middle of its work.

#ifndef KEST_BRIDGE_VERSION_H
#define KEST_BRIDGE_VERSION_H

#include "kest/kest.h"

namespace KEST {

// True when a library of this version ("1.2.3", as KestGetVersion gives it) serves these headers:
// its major number is theirs and its minor number is not below theirs. The third number does not
// matter. False for null and for text that does not begin with two numbers and a dot between.
// Allocates nothing. Any thread, also before KestInitialize.
inline bool IsLibraryCompatible(const char* version = KestGetVersion()) {
  if (version == nullptr) return false;
  int numbers[2] = {0, 0};
  for (int i = 0; i < 2; ++i) {
    if (*version < '0' || *version > '9') return false;
    for (; *version >= '0' && *version <= '9'; ++version) {
      if (numbers[i] > 9999) return false;
      numbers[i] = 10 * numbers[i] + (*version - '0');
    }
    if (i == 0 && *version++ != '.') return false;
  }
  return numbers[0] == KEST_VERSION_MAJOR && numbers[1] >= KEST_VERSION_MINOR;
}

}  // namespace KEST

#endif  // KEST_BRIDGE_VERSION_H
