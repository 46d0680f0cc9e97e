#include "kest/crypto.h"

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TCipher, 8, 16);

TCipher::~TCipher() = default;

TCipher::TCipher() : TCipher(kOpEncrypt) {}

TCipher::TCipher(ECipherOp direction) : op(direction) { KEST_FIELD_AT(TCipher, op, 4, 8); }

}  // namespace KEST
