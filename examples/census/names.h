// File names in the forms that the census needs. A name holds one unit for each byte on disk, and
// may hold any byte but "/" and 0.

#ifndef CENSUS_NAMES_H
#define CENSUS_NAMES_H

#include "kest/string.h"

namespace census {

// The pattern that matches exactly this spec.
KEST::TBstr GlobLiteral(const KEST::TBstr& spec);

// For a column of a table: \\, \n, \r and \t stand for a backslash, a line feed, a carriage return
// and a TAB.
KEST::TBstr EscapeForTable(const KEST::TBstr& name);

// For a line of MD5SUMS and its like: a TAB stays, and *escaped tells whether anything changed,
// because such lines begin with a backslash.
KEST::TBstr EscapeForSums(const KEST::TBstr& name, bool* escaped);

// For people: read as UTF-8 where it is UTF-8, unit by unit where it is not, without controls.
KEST::TBstr Readable(const KEST::TBstr& name);

// The UTF-8 form of a text, one unit a byte.
KEST::TBstr ToUtf8(const KEST::TBstr& text);

// ".gz" of "./a/b.tar.gz"; empty when the last dot begins or ends the file's name, or is missing.
KEST::TBstr ExtensionOf(const KEST::TBstr& path);

}  // namespace census

#endif  // CENSUS_NAMES_H
