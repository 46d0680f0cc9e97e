// The exponentiation of TBigInt for callers that have to know when it ran out of memory.

#ifndef KEST_SRC_CRYPTO_BIG_INT_EXP_MOD_H
#define KEST_SRC_CRYPTO_BIG_INT_EXP_MOD_H

#include "kest/crypto.h"

namespace KEST {

// TBigInt::ExpMod. False, r as it was, when there is no memory.
bool TryExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BIG_INT_EXP_MOD_H
