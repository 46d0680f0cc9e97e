// The Internet addresses that the machine knows by heart.

#ifndef CENSUS_ADDRESSES_H
#define CENSUS_ADDRESSES_H

#include "input.h"
#include "kest/string.h"
#include "notes.h"

namespace census {

// Of /etc/hosts and /etc/resolv.conf below system: file, address, number and address again, a line
// for each that is an IPv4 address in full.
void ReadAddresses(const KEST::TBstr& system, TextList* rows, Notes& notes);

}  // namespace census

#endif  // CENSUS_ADDRESSES_H
