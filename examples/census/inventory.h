// Everything that the census has found, kept by the main thread alone.

#ifndef CENSUS_INVENTORY_H
#define CENSUS_INVENTORY_H

#include "entry.h"
#include "kest/collections.h"
#include "kest/string.h"

namespace census {

struct STotals {
  int files = 0;        // regular files, read or not
  int directories = 0;  // without the directory of the census itself
  int links = 0;
  int special = 0;  // fifos, sockets, devices
  int digested = 0;
  int problems = 0;     // what should have been read, and was not
  long long bytes = 0;  // the size of all files
};

struct SExtension {
  KEST::TBstr name;  // ".gz", or empty
  int files = 0;
  long long bytes = 0;
};

class Inventory {
 public:
  Inventory();
  ~Inventory();
  Inventory(const Inventory&) = delete;
  Inventory& operator=(const Inventory&) = delete;

  // Takes an entry over. False without memory: the inventory is then incomplete.
  bool Add(Entry* entry);
  // Ends the adding: sorts by path, so that every run writes the same files, and counts the
  // extensions. False without memory.
  bool Complete();

  const STotals& GetTotals() const { return totals; }
  int GetCount() const { return sorted.GetSize(); }
  const Entry& GetAt(int index) const { return *static_cast<Entry*>(sorted[index]); }

  // By name.
  int GetExtensionCount() const { return extensions.GetSize(); }
  const SExtension& GetExtensionAt(int index) const {
    return *static_cast<SExtension*>(extensions[index]);
  }

 private:
  void Count(const Entry& entry);
  bool CountExtension(const Entry& entry);

  KEST::TPtrList entries;  // as they arrive
  KEST::TPtrArray sorted;
  KEST::TPtrFromBstrMap extensionsByName;
  KEST::TPtrArray extensions;
  STotals totals;
};

}  // namespace census

#endif  // CENSUS_INVENTORY_H
