// Output formats that are modules.

#ifndef CENSUS_FORMATS_H
#define CENSUS_FORMATS_H

#include "kest/string.h"
#include "manifests.h"
#include "output.h"

namespace census {

// Writes the file of each module that lies in the folder, by name. A module that cannot be loaded,
// does not start, is no format or gives up is noted and skipped. False when a file cannot be
// written.
bool WriteFormats(OutputFolder& folder, const KEST::TBstr& modules, SResult* result);

}  // namespace census

#endif  // CENSUS_FORMATS_H
