#include "crypto/cipher_checks.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TRc2Cipher;

// RFC 2268, section 5. Columns: key, effective bits, plaintext, ciphertext.
struct SVector {
  const char* key;
  int effectiveBits;
  const char* plaintext;
  const char* ciphertext;
};
constexpr SVector kRfc2268[] = {
    {"0000000000000000", 63, "0000000000000000", "ebb773f993278eff"},
    {"ffffffffffffffff", 64, "ffffffffffffffff", "278b27e42e2f0d49"},
    {"3000000000000000", 64, "1000000000000001", "30649edf9be7d2c2"},
    {"88", 64, "0000000000000000", "61a8a244adacccf0"},
    {"88bca90e90875a", 64, "0000000000000000", "6ccf4308974c267f"},
    {"88bca90e90875a7f0f79c384627bafb2", 64, "0000000000000000", "1a807d272bbe5db1"},
    {"88bca90e90875a7f0f79c384627bafb2", 128, "0000000000000000", "2269552ab0f85ca6"},
    {"88bca90e90875a7f0f79c384627bafb216f80a6f85920584c42fceb0be255daf1e", 129, "0000000000000000",
     "5b78d3a43dfff1f1"},
};

const Bytes kKey = FromHex("88bca90e90875a7f0f79c384627bafb2");

TRc2Cipher Rc2(TCipher::ECipherOp op, int effectiveBits) {
  return TRc2Cipher(op, kKey.data(), 16, effectiveBits);
}

// The 128 bytes of the expanded key, which lies behind the fields of the base.
Bytes ExpandedKeyOf(const TRc2Cipher& cipher) {
  const unsigned char* bytes =
      reinterpret_cast<const unsigned char*>(&cipher) + sizeof(KEST::TBlockCipher);
  return Bytes(bytes, bytes + 128);
}

int EffectiveBitsOf(const TRc2Cipher& cipher) {
  int bits;
  memcpy(&bits, reinterpret_cast<const char*>(&cipher) + sizeof(KEST::TBlockCipher) + 128, 4);
  return bits;
}

TEST(Rc2Cipher, MatchesRfc2268) {
  for (const SVector& row : kRfc2268) {
    SCOPED_TRACE(row.key);
    const Bytes key = FromHex(row.key);
    const int length = static_cast<int>(key.size());
    const TRc2Cipher forth(kEncrypt, key.data(), length, row.effectiveBits);
    const TRc2Cipher back(kDecrypt, key.data(), length, row.effectiveBits);
    EXPECT_EQ(row.ciphertext, Block(forth, row.plaintext));
    EXPECT_EQ(row.plaintext, Block(back, row.ciphertext));
  }
}

// Every key length with every number of effective bits, encrypting and decrypting, each result in
// the next key; the end computed with openssl's libcrypto.
TEST(Rc2Cipher, MatchesOpensslOverALongChain) {
  Bytes key = Counting(128), x(8);
  size_t n = 0;
  for (int length = 1; length <= 128; ++length) {
    for (int bits = 0; bits <= 1024; ++bits) {
      TRc2Cipher(n % 3 != 0 ? kEncrypt : kDecrypt, key.data(), length, bits).ProcessBlock(x.data());
      ++n;
      for (size_t k = 0; k < 8; ++k) key[(n + k) % 128] ^= x[k];
    }
  }
  EXPECT_EQ("caa8309d2a4fda79", Hex(x));
}

// openssl enc -rc2-cbc -K 88bc... -iv 1234567890abcdef -provider legacy, and -rc2-ecb
TEST(Rc2Cipher, MatchesOpensslInBothModes) {
  const Bytes text = FromHex("4e6f77206973207468652074696d6520666f7220616c6c");
  const char* const expected[2] = {"594ab049f9b9535a6f09443cd173b6546bfe5aba4bb38660",
                                   "0840df10b9c3731fa3dea00c802ee1a3a101470665411962"};
  for (KEST::TBlockCipher::ECipherMode mode : {kCbc, kEcb}) {
    TRc2Cipher forth = Rc2(kEncrypt, 128), back = Rc2(kDecrypt, 128);
    for (TRc2Cipher* cipher : {&forth, &back}) {
      cipher->SetMode(mode);
      cipher->SetIv(FromHex("1234567890abcdef").data());
    }
    EXPECT_EQ(expected[mode], Hex(Process(forth, text, true)));
    EXPECT_EQ(Hex(text), Hex(Process(back, FromHex(expected[mode]), true)));
  }
}

TEST(Rc2Cipher, NoEffectiveBitsAre1024) {
  EXPECT_EQ(ExpandedKeyOf(Rc2(kEncrypt, 1024)), ExpandedKeyOf(Rc2(kEncrypt, 0)));
  EXPECT_NE(ExpandedKeyOf(Rc2(kEncrypt, 1023)), ExpandedKeyOf(Rc2(kEncrypt, 0)));
  EXPECT_EQ(0, EffectiveBitsOf(Rc2(kEncrypt, 0)));
}

TEST(Rc2Cipher, EffectiveBitsOutsideTheRangeAre1024) {
  for (int bits : {-1, -8, -128, -1024, 1025, 1032, 4096, INT_MAX, INT_MIN}) {
    EXPECT_EQ(ExpandedKeyOf(Rc2(kEncrypt, 1024)), ExpandedKeyOf(Rc2(kEncrypt, bits))) << bits;
    EXPECT_EQ(bits, EffectiveBitsOf(Rc2(kEncrypt, bits))) << "kept as given";
  }
}

TEST(Rc2Cipher, AKeyShorterThan1ByteCountsAs1) {
  const Bytes key = {0x88};  // exactly one, so that a sanitizer sees a read beyond it
  for (int length : {0, -1, -128, INT_MIN}) {
    EXPECT_EQ("61a8a244adacccf0",
              Block(TRc2Cipher(kEncrypt, key.data(), length, 64), "0000000000000000"))
        << length;
  }
}

TEST(Rc2Cipher, AKeyLongerThan128BytesIsCut) {
  const Bytes key = Counting(128);
  const Bytes expected = ExpandedKeyOf(TRc2Cipher(kEncrypt, key.data(), 128, 1024));
  for (int length : {129, 256, INT_MAX}) {
    EXPECT_EQ(expected, ExpandedKeyOf(TRc2Cipher(kEncrypt, key.data(), length, 1024))) << length;
  }
  EXPECT_NE(expected, ExpandedKeyOf(TRc2Cipher(kEncrypt, key.data(), 127, 1024)));
}

// With 1024 effective bits and a full key only L[0] passes through the table again; here all of
// the array is known: 127 bytes as given, in pairs low byte first.
TEST(Rc2Cipher, TheExpandedKeyIsPairsOfBytesLowByteFirst) {
  const Bytes key = Counting(128);
  const TRc2Cipher cipher(kEncrypt, key.data(), 128, 1024);
  unsigned short words[64];
  memcpy(words, ExpandedKeyOf(cipher).data(), sizeof(words));
  for (size_t n = 1; n < 64; ++n) {
    EXPECT_EQ(key[2 * n] + 256 * key[2 * n + 1], words[n]) << n;
  }
  EXPECT_EQ(0xc4 + 256 * key[1], words[0]) << "PITABLE[3] is c4";
}

// Unlike DES.
TEST(Rc2Cipher, AnyOtherOpDecrypts) {
  for (int op : {1, 2, -1, INT_MAX, INT_MIN}) {
    TRc2Cipher cipher = Rc2(static_cast<TCipher::ECipherOp>(op), 128);
    EXPECT_EQ("0000000000000000", Block(cipher, "2269552ab0f85ca6")) << op;
    cipher.SetMode(kEcb);
    EXPECT_EQ("0000000000000000", Hex(Process(cipher, FromHex("2269552ab0f85ca6"), true)));
  }
}

TEST(Rc2Cipher, BlocksMayLieAtAnyAddress) {
  const TRc2Cipher cipher = Rc2(kEncrypt, 128);
  for (size_t offset = 0; offset < 8; ++offset) {
    Bytes memory(16, 0xee);
    memset(memory.data() + offset, 0, 8);
    cipher.ProcessBlock(memory.data() + offset);
    EXPECT_EQ(std::string(2 * offset, 'e') + "2269552ab0f85ca6" + std::string(16 - 2 * offset, 'e'),
              Hex(memory));
  }
}

TEST(Rc2Cipher, TheBlockSizeIs8) {
  for (int bits : {0, 40, 1024}) EXPECT_EQ(8, Rc2(kEncrypt, bits).GetBlockSize());
}

// The version for 56 bits is not the one of RFC 2268, on purpose.
TEST(Rc2Cipher, WritesItsIdentifierWithVersionAndVector) {
  struct SRow {
    int effectiveBits;
    const char* identifier;
  };
  const SRow rows[] = {
      {128, "301906082a864886f70d0302300d02013a0408a1a2a3a4a5a6a7a8"},
      {56, "301906082a864886f70d0302300d0201780408a1a2a3a4a5a6a7a8"},
      {40, "301a06082a864886f70d0302300e020200a00408a1a2a3a4a5a6a7a8"},
  };
  for (const SRow& row : rows) {
    SCOPED_TRACE(row.effectiveBits);
    TRc2Cipher cipher = Rc2(kEncrypt, row.effectiveBits);
    cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
    Process(cipher, Counting(8), false);  // moves the chain, not the vector
    const int length = static_cast<int>(strlen(row.identifier)) / 2;
    for (KEST::TBlockCipher::ECipherMode mode : {kEcb, kCbc}) {
      cipher.SetMode(mode);
      for (int size : {length, length + 1, INT_MAX}) {
        Bytes out(32, 0xee);
        EXPECT_EQ(length, cipher.BerDump(out.data(), size));
        EXPECT_EQ(row.identifier + std::string(64 - 2 * static_cast<size_t>(length), 'e'),
                  Hex(out));
      }
    }
    Bytes out(32, 0xee);
    for (int size : {length - 1, 1, 0, -1, INT_MIN}) EXPECT_EQ(0, cipher.BerDump(out.data(), size));
    EXPECT_EQ(std::string(64, 'e'), Hex(out));
  }
}

TEST(Rc2Cipher, HasNoIdentifierForOtherEffectiveBits) {
  Bytes out(32, 0xee);
  for (int bits = -2; bits <= 1026; ++bits) {
    if (bits == 128 || bits == 56 || bits == 40) continue;
    EXPECT_EQ(0, Rc2(kEncrypt, bits).BerDump(out.data(), 32)) << bits;
  }
  EXPECT_EQ(0, Rc2(kEncrypt, 64).BerDump(nullptr, 0));
  EXPECT_EQ(std::string(64, 'e'), Hex(out));
}

TEST(Rc2Cipher, ReadsNoParameters) {
  TRc2Cipher cipher = Rc2(kEncrypt, 128);
  Bytes own(27);
  cipher.BerDump(own.data(), 27);
  EXPECT_EQ(0, cipher.BerInit(own.data(), 27));
  EXPECT_EQ(0, cipher.BerInit(nullptr, 0));
  EXPECT_EQ("2269552ab0f85ca6", Block(cipher, "0000000000000000"));
}

TEST(Rc2Cipher, ACopyGoesOnByItself) {
  CopiesGoOnByThemselves(Rc2(kEncrypt, 128), Rc2(kDecrypt, 40));
}

TEST(Rc2Cipher, DestructionWipesTheExpandedKey) {
  Bytes left =
      AfterDestruction<TRc2Cipher>(sizeof(KEST::TBlockCipher), kEncrypt, kKey.data(), 16, 128);
  left.resize(128);
  EXPECT_EQ(Bytes(128), left);
}

unsigned char s_key[16];

TEST(Rc2Cipher, ConstructionLeavesNoKeyOnTheStack) {
  alignas(TRc2Cipher) static unsigned char place[sizeof(TRc2Cipher)];
  memcpy(s_key, kKey.data(), 16);
  const Bytes stack = StackAfter([] { ::new (place) TRc2Cipher(kEncrypt, s_key, 16, 1024); });
  for (size_t at = 0; at < 128; at += 8) {
    EXPECT_FALSE(Holds(stack, place + sizeof(KEST::TBlockCipher) + at, 8)) << at;
  }
  EXPECT_FALSE(Holds(stack, s_key, 8));
}

}  // namespace
