#include "crypto/cipher_checks.h"

#include <type_traits>

namespace {

using namespace kest_test;
using namespace KEST;

static_assert(std::is_copy_constructible_v<TCrypter> && !std::is_copy_assignable_v<TCrypter>);
static_assert(sizeof(TCrypter) == sizeof(void*));

const Bytes kKey = FromHex("0123456789abcdef");
const Bytes kVector = FromHex("1234567890abcdef");

// "Now is the time for all ": FIPS 81, tables B1 and C1.
const Bytes kPlaintext = FromHex("4e6f77206973207468652074696d6520666f7220616c6c20");
const char* const kEcbText = "3fa40e8a984d48156a271787ab8883f9893d51ec4b563b53";
const char* const kCbcText = "e5c7cdde872bf27c43e934008c389c0f683788499a7c05f6";

TDesCipher Des(TCipher::ECipherOp op = kEncrypt) { return TDesCipher(op, kKey.data(), 8); }

// Takes on what a public-key cipher does: the result is longer than the data.
class TToyRsa : public TRsaCipher {
 public:
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  int ProcessData(unsigned char* data, int len, bool final) override {
    if (len < 0 || !final) return 0;
    memset(data + len, 0x77, static_cast<size_t>(16 - len));
    return 16;
  }
};

TEST(Crypter, SetsModeAndVectorOfABlockCipher) {
  for (TBlockCipher::ECipherMode mode : {kEcb, kCbc}) {
    TDesCipher cipher = Des();
    cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(5));
    TCrypter crypter(cipher, mode, kVector.data());
    Bytes data = kPlaintext;
    EXPECT_EQ(24, crypter.CryptData(data.data(), 24, false));
    EXPECT_EQ(mode == kEcb ? kEcbText : kCbcText, Hex(data));
  }
}

TEST(Crypter, StartsTheMessageAnew) {
  TDesCipher cipher = Des();
  cipher.SetIv(kPlaintext.data());
  Process(cipher, kPlaintext, false);
  TCrypter crypter(cipher, kCbc, kVector.data());
  Bytes data = kPlaintext;
  crypter.CryptData(data.data(), 24, false);
  EXPECT_EQ(kCbcText, Hex(data));
}

TEST(Crypter, ANullVectorIsZeros) {
  const Bytes zeros(8);
  TDesCipher one = Des(), other = Des();
  one.SetIv(kVector.data());
  TCrypter first(one, kCbc, nullptr), second(other, kCbc, zeros.data());
  Bytes data = kPlaintext, expected = kPlaintext;
  first.CryptData(data.data(), 24, false);
  second.CryptData(expected.data(), 24, false);
  EXPECT_EQ(Hex(expected), Hex(data));
}

TEST(Crypter, PassesAnUnknownModeOn) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, static_cast<TBlockCipher::ECipherMode>(2), kVector.data());
  Bytes data = kPlaintext;
  EXPECT_EQ(24, crypter.CryptData(data.data(), 16, true));
  EXPECT_EQ(kPlaintext, data);
}

TEST(Crypter, WorksOnACopyInASecondBuffer) {
  TDesCipher encrypting = Des(), decrypting = Des(kDecrypt);
  TCrypter forth(encrypting, kCbc, kVector.data()), back(decrypting, kCbc, kVector.data());
  for (int length = 0; length <= 24; ++length) {
    Bytes ciphertext(40, 0xee), plaintext(40, 0xee);
    const int padded = length / 8 * 8 + 8;
    ASSERT_EQ(padded, forth.CryptData(kPlaintext.data(), length, ciphertext.data(), true));
    EXPECT_EQ(0xee, ciphertext[static_cast<size_t>(padded)]);
    ASSERT_EQ(length, back.CryptData(ciphertext.data(), padded, plaintext.data(), true));
    const size_t count = static_cast<size_t>(length);
    EXPECT_EQ(Hex(kPlaintext.data(), count), Hex(plaintext.data(), count));
  }
}

// out behind in, before it, and at the same place.
TEST(Crypter, BuffersMayOverlap) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, kCbc, kVector.data());
  Bytes expected = kPlaintext;
  expected.resize(32);
  ASSERT_EQ(32, crypter.CryptData(expected.data(), 24, true));
  for (int distance = -24; distance <= 24; ++distance) {
    SCOPED_TRACE(distance);
    Bytes memory(100, 0xee);
    unsigned char *in = memory.data() + 32, *out = in + distance;
    memcpy(in, kPlaintext.data(), 24);
    ASSERT_EQ(32, crypter.CryptData(in, 24, out, true));
    EXPECT_EQ(Hex(expected), Hex(out, 32));
  }
}

TEST(Crypter, RefusedDataIsCopiedAllTheSame) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, kCbc, kVector.data());
  Bytes out(16, 0xee);
  EXPECT_EQ(0, crypter.CryptData(kPlaintext.data(), 5, out.data(), false));
  EXPECT_EQ(Hex(kPlaintext.data(), 5) + std::string(22, 'e'), Hex(out));
}

TEST(Crypter, CopiesNothingForALengthBelow1) {
  const unsigned char key[3] = {'K', 'e', 'y'};
  TDesCipher block = Des();
  TRc4Cipher stream(kEncrypt, key, 3);
  TToyRsa rsa;
  TCrypter blocks(block, kCbc, nullptr), streams(stream), keys(rsa);
  for (int length : {-1, -8, INT_MIN}) {
    for (bool final : {false, true}) {
      EXPECT_EQ(0, blocks.CryptData(nullptr, length, nullptr, final));
      EXPECT_EQ(0, streams.CryptData(nullptr, length, nullptr, final));
      EXPECT_EQ(0, keys.CryptData(nullptr, length, nullptr, final));
    }
  }
  EXPECT_EQ(0, blocks.CryptData(nullptr, 0, nullptr, false));
  EXPECT_EQ(0, streams.CryptData(nullptr, 0, nullptr, true));
}

TEST(Crypter, RunsAStreamCipher) {
  const unsigned char key[3] = {'K', 'e', 'y'};
  TRc4Cipher cipher(kEncrypt, key, 3);
  TCrypter crypter(cipher);
  unsigned char data[9], out[9];
  memcpy(data, "Plaintext", 9);
  EXPECT_EQ(4, crypter.CryptData(data, 4, out, false));
  EXPECT_EQ(5, crypter.CryptData(data + 4, 5, out + 4, true));
  EXPECT_EQ("bbf316e8d940af0ad3", Hex(out, 9));
  EXPECT_EQ(9, crypter.CryptData(out, 9, true));
  EXPECT_EQ("Plaintext", std::string(out, out + 9));
}

TEST(Crypter, RunsAPublicKeyCipher) {
  TToyRsa cipher;
  TCrypter crypter(cipher);
  unsigned char data[16] = {1, 2, 3}, out[16];
  EXPECT_EQ(16, crypter.CryptData(data, 3, out, true));
  EXPECT_EQ("01020377777777777777777777777777", Hex(out, 16));
  EXPECT_EQ(0, crypter.CryptData(data, 3, false));
  EXPECT_EQ(16, crypter.CryptData(data, 3, true));
  EXPECT_EQ(Hex(out, 16), Hex(data, 16));
}

// With three arguments it is the form in place, whatever the third one is.
TEST(Crypter, ThreeArgumentsMeanInPlace) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, kEcb, nullptr);
  Bytes data = kPlaintext;
  EXPECT_EQ(24, crypter.CryptData(data.data(), 24, 0));
  EXPECT_EQ(kEcbText, Hex(data));
}

TEST(Crypter, ACopyRunsTheSameCipher) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, kCbc, kVector.data()), copy(crypter);
  Bytes data = kPlaintext;
  crypter.CryptData(data.data(), 8, false);
  copy.CryptData(data.data() + 8, 16, false);
  EXPECT_EQ(kCbcText, Hex(data));
}

// The crypter keeps no state of its own.
TEST(Crypter, TheCipherCanBeUsedBesideIt) {
  TDesCipher cipher = Des();
  TCrypter crypter(cipher, kEcb, nullptr);
  cipher.SetMode(kCbc);
  cipher.SetIv(kVector.data());
  Bytes data = kPlaintext;
  crypter.CryptData(data.data(), 24, false);
  EXPECT_EQ(kCbcText, Hex(data));
}

}  // namespace
