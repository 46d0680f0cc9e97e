// What the census knows of one name in the tree.

#ifndef CENSUS_ENTRY_H
#define CENSUS_ENTRY_H

#include "kest/string.h"

namespace census {

enum EKind { kRegular, kDirectory, kLink, kFifo, kSocket, kDevice, kUnknown };

// One word for each kind, as skipped.txt prints it.
const char* KindName(EKind kind);

// Made by the walker, completed by a worker, kept by the inventory: always in one hand at a time,
// so that no field needs a lock.
struct Entry {
  KEST::TBstr path;  // from the directory on, one unit a byte: "./a/b"; "." is the directory itself
  EKind kind = kUnknown;
  long long size = 0;  // bytes
  long modified = 0;   // seconds since 1970

  bool digested = false;
  unsigned char md4[16];
  unsigned char md5[16];
  unsigned char sha1[20];

  KEST::TBstr reason;    // why it is in skipped.txt; empty when it is not
  bool problem = false;  // it should have been read, and was not

  long long announced = 0;  // bytes that the progress has already heard of
  double share = 0;         // a directory's part of the whole tree, as the walk estimates it

  void Skip(const KEST::TBstr& why) { reason = why; }
  void Fail(const KEST::TBstr& why) {
    reason = why;
    problem = true;
  }
};

// The path by which the system finds an entry below the folder root.
KEST::TBstr SpecOf(const KEST::TBstr& root, const KEST::TBstr& path);

}  // namespace census

#endif  // CENSUS_ENTRY_H
