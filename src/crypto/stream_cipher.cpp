#include "kest/crypto.h"

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TStreamCipher, 8, 16);

TStreamCipher::~TStreamCipher() = default;

int TStreamCipher::GetType() { return 2; }

int TStreamCipher::ProcessData(unsigned char* data, int len, bool final) {
  if (len < 0) return 0;
  ProcessStream(data, len);
  if (final) Reset();
  return len;
}

TStreamCipher::TStreamCipher() = default;

TStreamCipher::TStreamCipher(ECipherOp direction) : TCipher(direction) {}

}  // namespace KEST
