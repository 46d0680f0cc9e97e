// The files that a census writes, and how each comes from what was found.

#ifndef CENSUS_MANIFESTS_H
#define CENSUS_MANIFESTS_H

#include "certificates.h"
#include "duplicates.h"
#include "input.h"
#include "inventory.h"
#include "kest/string.h"
#include "notes.h"
#include "output.h"
#include "people.h"

namespace census {

// What a census has to say once the counting is over.
struct SResult {
  KEST::TBstr directory;  // without links, as the system names it
  KEST::TBstr pattern;    // empty for every name
  bool interrupted = false;
  Inventory inventory;
  Duplicates duplicates;

  bool sealed = true;
  KEST::TBstr system;   // the folder that stands for the machine's root; empty for the root itself
  KEST::TBstr formats;  // the folder of the modules
  Certificates certificates;
  People people;
  TextList addresses;  // rows, as are languages
  TextList languages;
  Notes notes;
};

// Reads what the census tells of the machine itself.
void ReadMachine(SResult* result);

// False when a file cannot be written. What is noted on the way goes to result.
bool WriteManifests(OutputFolder& folder, SResult* result);

}  // namespace census

#endif  // CENSUS_MANIFESTS_H
