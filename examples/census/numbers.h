// Numbers as text. Kest's formatter stops at 32 bits; sizes do not.

#ifndef CENSUS_NUMBERS_H
#define CENSUS_NUMBERS_H

#include "kest/string.h"

namespace census {

KEST::TBstr Decimal(long long number);                   // 1234567
KEST::TBstr Grouped(long long number);                   // 1,234,567
KEST::TBstr Amount(long long bytes);                     // 1.2 MB
KEST::TBstr Duration(long long seconds);                 // 0:07, 1:02:03
KEST::TBstr UtcTime(long seconds);                       // 2001-09-09T01:46:40Z
KEST::TBstr Hex(const unsigned char* bytes, int count);  // at most 20 bytes
KEST::TBstr PadLeft(const KEST::TBstr& text, int width);

}  // namespace census

#endif  // CENSUS_NUMBERS_H
