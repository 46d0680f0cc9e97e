#include "kest/crypto.h"

#include <string.h>

#include "frame/layout.h"

namespace KEST {

KEST_SIZE_IS(TCrypter, 4, 8);

TCrypter::TCrypter(TBlockCipher& block, TBlockCipher::ECipherMode mode, const unsigned char* iv)
    : cipher(block) {
  block.SetMode(mode);
  block.SetIv(iv);
}

TCrypter::TCrypter(TStreamCipher& stream) : cipher(stream) {}

TCrypter::TCrypter(TRsaCipher& rsa) : cipher(rsa) {}

int TCrypter::CryptData(unsigned char* data, int len, bool final) {
  return cipher.ProcessData(data, len, final);
}

int TCrypter::CryptData(const unsigned char* in, int len, unsigned char* out, bool final) {
  if (len > 0) memmove(out, in, static_cast<size_t>(len));
  return cipher.ProcessData(out, len, final);
}

}  // namespace KEST
