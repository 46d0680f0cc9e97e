// The Internet addresses that the machine knows by heart.

#ifndef CENSUS_ADDRESSES_H
#define CENSUS_ADDRESSES_H

#include "kest/string.h"
#include "notes.h"
#include "output.h"

namespace census {

// Of /etc/hosts and /etc/resolv.conf below system: file, address, number and address again, a line
// for each that is an IPv4 address in full. Returns the lines.
KEST::TBstr AddressLines(const KEST::TBstr& system, Notes& notes);

}  // namespace census

#endif  // CENSUS_ADDRESSES_H
