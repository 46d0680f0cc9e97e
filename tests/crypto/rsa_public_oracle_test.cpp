// TRsaPublicCipher against OpenSSL, which makes the keys, opens what we encrypt and signs what we
// check.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>
#include <openssl/x509.h>

#include <algorithm>
#include <memory>

#include "crypto/rsa_checks.h"
#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TRsaPublicCipher;
using Key = std::unique_ptr<EVP_PKEY, decltype(&EVP_PKEY_free)>;
using Context = std::unique_ptr<EVP_PKEY_CTX, decltype(&EVP_PKEY_CTX_free)>;

Key NewKey(int bits) {
  return Key(EVP_PKEY_Q_keygen(nullptr, nullptr, "RSA", static_cast<size_t>(bits)), EVP_PKEY_free);
}

// The key as SubjectPublicKeyInfo.
Bytes PublicKey(const Key& key) {
  Bytes der(static_cast<size_t>(i2d_PUBKEY(key.get(), nullptr)));
  unsigned char* end = der.data();
  i2d_PUBKEY(key.get(), &end);
  return der;
}

// One of the operations of OpenSSL on data, with this padding; empty when it fails.
Bytes Operate(const Key& key, int (*start)(EVP_PKEY_CTX*),
              int (*run)(EVP_PKEY_CTX*, unsigned char*, size_t*, const unsigned char*, size_t),
              int padding, const Bytes& data) {
  const Context context(EVP_PKEY_CTX_new(key.get(), nullptr), EVP_PKEY_CTX_free);
  Bytes result(static_cast<size_t>(EVP_PKEY_get_size(key.get())));
  size_t size = result.size();
  if (start(context.get()) <= 0 || EVP_PKEY_CTX_set_rsa_padding(context.get(), padding) <= 0 ||
      run(context.get(), result.data(), &size, data.data(), data.size()) <= 0) {
    return {};
  }
  result.resize(size);
  return result;
}

Bytes Sign(const Key& key, int padding, const Bytes& data) {
  return Operate(key, EVP_PKEY_sign_init, EVP_PKEY_sign, padding, data);
}

class Cipher : public TRsaPublicCipher {
 public:
  Cipher(ECipherOp way, const Key& key) : TRsaPublicCipher(way) {
    const Bytes der = PublicKey(key);
    EXPECT_EQ(Size(der), BerInit(der.data(), Size(der)));
    EXPECT_EQ(EVP_PKEY_get_size(key.get()), GetModulusSize());
  }

  // What becomes of data, in a buffer of its own.
  Bytes Process(const Bytes& data) {
    Bytes work = data;
    work.resize(static_cast<size_t>(std::max(GetModulusSize(), Size(data))));
    work.resize(static_cast<size_t>(ProcessData(work.data(), Size(data), true)));
    return work;
  }
};

constexpr int kSizes[] = {512, 544, 768, 1024, 1536, 2048};  // whole words

class Generator {
 public:
  Generator() { KEST::RandInit(); }
  ~Generator() { KEST::RandTerm(); }
};

TEST(RsaPublicOracle, OpensslOpensWhatWeEncrypt) {
  const Generator generator;
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int bits : kSizes) {
    const Key key = NewKey(bits);
    Cipher cipher(TCipher::kOpEncrypt, key);
    const int k = bits / 8;
    for (int i = 0; i < Random::Cases(100); ++i) {
      const Bytes message = random.Bytes(i < 2 ? i * (k - 11) : random.Between(0, k - 11));
      const Bytes encrypted = cipher.Process(message);
      // One in 2^32 comes out in another form.
      ASSERT_EQ(k, Size(encrypted));
      ASSERT_EQ(Hex(message), Hex(Operate(key, EVP_PKEY_decrypt_init, EVP_PKEY_decrypt,
                                          RSA_PKCS1_PADDING, encrypted)));
    }
    EXPECT_TRUE(cipher.Process(random.Bytes(k - 10)).empty());
  }
}

TEST(RsaPublicOracle, WeOpenWhatOpensslSigns) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int bits : kSizes) {
    const Key key = NewKey(bits);
    Cipher cipher(TCipher::kOpDecrypt, key);
    for (int i = 0; i < Random::Cases(50); ++i) {
      const Bytes message = random.Bytes(random.Between(1, bits / 8 - 11));
      ASSERT_EQ(Hex(message), Hex(cipher.Process(Sign(key, RSA_PKCS1_PADDING, message))));
    }
  }
}

// Every remainder of the key's length: 0 and 1 open, 2 and 3 give nothing.
TEST(RsaPublicOracle, OddKeyLengthsFollowTheRuleOfDump) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int bytes = 64; bytes <= 75; ++bytes) {
    const Key key = NewKey(8 * bytes);
    Cipher cipher(TCipher::kOpDecrypt, key);
    const Bytes message = random.Bytes(20), signature = Sign(key, RSA_PKCS1_PADDING, message);
    ASSERT_EQ(bytes, Size(signature));
    EXPECT_EQ(bytes % 4 < 2 ? Hex(message) : "", Hex(cipher.Process(signature))) << bytes;
  }
}

// A block such as a signature could hold, mostly damaged here or there.
Bytes RandomBlock(Random& random, int count) {
  Bytes block = Block(static_cast<size_t>(count), 1, random.Bytes(random.Between(0, count - 3)));
  for (int changes = random.Between(0, 2); changes > 0; --changes) {
    static const unsigned char kValues[] = {0, 1, 2, 0xFE, 0xFF};
    const int at = random.Between(0, 1) != 0 ? random.Between(1, 4) : random.Between(1, count - 1);
    block[static_cast<size_t>(at)] = kValues[random.Between(0, 4)];
  }
  return block;
}

TEST(RsaPublicOracle, RandomBlocksAreTakenByTheRules) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Key key = NewKey(512);
  Cipher cipher(TCipher::kOpDecrypt, key);
  int taken = 0;
  for (int i = 0; i < Random::Cases(); ++i) {
    const Bytes block = RandomBlock(random, 64), message = SignedMessage(block);
    const Bytes signature = Sign(key, RSA_NO_PADDING, block);
    ASSERT_EQ(64, Size(signature));
    ASSERT_EQ(Hex(message), Hex(cipher.Process(signature))) << Hex(block);
    taken += message.empty() ? 0 : 1;
  }
  EXPECT_LT(Random::Cases() / 10, taken);
  EXPECT_GT(Random::Cases() * 9 / 10, taken);
}

TEST(RsaPublicOracle, DamagedSignaturesAreTakenByTheRules) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Key key = NewKey(512);
  Cipher cipher(TCipher::kOpDecrypt, key);
  const Bytes good = Sign(key, RSA_PKCS1_PADDING, random.Bytes(30));
  for (int i = 0; i < Random::Cases(); ++i) {
    Bytes signature = good;
    signature[static_cast<size_t>(random.Between(1, 63))] ^=
        static_cast<unsigned char>(random.Between(1, 255));
    const Bytes block = Operate(key, EVP_PKEY_verify_recover_init, EVP_PKEY_verify_recover,
                                RSA_NO_PADDING, signature);
    ASSERT_EQ(64, Size(block));
    ASSERT_EQ(Hex(SignedMessage(block)), Hex(cipher.Process(signature)));
  }
}

}  // namespace
