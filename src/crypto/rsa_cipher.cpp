#include "kest/crypto.h"

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TRsaCipher, 8, 16);

TRsaCipher::~TRsaCipher() = default;

int TRsaCipher::GetType() { return 0; }

TRsaCipher::TRsaCipher() = default;

TRsaCipher::TRsaCipher(ECipherOp direction) : TCipher(direction) {}

}  // namespace KEST
