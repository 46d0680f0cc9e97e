// Digests and HMAC: a whole message each time, with objects that are made once and stay
// until the process ends.

#if KEST_PEER_BOTAN
#include <botan/hash.h>
#include <botan/mac.h>
#endif
#if KEST_PEER_CRYPTOPP
#define CRYPTOPP_ENABLE_NAMESPACE_WEAK 1
#include <cryptopp/hmac.h>
#include <cryptopp/md4.h>
#include <cryptopp/md5.h>
#include <cryptopp/sha.h>
#endif
#if KEST_PEER_GCRYPT
#include <gcrypt.h>
#endif
#if KEST_PEER_GLIB
#include <glib.h>
#endif
#if KEST_PEER_NETTLE
#include <nettle/hmac.h>
#include <nettle/md4.h>
#include <nettle/md5.h>
#include <nettle/sha1.h>
#endif
#if KEST_PEER_OPENSSL
#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

#include <string.h>

#include <memory>
#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/row.h"

namespace {

constexpr int kMaxDigest = 20;
constexpr size_t kKeyLength = 16;
const unsigned char kKey[kKeyLength + 1] = "0123456789abcdef";

using Lengths = std::vector<size_t>;

// digest(data, length, out) makes the digest of one message.
template <typename Digest>
void AddRows(const std::string& algorithm, const Lengths& lengths, const char* who, Digest digest) {
  for (const size_t length : lengths) {
    const std::vector<unsigned char> message(length, 'k');
    Row(algorithm + " " + std::to_string(length), who, [message, digest](benchmark::State& state) {
      unsigned char out[kMaxDigest];
      for (auto _ : state) {
        digest(message.data(), message.size(), out);
        benchmark::DoNotOptimize(out);
      }
    });
  }
}

template <typename Digest>
void AddKest(const std::string& algorithm, const Lengths& lengths) {
  AddRows(algorithm, lengths, "kest",
          [made = new Digest](const unsigned char* data, size_t length, unsigned char* out) {
            made->Update(data, static_cast<int>(length));
            made->Finish(out, 0);
          });
}

// A digest with its HMAC over a key of kKeyLength bytes.
template <typename Digest>
void AddKestHmac(const std::string& algorithm, const Lengths& lengths) {
  struct SMac {
    SMac() : hmac(digest, kKey, kKeyLength) {}
    Digest digest;
    KEST::THmac hmac;
  };
  AddRows(algorithm, lengths, "kest",
          [made = new SMac](const unsigned char* data, size_t length, unsigned char* out) {
            made->hmac.Update(data, static_cast<int>(length));
            made->hmac.Finish(out, 0);
          });
}

#if KEST_PEER_OPENSSL
void AddOpenssl(const std::string& algorithm, const Lengths& lengths, const char* name) {
  const EVP_MD* type = EVP_MD_fetch(nullptr, name, nullptr);
  if (type == nullptr) return;
  EVP_MD_CTX* context = EVP_MD_CTX_new();
  AddRows(algorithm, lengths, "openssl",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            EVP_DigestInit_ex2(context, type, nullptr);
            EVP_DigestUpdate(context, data, length);
            EVP_DigestFinal_ex(context, out, nullptr);
          });
}

void AddOpensslHmac(const std::string& algorithm, const Lengths& lengths, const char* name) {
  EVP_MAC_CTX* context = EVP_MAC_CTX_new(EVP_MAC_fetch(nullptr, "HMAC", nullptr));
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_MAC_PARAM_DIGEST, const_cast<char*>(name), 0),
      OSSL_PARAM_construct_end()};
  EVP_MAC_init(context, kKey, kKeyLength, parameters);
  AddRows(algorithm, lengths, "openssl",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            size_t size;
            EVP_MAC_init(context, nullptr, 0, nullptr);
            EVP_MAC_update(context, data, length);
            EVP_MAC_final(context, out, &size, kMaxDigest);
          });
}
#endif

#if KEST_PEER_NETTLE
template <typename Context>
void AddNettle(const std::string& algorithm, const Lengths& lengths, void init(Context*),
               void update(Context*, size_t, const uint8_t*),
               void digest(Context*, size_t, uint8_t*), size_t size) {
  Context* context = new Context;
  init(context);
  AddRows(algorithm, lengths, "nettle",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            update(context, length, data);
            digest(context, size, out);
          });
}
#endif

#if KEST_PEER_GCRYPT
void AddGcrypt(const std::string& algorithm, const Lengths& lengths, gcry_md_algos type,
               unsigned int flags) {
  gcry_md_hd_t handle;
  if (gcry_md_open(&handle, type, flags) != 0) return;
  if ((flags & GCRY_MD_FLAG_HMAC) != 0) gcry_md_setkey(handle, kKey, kKeyLength);
  const size_t size = gcry_md_get_algo_dlen(type);
  AddRows(algorithm, lengths, "gcrypt",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            gcry_md_write(handle, data, length);
            memcpy(out, gcry_md_read(handle, type), size);
            gcry_md_reset(handle);
          });
}
#endif

#if KEST_PEER_CRYPTOPP
template <typename Digest, typename... Key>
void AddCryptopp(const std::string& algorithm, const Lengths& lengths, Key... key) {
  AddRows(
      algorithm, lengths, "cryptopp",
      [made = new Digest(key...)](const unsigned char* data, size_t length, unsigned char* out) {
        made->Update(data, length);
        made->Final(out);
      });
}
#endif

#if KEST_PEER_BOTAN
void AddBotan(const std::string& algorithm, const Lengths& lengths,
              std::unique_ptr<Botan::Buffered_Computation> owner) {
  AddRows(algorithm, lengths, "botan",
          [made = owner.release()](const unsigned char* data, size_t length, unsigned char* out) {
            made->update(data, length);
            made->final(out);
          });
}

void AddBotanHash(const std::string& algorithm, const Lengths& lengths, const char* name) {
  AddBotan(algorithm, lengths, Botan::HashFunction::create_or_throw(name));
}

void AddBotanHmac(const std::string& algorithm, const Lengths& lengths, const char* name) {
  std::unique_ptr<Botan::MessageAuthenticationCode> made =
      Botan::MessageAuthenticationCode::create_or_throw(name);
  made->set_key(kKey, kKeyLength);
  AddBotan(algorithm, lengths, std::move(made));
}
#endif

#if KEST_PEER_GLIB
void AddGlib(const std::string& algorithm, const Lengths& lengths, GChecksumType type) {
  GChecksum* checksum = g_checksum_new(type);
  AddRows(algorithm, lengths, "glib",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            gsize size = kMaxDigest;
            g_checksum_update(checksum, data, static_cast<gssize>(length));
            g_checksum_get_digest(checksum, out, &size);
            g_checksum_reset(checksum);
          });
}

// The key goes in with each message: there is no way back to the start of one.
void AddGlibHmac(const std::string& algorithm, const Lengths& lengths, GChecksumType type) {
  AddRows(algorithm, lengths, "glib",
          [=](const unsigned char* data, size_t length, unsigned char* out) {
            gsize size = kMaxDigest;
            GHmac* hmac = g_hmac_new(type, kKey, kKeyLength);
            g_hmac_update(hmac, data, static_cast<gssize>(length));
            g_hmac_get_digest(hmac, out, &size);
            g_hmac_unref(hmac);
          });
}
#endif

void StartPeers() {
#if KEST_PEER_OPENSSL
  OSSL_PROVIDER_set_default_search_path(nullptr, KEST_OPENSSL_MODULES);
  OSSL_PROVIDER_load(nullptr, "default");
  OSSL_PROVIDER_load(nullptr, "legacy");
#endif
#if KEST_PEER_GCRYPT
  gcry_check_version(nullptr);
  gcry_control(GCRYCTL_DISABLE_SECMEM, 0);
  gcry_control(GCRYCTL_INITIALIZATION_FINISHED, 0);
#endif
}

void RegisterDigests() {
  const Lengths lengths = {16384, 64};
  AddKest<KEST::TMd4Digest>("MD4", lengths);
  AddKest<KEST::TMd5Digest>("MD5", lengths);
  AddKest<KEST::TShaDigest>("SHA-1", lengths);
#if KEST_PEER_OPENSSL
  AddOpenssl("MD4", lengths, "MD4");
  AddOpenssl("MD5", lengths, "MD5");
  AddOpenssl("SHA-1", lengths, "SHA1");
#endif
#if KEST_PEER_NETTLE
  AddNettle("MD4", lengths, md4_init, md4_update, md4_digest, MD4_DIGEST_SIZE);
  AddNettle("MD5", lengths, md5_init, md5_update, md5_digest, MD5_DIGEST_SIZE);
  AddNettle("SHA-1", lengths, sha1_init, sha1_update, sha1_digest, SHA1_DIGEST_SIZE);
#endif
#if KEST_PEER_GCRYPT
  AddGcrypt("MD4", lengths, GCRY_MD_MD4, 0);
  AddGcrypt("MD5", lengths, GCRY_MD_MD5, 0);
  AddGcrypt("SHA-1", lengths, GCRY_MD_SHA1, 0);
#endif
#if KEST_PEER_CRYPTOPP
  AddCryptopp<CryptoPP::Weak::MD4>("MD4", lengths);
  AddCryptopp<CryptoPP::Weak::MD5>("MD5", lengths);
  AddCryptopp<CryptoPP::SHA1>("SHA-1", lengths);
#endif
#if KEST_PEER_BOTAN
  AddBotanHash("MD4", lengths, "MD4");
  AddBotanHash("MD5", lengths, "MD5");
  AddBotanHash("SHA-1", lengths, "SHA-1");
#endif
#if KEST_PEER_GLIB
  AddGlib("MD5", lengths, G_CHECKSUM_MD5);
  AddGlib("SHA-1", lengths, G_CHECKSUM_SHA1);
#endif
}

void RegisterHmac() {
  const Lengths lengths = {1024};
  AddKestHmac<KEST::TMd5Digest>("HMAC-MD5", lengths);
  AddKestHmac<KEST::TShaDigest>("HMAC-SHA-1", lengths);
#if KEST_PEER_OPENSSL
  AddOpensslHmac("HMAC-MD5", lengths, "MD5");
  AddOpensslHmac("HMAC-SHA-1", lengths, "SHA1");
#endif
#if KEST_PEER_NETTLE
  AddNettle<hmac_md5_ctx>(
      "HMAC-MD5", lengths,
      [](hmac_md5_ctx* context) { hmac_md5_set_key(context, kKeyLength, kKey); }, hmac_md5_update,
      hmac_md5_digest, MD5_DIGEST_SIZE);
  AddNettle<hmac_sha1_ctx>(
      "HMAC-SHA-1", lengths,
      [](hmac_sha1_ctx* context) { hmac_sha1_set_key(context, kKeyLength, kKey); },
      hmac_sha1_update, hmac_sha1_digest, SHA1_DIGEST_SIZE);
#endif
#if KEST_PEER_GCRYPT
  AddGcrypt("HMAC-MD5", lengths, GCRY_MD_MD5, GCRY_MD_FLAG_HMAC);
  AddGcrypt("HMAC-SHA-1", lengths, GCRY_MD_SHA1, GCRY_MD_FLAG_HMAC);
#endif
#if KEST_PEER_CRYPTOPP
  AddCryptopp<CryptoPP::HMAC<CryptoPP::Weak::MD5>>("HMAC-MD5", lengths, kKey, kKeyLength);
  AddCryptopp<CryptoPP::HMAC<CryptoPP::SHA1>>("HMAC-SHA-1", lengths, kKey, kKeyLength);
#endif
#if KEST_PEER_BOTAN
  AddBotanHmac("HMAC-MD5", lengths, "HMAC(MD5)");
  AddBotanHmac("HMAC-SHA-1", lengths, "HMAC(SHA-1)");
#endif
#if KEST_PEER_GLIB
  AddGlibHmac("HMAC-MD5", lengths, G_CHECKSUM_MD5);
  AddGlibHmac("HMAC-SHA-1", lengths, G_CHECKSUM_SHA1);
#endif
}

}  // namespace

void RegisterRows() {
  StartPeers();
  RegisterDigests();
  RegisterHmac();
}
