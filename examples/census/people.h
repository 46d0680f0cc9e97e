// Who maintains the packages of the machine.

#ifndef CENSUS_PEOPLE_H
#define CENSUS_PEOPLE_H

#include "input.h"
#include "kest/collections.h"
#include "kest/string.h"
#include "notes.h"

namespace census {

struct SMaintainer {
  KEST::TBstr name;   // as the packages write it, with the address: bytes
  TextList packages;  // sorted, some perhaps for several architectures
};

class People {
 public:
  People();
  ~People();
  People(const People&) = delete;
  People& operator=(const People&) = delete;

  // Reads the package manager's list of the machine below system.
  void Read(const KEST::TBstr& system, Notes& notes);

  // By name.
  int GetCount() const { return sorted.GetSize(); }
  const SMaintainer& GetAt(int index) const { return *static_cast<SMaintainer*>(sorted[index]); }

 private:
  void Add(const KEST::TBstr& maintainer, const KEST::TBstr& package);
  void Sort();

  KEST::TPtrFromBstrMap maintainers;
  KEST::TPtrArray sorted;
};

}  // namespace census

#endif  // CENSUS_PEOPLE_H
