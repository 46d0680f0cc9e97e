// The digests against OpenSSL's.

#include <gtest/gtest.h>
#include <openssl/evp.h>
#include <openssl/provider.h>

#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using kest_test::Hex;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

Bytes OracleDigest(const EVP_MD* algorithm, const Bytes& message) {
  Bytes digest(EVP_MAX_MD_SIZE);
  unsigned int size = 0;
  EXPECT_EQ(1,
            EVP_Digest(message.data(), message.size(), digest.data(), &size, algorithm, nullptr));
  digest.resize(size);
  return digest;
}

// Messages of every length up to 200 in turn and some long ones, fed in two random pieces. One
// object serves all: what one message leaves behind would show in the next.
template <typename Digest>
void MatchesTheOracle(const EVP_MD* algorithm) {
  ASSERT_NE(nullptr, algorithm);
  Random random;
  SCOPED_TRACE(random.Seed());
  Digest digest;
  Bytes result(static_cast<size_t>(digest.GetDigestSize()));
  for (int n = 0; n < Random::Cases(); ++n) {
    const int length = n % 100 == 0 ? random.Between(0, 5000) : n % 201;
    const Bytes message = random.Bytes(length);
    const int first = random.Between(0, length);
    digest.Update(message.data(), first);
    digest.Update(message.data() + first, length - first);
    ASSERT_EQ(digest.GetDigestSize(), digest.Finish(result.data(), 0));
    ASSERT_EQ(Hex(OracleDigest(algorithm, message)), Hex(result))
        << "case " << n << ": " << Hex(message);
  }
}

TEST(DigestOracle, Md4) {
  ASSERT_NE(nullptr, OSSL_PROVIDER_load(nullptr, "legacy"));
  ASSERT_NE(nullptr, OSSL_PROVIDER_load(nullptr, "default"));
  MatchesTheOracle<KEST::TMd4Digest>(EVP_md4());
}

TEST(DigestOracle, Md5) { MatchesTheOracle<KEST::TMd5Digest>(EVP_md5()); }

TEST(DigestOracle, Sha1) { MatchesTheOracle<KEST::TShaDigest>(EVP_sha1()); }

}  // namespace
