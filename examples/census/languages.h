// The languages of the machine.

#ifndef CENSUS_LANGUAGES_H
#define CENSUS_LANGUAGES_H

#include "input.h"
#include "kest/string.h"
#include "notes.h"

namespace census {

// The locales of the machine below system, by name: locale, the number of its language and the one
// of its encoding, -1 where there is none.
void ReadLanguages(const KEST::TBstr& system, TextList* rows, Notes& notes);

}  // namespace census

#endif  // CENSUS_LANGUAGES_H
