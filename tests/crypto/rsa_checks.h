// What the tests of the RSA cipher share: keys as bytes, blocks and what is in them.

#ifndef KEST_TESTS_CRYPTO_RSA_CHECKS_H
#define KEST_TESTS_CRYPTO_RSA_CHECKS_H

#include <string>

#include "crypto/cipher_checks.h"

namespace kest_test {

inline Bytes ToBytes(const std::string& text) { return Bytes(text.begin(), text.end()); }

inline Bytes operator+(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

inline int Size(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

// A cipher with this key.
struct RsaCipher : KEST::TRsaPublicCipher {
  RsaCipher(ECipherOp way, const Bytes& n, const Bytes& e)
      : TRsaPublicCipher(way, n.data(), Size(n), e.data(), Size(e)) {}
};

// The message in a block of type 1; empty when it is no such block.
inline Bytes SignedMessage(const Bytes& block) {
  if (block[0] != 0 || block[1] != 1) return {};
  size_t i = 2;
  while (i < block.size() - 1 && block[i] == 0xFF) ++i;
  if (block[i] != 0) return {};
  return Bytes(block.begin() + static_cast<ptrdiff_t>(i) + 1, block.end());
}

// 00, type, padding up to count bytes, 00, message.
inline Bytes Block(size_t count, unsigned char type, const Bytes& message) {
  return Bytes{0, type} + Bytes(count - message.size() - 3, 0xFF) + Bytes{0} + message;
}

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_RSA_CHECKS_H
