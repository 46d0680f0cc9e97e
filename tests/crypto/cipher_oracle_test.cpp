// The ciphers beside those of OpenSSL's legacy provider, on random keys, vectors and messages.

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/provider.h>

#include "crypto/cipher_checks.h"

namespace {

using namespace kest_test;
using namespace KEST;

class CipherOracle : public testing::Test {
 protected:
  CipherOracle() : legacy(OSSL_PROVIDER_load(nullptr, "legacy")), context(EVP_CIPHER_CTX_new()) {}
  ~CipherOracle() override {
    EVP_CIPHER_CTX_free(context);
    OSSL_PROVIDER_unload(legacy);
  }

  void SetUp() override { ASSERT_NE(nullptr, legacy); }

  // keyBits is 0 for a cipher that has no such parameter.
  Bytes Run(const char* name, bool encrypts, const Bytes& key, int keyBits, const Bytes& iv,
            const Bytes& data) {
    EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, name, nullptr);
    unsigned int bits = static_cast<unsigned int>(keyBits);
    size_t length = key.size();
    OSSL_PARAM params[3] = {OSSL_PARAM_construct_size_t(OSSL_CIPHER_PARAM_KEYLEN, &length),
                            OSSL_PARAM_construct_end(), OSSL_PARAM_construct_end()};
    if (keyBits > 0) params[1] = OSSL_PARAM_construct_uint(OSSL_CIPHER_PARAM_RC2_KEYBITS, &bits);
    EXPECT_EQ(1, EVP_CipherInit_ex2(context, cipher, nullptr, nullptr, encrypts, params)) << name;
    EXPECT_EQ(1, EVP_CipherInit_ex2(context, nullptr, key.data(), iv.data(), encrypts, nullptr));
    Bytes result(data.size() + 16);
    int done = 0, rest = 0;
    EXPECT_EQ(1, EVP_CipherUpdate(context, result.data(), &done, data.data(),
                                  static_cast<int>(data.size())));
    EXPECT_EQ(1, EVP_CipherFinal_ex(context, result.data() + done, &rest));
    result.resize(static_cast<size_t>(done + rest));
    EVP_CIPHER_free(cipher);
    return result;
  }

  // The library's result in one to three calls.
  static Bytes InPieces(TCipher& cipher, Bytes data, int unit, Random& random) {
    const int length = static_cast<int>(data.size());
    data.resize(data.size() + 8);
    int at = 0, result = 0;
    for (int calls = random.Between(0, 2); calls > 0; --calls) {
      const int piece = unit * random.Between(0, (length - at) / unit);
      // A decrypted message ends with its last block.
      if (piece == length - at && length > 0) continue;
      result += cipher.ProcessData(data.data() + at, piece, false);
      at += piece;
    }
    result += cipher.ProcessData(data.data() + at, length - at, true);
    data.resize(static_cast<size_t>(result));
    return data;
  }

  void MatchesInBothDirections(const char* name, TBlockCipher& forth, TBlockCipher& back,
                               const Bytes& key, int keyBits, Random& random) {
    const Bytes iv = random.Bytes(8), message = random.Bytes(random.Between(0, 100));
    const bool cbc = strstr(name, "CBC") != nullptr;
    for (TBlockCipher* cipher : {&forth, &back}) {
      cipher->SetMode(cbc ? kCbc : kEcb);
      cipher->SetIv(iv.data());
    }
    const Bytes expected = Run(name, true, key, keyBits, iv, message);
    ASSERT_EQ(Hex(expected), Hex(InPieces(forth, message, 8, random)));
    ASSERT_EQ(Hex(message), Hex(Run(name, false, key, keyBits, iv, expected)));
    ASSERT_EQ(Hex(message), Hex(InPieces(back, expected, 8, random)));
  }

 private:
  OSSL_PROVIDER* legacy;
  EVP_CIPHER_CTX* context;
};

TEST_F(CipherOracle, DesMatches) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(); n < cases && !HasFatalFailure(); ++n) {
    SCOPED_TRACE(n);
    const Bytes key = random.Bytes(8);
    TDesCipher forth(kEncrypt, key.data(), 8), back(kDecrypt, key.data(), 8);
    MatchesInBothDirections(n % 2 == 0 ? "DES-CBC" : "DES-ECB", forth, back, key, 0, random);
  }
}

TEST_F(CipherOracle, Rc2Matches) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(); n < cases && !HasFatalFailure(); ++n) {
    const int length = n % 128 + 1, bits = random.Between(1, 1024);
    SCOPED_TRACE(std::to_string(n) + ": " + std::to_string(bits) + " bits");
    const Bytes key = random.Bytes(length);
    TRc2Cipher forth(kEncrypt, key.data(), length, bits), back(kDecrypt, key.data(), length, bits);
    MatchesInBothDirections(n / 128 % 2 == 0 ? "RC2-CBC" : "RC2-ECB", forth, back, key, bits,
                            random);
  }
}

TEST_F(CipherOracle, Rc4Matches) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(); n < cases && !HasFatalFailure(); ++n) {
    SCOPED_TRACE(n);
    const Bytes key = random.Bytes(n % 256 + 1);
    const Bytes message = random.Bytes(n % 100 == 0 ? 5000 : random.Between(0, 400));
    TRc4Cipher cipher(kEncrypt, key.data(), static_cast<int>(key.size()));
    const Bytes expected = Run("RC4", true, key, 0, Bytes(16), message);
    ASSERT_EQ(Hex(expected), Hex(InPieces(cipher, message, 1, random)));
    ASSERT_EQ(Hex(message), Hex(InPieces(cipher, expected, 1, random)));
  }
}

}  // namespace
