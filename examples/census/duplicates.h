// Files with the same content.

#ifndef CENSUS_DUPLICATES_H
#define CENSUS_DUPLICATES_H

#include "inventory.h"
#include "kest/collections.h"

namespace census {

// Files with the same size, MD5 and SHA-1. One digest alone would not do: files with the same MD5
// and different content can be made at will.
class Duplicates {
 public:
  // The inventory must outlive it.
  Duplicates() : groups(0), spare(0) {}
  Duplicates(const Duplicates&) = delete;
  Duplicates& operator=(const Duplicates&) = delete;

  // False without memory.
  bool Find(const Inventory& inventory);

  int GetGroupCount() const { return groups; }
  // The bytes of all but one file of each group.
  long long GetSpareBytes() const { return spare; }

  // The files of all groups, group by group, in the order of their digests, then of their paths.
  int GetCount() const { return files.GetSize(); }
  const Entry& GetAt(int index) const { return *static_cast<Entry*>(files[index]); }
  // The index behind the group that begins at index first.
  int EndOfGroup(int first) const;

 private:
  bool CollectCandidates(const Inventory& inventory);
  void KeepGroups();

  KEST::TPtrArray files;
  int groups;
  long long spare;
};

}  // namespace census

#endif  // CENSUS_DUPLICATES_H
