// Base64 against OpenSSL's.

#include <gtest/gtest.h>
#include <openssl/evp.h>

#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"

using kest_test::Hex;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

TEST(Base64Oracle, Encodes) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes data = random.Bytes(random.Between(0, n % 100 == 0 ? 3000 : 100));
    const int length = static_cast<int>(data.size());
    Bytes expected((data.size() + 2) / 3 * 4 + 1);
    const int need = EVP_EncodeBlock(expected.data(), data.data(), length);
    std::vector<unsigned short> text(expected.size());
    ASSERT_EQ(need, KestBinToBase64(data.data(), length, text.data(), need + 1)) << n;
    ASSERT_EQ(expected, Bytes(text.begin(), text.end())) << n << ": " << Hex(data);
  }
}

// The oracle counts the bytes that padding stands for as zeros.
TEST(Base64Oracle, Decodes) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    const Bytes data = random.Bytes(random.Between(1, n % 100 == 0 ? 3000 : 100));
    const int length = static_cast<int>(data.size());
    Bytes narrow((data.size() + 2) / 3 * 4 + 1);
    const int need = EVP_EncodeBlock(narrow.data(), data.data(), length);
    Bytes expected(narrow.size()), out(data.size());
    const int decoded = EVP_DecodeBlock(expected.data(), narrow.data(), need);
    ASSERT_EQ((length + 2) / 3 * 3, decoded);
    expected.resize(data.size());
    const std::vector<unsigned short> text(narrow.begin(), narrow.end());
    ASSERT_EQ(length, KestBase64ToBin(text.data(), out.data(), length)) << n;
    ASSERT_EQ(Hex(expected), Hex(out)) << n;
  }
}

// Four random letters of the alphabet and, now and then, one unit that is none.
TEST(Base64Oracle, TakesAndRefusesTheSameGroups) {
  const unsigned char alphabet[] =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  const unsigned char others[] = "!*,.:;?@[]{}~\x80\xff";
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases(); ++n) {
    Bytes narrow(5);
    for (size_t i = 0; i < 4; ++i) narrow[i] = alphabet[random.Next() % 64];
    if (n % 2 == 0) narrow[1 + random.Next() % 2] = others[random.Next() % (sizeof(others) - 1)];
    unsigned char expected[3] = {}, out[3] = {};
    const int decoded = EVP_DecodeBlock(expected, narrow.data(), 4);
    const std::vector<unsigned short> text(narrow.begin(), narrow.end());
    ASSERT_EQ(decoded == 3 ? 3 : 0, KestBase64ToBin(text.data(), out, 3)) << Hex(narrow);
    if (decoded != 3) continue;
    ASSERT_EQ(Hex(expected, 3), Hex(out, 3));
  }
}

}  // namespace
