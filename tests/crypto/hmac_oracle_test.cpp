// HMAC against OpenSSL's.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>
#include <openssl/provider.h>

#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using kest_test::Hex;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

// A null key would mean the one of the call before.
Bytes OracleMac(const EVP_MD* algorithm, const Bytes& key, const Bytes& message) {
  Bytes mac(EVP_MAX_MD_SIZE);
  unsigned int size = 0;
  EXPECT_NE(nullptr,
            HMAC(algorithm, key.empty() ? "" : static_cast<const void*>(key.data()),
                 static_cast<int>(key.size()), message.data(), message.size(), mac.data(), &size));
  mac.resize(size);
  return mac;
}

// Keys of every length, messages in random pieces.
template <typename Digest>
void MatchesTheOracle(const EVP_MD* algorithm) {
  ASSERT_NE(nullptr, algorithm);
  Random random;
  SCOPED_TRACE(random.Seed());
  Digest digest;
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes key = random.Bytes(n % 65);
    const Bytes message = random.Bytes(random.Between(0, n % 100 == 0 ? 3000 : 200));
    const int length = static_cast<int>(message.size());
    KEST::THmac hmac(digest, key.data(), static_cast<int>(key.size()));
    int at = 0;
    do {
      const int piece = random.Between(0, length - at);
      hmac.Update(message.data() + at, piece);
      at += piece;
    } while (at < length);
    Bytes mac(static_cast<size_t>(digest.GetDigestSize()));
    ASSERT_EQ(digest.GetDigestSize(), hmac.Finish(mac.data(), 0));
    ASSERT_EQ(Hex(OracleMac(algorithm, key, message)), Hex(mac))
        << "case " << n << ": " << Hex(key) << ' ' << Hex(message);
  }
}

TEST(HmacOracle, Md4) {
  ASSERT_NE(nullptr, OSSL_PROVIDER_load(nullptr, "legacy"));
  ASSERT_NE(nullptr, OSSL_PROVIDER_load(nullptr, "default"));
  MatchesTheOracle<KEST::TMd4Digest>(EVP_md4());
}

TEST(HmacOracle, Md5) { MatchesTheOracle<KEST::TMd5Digest>(EVP_md5()); }

TEST(HmacOracle, Sha1) { MatchesTheOracle<KEST::TShaDigest>(EVP_sha1()); }

}  // namespace
