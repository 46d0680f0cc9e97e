// What the parts of a census have to say of inputs that are missing or not as they should be. None
// of it is a failure: a machine may well be without.

#ifndef CENSUS_NOTES_H
#define CENSUS_NOTES_H

#include "kest/collections.h"
#include "kest/string.h"

namespace census {

struct SNote {
  KEST::TBstr part;  // "certificates"
  KEST::TBstr subject;
  KEST::TBstr reason;
};

class Notes {
 public:
  Notes() = default;
  ~Notes();
  Notes(const Notes&) = delete;
  Notes& operator=(const Notes&) = delete;

  void Add(const char* part, const KEST::TBstr& subject, const KEST::TBstr& reason);

  // In the order of adding.
  int GetCount() const { return notes.GetSize(); }
  const SNote& GetAt(int index) const { return *static_cast<SNote*>(notes[index]); }

 private:
  KEST::TPtrArray notes;
};

}  // namespace census

#endif  // CENSUS_NOTES_H
