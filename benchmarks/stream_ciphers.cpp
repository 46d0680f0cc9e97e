// RC4 in place, message after message from where the keystream stands. Objects are made once and
// stay until the process ends.

#if KEST_PEER_BOTAN
#include <botan/stream_cipher.h>
#endif
#if KEST_PEER_CRYPTOPP
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/arc4.h>
#endif
#if KEST_PEER_GCRYPT
#include <gcrypt.h>
#endif
#if KEST_PEER_NETTLE
#include <nettle/arcfour.h>
#endif
#if KEST_PEER_OPENSSL
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

#include <string>
#include <vector>

#include "kest/crypto.h"
#include "support/row.h"

namespace {

constexpr size_t kKeyLength = 16;
const unsigned char kKey[kKeyLength + 1] = "0123456789abcdef";

// crypt(data, length) works the next length bytes of keystream into data.
template <typename Crypt>
void AddRows(const char* who, Crypt crypt) {
  for (const size_t length : {16384, 64}) {
    Row("RC4 " + std::to_string(length), who,
        [crypt, data = std::vector<unsigned char>(length)](benchmark::State& state) mutable {
          for (auto _ : state) {
            crypt(data.data(), data.size());
            benchmark::ClobberMemory();
          }
        });
  }
}

}  // namespace

void RegisterRows() {
  const auto kest = new KEST::TRc4Cipher(KEST::TCipher::kOpEncrypt, kKey, kKeyLength);
  AddRows("kest", [=](unsigned char* data, size_t length) {
    kest->ProcessData(data, static_cast<int>(length), false);
  });
#if KEST_PEER_OPENSSL
  OSSL_PROVIDER_set_default_search_path(nullptr, KEST_OPENSSL_MODULES);
  OSSL_PROVIDER_load(nullptr, "default");
  OSSL_PROVIDER_load(nullptr, "legacy");
  EVP_CIPHER_CTX* const openssl = EVP_CIPHER_CTX_new();
  if (EVP_EncryptInit_ex2(openssl, EVP_CIPHER_fetch(nullptr, "RC4", nullptr), kKey, nullptr,
                          nullptr) == 1) {
    AddRows("openssl", [=](unsigned char* data, size_t length) {
      int written;
      EVP_EncryptUpdate(openssl, data, &written, data, static_cast<int>(length));
    });
  }
#endif
#if KEST_PEER_NETTLE
  const auto nettle = new arcfour_ctx;
  arcfour_set_key(nettle, kKeyLength, kKey);
  AddRows("nettle",
          [=](unsigned char* data, size_t length) { arcfour_crypt(nettle, length, data, data); });
#endif
#if KEST_PEER_GCRYPT
  gcry_check_version(nullptr);
  gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
  gcry_cipher_hd_t gcrypt;
  if (gcry_cipher_open(&gcrypt, GCRY_CIPHER_ARCFOUR, GCRY_CIPHER_MODE_STREAM, 0) == 0) {
    gcry_cipher_setkey(gcrypt, kKey, kKeyLength);
    AddRows("gcrypt", [=](unsigned char* data, size_t length) {
      gcry_cipher_encrypt(gcrypt, data, length, nullptr, 0);
    });
  }
#endif
#if KEST_PEER_CRYPTOPP
  const auto cryptopp = new CryptoPP::Weak::ARC4(kKey, kKeyLength);
  AddRows("cryptopp",
          [=](unsigned char* data, size_t length) { cryptopp->ProcessData(data, data, length); });
#endif
#if KEST_PEER_BOTAN
  Botan::StreamCipher* const botan = Botan::StreamCipher::create_or_throw("RC4").release();
  botan->set_key(kKey, kKeyLength);
  AddRows("botan", [=](unsigned char* data, size_t length) { botan->cipher1(data, length); });
#endif
}
