// DES and RC2 in both modes, in place, a run of whole blocks at a time and no padding.

#if KEST_PEER_BOTAN
#include <botan/block_cipher.h>
#include <botan/cipher_mode.h>
#endif
#if KEST_PEER_CRYPTOPP
#include <cryptopp/des.h>
#include <cryptopp/modes.h>
#include <cryptopp/rc2.h>
#endif
#if KEST_PEER_GCRYPT
#include <gcrypt.h>
#endif
#if KEST_PEER_NETTLE
#include <nettle/arctwo.h>
#include <nettle/cbc.h>
#include <nettle/des.h>
#endif
#if KEST_PEER_OPENSSL
#include <openssl/evp.h>
#include <openssl/provider.h>
#endif

#include <stdlib.h>
#include <string.h>

#include <functional>
#include <memory>
#include <vector>

#include "kest/crypto.h"
#include "support/row.h"

namespace {

constexpr unsigned char kKey[16] = {0x88, 0xbc, 0xa9, 0x0e, 0x90, 0x87, 0x5a, 0x7f,
                                    0x0f, 0x79, 0xc3, 0x84, 0x62, 0x7b, 0xaf, 0xb2};
constexpr unsigned char kIv[8] = {0x12, 0x34, 0x56, 0x78, 0x90, 0xab, 0xcd, 0xef};

struct SWork {
  bool des;  // or else RC2 with 128 bits
  bool cbc;  // or else ECB
  bool encrypts;

  size_t KeySize() const { return des ? 8 : 16; }
};

// Works on that many bytes in place, in a message that goes on from call to call.
using Run = std::function<void(unsigned char* data, size_t size)>;

Run KestRun(const SWork& work) {
  using KEST::TBlockCipher;
  const auto op = work.encrypts ? KEST::TCipher::kOpEncrypt : KEST::TCipher::kOpDecrypt;
  std::shared_ptr<TBlockCipher> cipher;
  if (work.des) {
    cipher = std::make_shared<KEST::TDesCipher>(op, kKey, 8);
  } else {
    cipher = std::make_shared<KEST::TRc2Cipher>(op, kKey, 16, 128);
  }
  cipher->SetMode(work.cbc ? TBlockCipher::kModeCbc : TBlockCipher::kModeEcb);
  cipher->SetIv(kIv);
  return [cipher](unsigned char* data, size_t size) {
    cipher->ProcessData(data, static_cast<int>(size), false);
  };
}

#if KEST_PEER_NETTLE
template <typename Context>
Run NettleRun(const SWork& work, const std::shared_ptr<Context>& context,
              void (*crypt)(Context*, size_t, uint8_t*, const uint8_t*)) {
  if (!work.cbc) {
    return [=](unsigned char* data, size_t size) { crypt(context.get(), size, data, data); };
  }
  const auto iv = std::make_shared<std::vector<unsigned char>>(kIv, kIv + 8);
  const auto call = reinterpret_cast<nettle_cipher_func*>(reinterpret_cast<void (*)()>(crypt));
  return [=](unsigned char* data, size_t size) {
    (work.encrypts ? cbc_encrypt : cbc_decrypt)(context.get(), call, 8, iv->data(), size, data,
                                                data);
  };
}

Run NettleRun(const SWork& work) {
  if (work.des) {
    const auto context = std::make_shared<des_ctx>();
    des_set_key(context.get(), kKey);
    const auto crypt = work.encrypts ? des_encrypt : des_decrypt;
    return NettleRun(work, context,
                     reinterpret_cast<void (*)(des_ctx*, size_t, uint8_t*, const uint8_t*)>(
                         reinterpret_cast<void (*)()>(crypt)));
  }
  const auto context = std::make_shared<arctwo_ctx>();
  arctwo_set_key(context.get(), 16, kKey);
  return NettleRun(work, context, work.encrypts ? arctwo_encrypt : arctwo_decrypt);
}
#endif

#if KEST_PEER_GCRYPT
Run GcryptRun(const SWork& work) {
  gcry_check_version(nullptr);
  gcry_cipher_hd_t handle;
  gcry_cipher_open(&handle, work.des ? GCRY_CIPHER_DES : GCRY_CIPHER_RFC2268_128,
                   work.cbc ? GCRY_CIPHER_MODE_CBC : GCRY_CIPHER_MODE_ECB, 0);
  const std::shared_ptr<gcry_cipher_handle> cipher(handle, gcry_cipher_close);
  gcry_cipher_setkey(handle, kKey, work.KeySize());
  if (work.cbc) gcry_cipher_setiv(handle, kIv, 8);
  const auto crypt = work.encrypts ? gcry_cipher_encrypt : gcry_cipher_decrypt;
  return [=](unsigned char* data, size_t size) { crypt(cipher.get(), data, size, nullptr, 0); };
}
#endif

#if KEST_PEER_OPENSSL
// The ciphers are in a module of their own.
void LoadLegacyProvider() {
  OSSL_PROVIDER_set_default_search_path(nullptr, KEST_OSSL_MODULES);
  OSSL_PROVIDER_load(nullptr, "legacy");
  OSSL_PROVIDER_load(nullptr, "default");
}

Run OpensslRun(const SWork& work) {
  static const bool s_loaded = (LoadLegacyProvider(), true);
  static_cast<void>(s_loaded);
  const std::string name = std::string(work.des ? "DES" : "RC2") + (work.cbc ? "-CBC" : "-ECB");
  const std::shared_ptr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new(), EVP_CIPHER_CTX_free);
  EVP_CIPHER* cipher = EVP_CIPHER_fetch(nullptr, name.c_str(), nullptr);
  EVP_CipherInit_ex(context.get(), cipher, nullptr, kKey, kIv, work.encrypts);
  EVP_CIPHER_free(cipher);
  EVP_CIPHER_CTX_set_padding(context.get(), 0);
  return [context](unsigned char* data, size_t size) {
    int done;
    EVP_CipherUpdate(context.get(), data, &done, data, static_cast<int>(size));
  };
}
#endif

#if KEST_PEER_CRYPTOPP
template <typename Mode>
Run CryptoppRun(const SWork& work) {
  const auto mode = std::make_shared<Mode>();
  mode->SetKey(kKey, work.KeySize(),
               CryptoPP::MakeParameters(CryptoPP::Name::IV(),
                                        CryptoPP::ConstByteArrayParameter(kIv, 8, false),
                                        false)(CryptoPP::Name::EffectiveKeyLength(), 128, false));
  return [mode](unsigned char* data, size_t size) { mode->ProcessData(data, data, size); };
}

template <typename Cipher>
Run CryptoppRunOf(const SWork& work) {
  using namespace CryptoPP;
  if (work.cbc) {
    return work.encrypts ? CryptoppRun<typename CBC_Mode<Cipher>::Encryption>(work)
                         : CryptoppRun<typename CBC_Mode<Cipher>::Decryption>(work);
  }
  return work.encrypts ? CryptoppRun<typename ECB_Mode<Cipher>::Encryption>(work)
                       : CryptoppRun<typename ECB_Mode<Cipher>::Decryption>(work);
}

Run CryptoppRun(const SWork& work) {
  return work.des ? CryptoppRunOf<CryptoPP::DES>(work) : CryptoppRunOf<CryptoPP::RC2>(work);
}
#endif

#if KEST_PEER_BOTAN
// It has no RC2.
Run BotanRun(const SWork& work) {
  if (work.cbc) {
    const std::shared_ptr<Botan::Cipher_Mode> mode = Botan::Cipher_Mode::create_or_throw(
        "DES/CBC/NoPadding", work.encrypts ? Botan::ENCRYPTION : Botan::DECRYPTION);
    mode->set_key(kKey, 8);
    mode->start(kIv, 8);
    return [mode](unsigned char* data, size_t size) { mode->process(data, size); };
  }
  const std::shared_ptr<Botan::BlockCipher> cipher = Botan::BlockCipher::create_or_throw("DES");
  cipher->set_key(kKey, 8);
  if (work.encrypts) {
    return [cipher](unsigned char* data, size_t size) { cipher->encrypt_n(data, data, size / 8); };
  }
  return [cipher](unsigned char* data, size_t size) { cipher->decrypt_n(data, data, size / 8); };
}
#endif

std::vector<std::pair<const char*, Run>> RunsOf(const SWork& work) {
  std::vector<std::pair<const char*, Run>> runs = {{"kest", KestRun(work)}};
#if KEST_PEER_NETTLE
  runs.emplace_back("nettle", NettleRun(work));
#endif
#if KEST_PEER_GCRYPT
  runs.emplace_back("gcrypt", GcryptRun(work));
#endif
#if KEST_PEER_OPENSSL
  runs.emplace_back("openssl", OpensslRun(work));
#endif
#if KEST_PEER_CRYPTOPP
  runs.emplace_back("cryptopp", CryptoppRun(work));
#endif
#if KEST_PEER_BOTAN
  if (work.des) runs.emplace_back("botan", BotanRun(work));
#endif
  return runs;
}

// The result on a message of 100 blocks, so that all are seen to do the same work.
std::vector<unsigned char> ResultOf(const Run& run) {
  std::vector<unsigned char> data(800);
  for (size_t at = 0; at < data.size(); ++at) data[at] = static_cast<unsigned char>(at * 7);
  run(data.data(), data.size());
  return data;
}

void RegisterWork(const SWork& work, size_t size) {
  const std::string row = std::string(work.des ? "DES" : "RC2") + (work.cbc ? " CBC" : " ECB") +
                          (work.encrypts ? " encryption " : " decryption ") + std::to_string(size);
  const std::vector<unsigned char> expected = ResultOf(KestRun(work));
  for (const auto& [who, run] : RunsOf(work)) {
    const bool agrees = ResultOf(run) == expected;
    Row(row, who, [run = run, size, agrees](benchmark::State& state) {
      if (!agrees) state.SkipWithError("gives another result");
      std::vector<unsigned char> data(size, 'k');
      for (auto _ : state) {
        run(data.data(), data.size());
        benchmark::ClobberMemory();
      }
    });
  }
}

}  // namespace

void RegisterRows() {
  for (bool des : {true, false}) {
    RegisterWork({des, false, false}, 8192);
    for (bool encrypts : {false, true}) {
      for (size_t size : {8192, 512, 64}) RegisterWork({des, true, encrypts}, size);
    }
  }
}
