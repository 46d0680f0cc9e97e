// TRsaPublicCipher with keys and signatures made by openssl, and with keys that let the blocks
// through: modulo a number above every block, the power with exponent 1 is the block itself.

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>

#include <algorithm>
#include <type_traits>

#include "crypto/big_int_checks.h"
#include "crypto/rsa_checks.h"
#include "crypto/rsa_keys.h"
#include "crypto/wipe_checks.h"
#include "kest/digest.h"
#include "support/hex.h"
#include "support/random.h"
#include "support/test_allocator.h"

namespace {

using namespace kest_test;
using KEST::TCipher;
using KEST::TCrypter;
using KEST::TRsaPublicCipher;

static_assert(sizeof(TRsaPublicCipher) == (sizeof(void*) == 4 ? 24 : 48));

const Bytes kOne = {1};
const Bytes kMessage = {'a', 'b'};

// A cipher that leaves a block as it is, apart from its padding.
struct OpenCipher : RsaCipher {
  OpenCipher(ECipherOp way, size_t size) : RsaCipher(way, Bytes(size, 0xFF), kOne) {}
};

// The generator of the process for the lifetime, seeded, and a second one in step with it.
class Generator {
 public:
  Generator() {
    KEST::RandInit();
    const Bytes seed = ToBytes("rsa test");
    KestSeedRandom(seed.data(), Size(seed));
    twin.Seed(seed.data(), Size(seed));
  }
  ~Generator() { KEST::RandTerm(); }

  // The padding that comes next: bytes as they are drawn, zeros left out.
  Bytes NextPadding(size_t count) {
    Bytes padding;
    while (padding.size() < count) {
      unsigned char byte = 0;
      twin.Generate(&byte, 1);
      if (byte != 0) padding.push_back(byte);
      zeros += byte == 0 ? 1 : 0;
    }
    return padding;
  }

  // The block that comes next for message.
  Bytes NextBlock(size_t size, const Bytes& message) {
    return Bytes{0, 2} + NextPadding(size - message.size() - 3) + Bytes{0} + message;
  }

  int zeros = 0;

 private:
  KEST::TMd5Prng twin;
};

// message, and a buffer of size bytes around it, filled up with 77.
Bytes Buffer(const Bytes& message, size_t size) {
  Bytes data = message;
  data.resize(size, 0x77);
  return data;
}

// What becomes of data, of which length bytes go in; "0" when nothing comes out and data has not
// changed.
std::string Processed(TRsaPublicCipher& cipher, const Bytes& data, int length) {
  Bytes work = data;
  const int result = cipher.ProcessData(work.data(), length, true);
  if (result == 0) return work == data ? "0" : "0, changed: " + Hex(work);
  return Hex(work.data(), static_cast<size_t>(result));
}

TEST(RsaPublicCipher, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TRsaPublicCipher>);
  static_assert(!std::is_copy_assignable_v<TRsaPublicCipher>);
}

TEST(RsaPublicCipher, HasTheTypeAndTheVirtualTableOfItsBase) {
  Generator generator;
  OpenCipher cipher(TCipher::kOpDecrypt, 64);
  KEST::TRsaCipher& base = cipher;
  EXPECT_EQ(0, base.GetType());

  void** slots;
  memcpy(&slots, static_cast<const void*>(&base), sizeof(slots));
  int (*berInit)(void*, const unsigned char*, int);
  int (*berDump)(void*, unsigned char*, int);
  int (*getType)(void*);
  int (*processData)(void*, unsigned char*, int, bool);
  memcpy(&berInit, slots + 2, sizeof(berInit));
  memcpy(&berDump, slots + 3, sizeof(berDump));
  memcpy(&getType, slots + 4, sizeof(getType));
  memcpy(&processData, slots + 5, sizeof(processData));

  Bytes block = Block(64, 1, kMessage);
  EXPECT_EQ(2, processData(&base, block.data(), 64, true));
  EXPECT_EQ(0, getType(&base));
  EXPECT_EQ(0, berDump(&base, block.data(), 64));
  const Bytes key = FromHex(kRsaKeys[0].header) + FromHex(kRsaKeys[0].modulus) + Bytes{2, 3} +
                    FromHex(kRsaKeys[0].exponent);
  TRsaPublicCipher empty(TCipher::kOpEncrypt);
  EXPECT_EQ(Size(key), berInit(&empty, key.data(), Size(key)));
  EXPECT_EQ(64, empty.GetModulusSize());
}

TEST(RsaPublicCipher, WithoutAKeyNothingComesOut) {
  Generator generator;
  for (TCipher::ECipherOp op : {TCipher::kOpEncrypt, TCipher::kOpDecrypt}) {
    TRsaPublicCipher cipher(op);
    EXPECT_EQ(0, cipher.GetModulusSize());
    EXPECT_EQ("0", Processed(cipher, Buffer({}, 64), 0));
    EXPECT_EQ("0", Processed(cipher, Buffer(kMessage, 64), 2));
    EXPECT_EQ("0", Processed(cipher, Buffer(kMessage, 64), 64));
  }
}

TEST(RsaPublicCipher, CopiesTheKey) {
  Bytes modulus(64, 0xFF), exponent = kOne;
  TRsaPublicCipher cipher(TCipher::kOpDecrypt);
  EXPECT_TRUE(cipher.Construct(modulus.data(), 64, exponent.data(), 1));
  modulus.assign(64, 0);
  exponent[0] = 0;
  EXPECT_EQ(64, cipher.GetModulusSize());
  EXPECT_EQ("6162", Processed(cipher, Block(64, 1, kMessage), 64));
}

TEST(RsaPublicCipher, ANewKeyReplacesTheOldOne) {
  TestAllocator allocator;
  {
    OpenCipher cipher(TCipher::kOpDecrypt, 64);
    EXPECT_EQ(2, allocator.Live());
    const Bytes modulus(68, 0xFF);
    EXPECT_TRUE(cipher.Construct(modulus.data(), 68, kOne.data(), 1));
    EXPECT_EQ(2, allocator.Live());
    EXPECT_EQ(68, cipher.GetModulusSize());
    EXPECT_EQ("6162", Processed(cipher, Block(68, 1, kMessage), 68));
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(RsaPublicCipher, NegativeLengthsAreRefusedAndTheKeyStays) {
  OpenCipher cipher(TCipher::kOpDecrypt, 64);
  for (int length : {-1, INT_MIN}) {
    EXPECT_FALSE(cipher.Construct(kOne.data(), length, kOne.data(), 1));
    EXPECT_FALSE(cipher.Construct(kOne.data(), 1, kOne.data(), length));
  }
  EXPECT_EQ("6162", Processed(cipher, Block(64, 1, kMessage), 64));
}

TEST(RsaPublicCipher, ANullPartIsNoKey) {
  Generator generator;
  for (TCipher::ECipherOp op : {TCipher::kOpEncrypt, TCipher::kOpDecrypt}) {
    const Bytes modulus(64, 0xFF);
    TRsaPublicCipher first(op, nullptr, 64, kOne.data(), 1);
    TRsaPublicCipher second(op, modulus.data(), 64, nullptr, 1);
    TRsaPublicCipher both(op, nullptr, 0, nullptr, 0);
    for (TRsaPublicCipher* cipher : {&first, &second, &both}) {
      EXPECT_EQ("0", Processed(*cipher, Block(64, 1, kMessage), 2));
      EXPECT_EQ("0", Processed(*cipher, Block(64, 1, kMessage), 64));
    }
  }
  TRsaPublicCipher cipher(TCipher::kOpEncrypt);
  EXPECT_FALSE(cipher.Construct(nullptr, 64, kOne.data(), 1));
  EXPECT_FALSE(cipher.Construct(kOne.data(), 1, nullptr, 1));
}

TEST(RsaPublicCipher, APartWithoutMemoryIsNoneAndKeepsItsLength) {
  const Bytes longer(68, 0xFF);
  for (int refused : {1, 2}) {
    TestAllocator allocator;
    OpenCipher cipher(TCipher::kOpDecrypt, 64);
    allocator.Refuse(refused, TestAllocator::kOnlyOne);
    EXPECT_FALSE(cipher.Construct(longer.data(), 68, kOne.data(), 1));
    EXPECT_EQ(refused == 1 ? 64 : 68, cipher.GetModulusSize());
    EXPECT_EQ(1, allocator.Live());
    EXPECT_EQ("0", Processed(cipher, Block(64, 1, kMessage), 64));
    EXPECT_EQ("0", Processed(cipher, Block(68, 1, kMessage), 68));
    EXPECT_TRUE(cipher.Construct(longer.data(), 68, kOne.data(), 1));
    EXPECT_EQ("6162", Processed(cipher, Block(68, 1, kMessage), 68));
  }
}

TEST(RsaPublicCipher, AnyOperationButZeroDecrypts) {
  const Bytes block = Block(64, 1, kMessage);
  for (int op : {1, 2, -1, INT_MIN}) {
    OpenCipher cipher(static_cast<TCipher::ECipherOp>(op), 64);
    EXPECT_EQ("6162", Processed(cipher, block, 64));
  }
  Generator generator;
  OpenCipher cipher(TCipher::kOpEncrypt, 64);
  EXPECT_EQ(Hex(generator.NextBlock(64, kMessage)), Processed(cipher, Buffer(kMessage, 64), 2));
}

TEST(RsaPublicCipher, AnythingButAFinalCallIsRefused) {
  Generator generator;
  OpenCipher cipher(TCipher::kOpEncrypt, 64);
  for (int length : {0, 1, 53, 64}) {
    Bytes data = Block(64, 1, kMessage);
    const Bytes before = data;
    EXPECT_EQ(0, cipher.ProcessData(data.data(), length, false));
    EXPECT_EQ(0, cipher.EncryptData(data.data(), length, false));
    EXPECT_EQ(0, cipher.DecryptData(data.data(), length, false));
    EXPECT_EQ(before, data);
  }
}

TEST(RsaPublicCipher, WritesNoKey) {
  OpenCipher cipher(TCipher::kOpEncrypt, 64);
  Bytes buffer(1000, 0x77);
  for (int size : {0, 1, 64, 1000, -1}) EXPECT_EQ(0, cipher.BerDump(buffer.data(), size));
  EXPECT_EQ(0, cipher.BerDump(nullptr, 0));
  EXPECT_EQ(Bytes(1000, 0x77), buffer);
}

// Encryption.

TEST(RsaPublicCipher, EncryptsFromNoByteToElevenLessThanTheModulus) {
  Generator generator;
  OpenCipher cipher(TCipher::kOpEncrypt, 128);
  for (int length = 0; length <= 117; ++length) {
    const Bytes message(static_cast<size_t>(length), 'm');
    EXPECT_EQ(Hex(generator.NextBlock(128, message)),
              Processed(cipher, Buffer(message, 128), length));
  }
  for (int length : {118, 128, 129, INT_MAX, INT_MAX - 10, -1, INT_MIN}) {
    EXPECT_EQ("0", Processed(cipher, Buffer({}, 128), length)) << length;
  }
  // Refused calls have drawn nothing.
  EXPECT_EQ(Hex(generator.NextBlock(128, {})), Processed(cipher, Buffer({}, 128), 0));
  EXPECT_LT(0, generator.zeros);
}

TEST(RsaPublicCipher, AModulusBelowElevenBytesEncryptsNothing) {
  Generator generator;
  for (size_t size = 0; size <= 11; ++size) {
    OpenCipher cipher(TCipher::kOpEncrypt, size);
    EXPECT_EQ(static_cast<int>(size), cipher.GetModulusSize());
    EXPECT_EQ("0", Processed(cipher, Buffer({}, 16), size < 11 ? 0 : 1)) << size;
  }
  OpenCipher smallest(TCipher::kOpEncrypt, 12);
  EXPECT_EQ(Hex(generator.NextBlock(12, {0x55})), Processed(smallest, Buffer({0x55}, 12), 1));
}

TEST(RsaPublicCipher, WithoutAGeneratorNothingIsEncrypted) {
  OpenCipher cipher(TCipher::kOpEncrypt, 64);
  EXPECT_EQ("0", Processed(cipher, Buffer(kMessage, 64), 2));
  {
    Generator generator;
    EXPECT_EQ(Hex(generator.NextBlock(64, kMessage)), Processed(cipher, Buffer(kMessage, 64), 2));
  }
  EXPECT_EQ("0", Processed(cipher, Buffer(kMessage, 64), 2));
}

// What TBigInt::Dump makes of c, which fits when it is at most 3 bytes shorter.
TEST(RsaPublicCipher, AResultOfFewerWordsIsWrittenByTheRuleOfDump) {
  Generator generator;
  // Modulo 2^384, the last 48 bytes of the block stay, all of them message.
  const Bytes modulus = Bytes(15) + kOne + Bytes(48);
  Bytes message;
  for (unsigned char i = 1; i <= 52; ++i) message.push_back(i);
  const Bytes c(message.begin() + 4, message.end());
  RsaCipher cipher(TCipher::kOpEncrypt, modulus, kOne);
  Bytes data = Buffer(message, 64), expected = data;
  for (size_t i = 0; i < 16; ++i) expected[i] = 0;
  for (size_t i = 16; i < 48; ++i) expected[i] = c[i];
  EXPECT_EQ(48, cipher.EncryptData(data.data(), 52, true));
  EXPECT_EQ(Hex(expected), Hex(data));
}

TEST(RsaPublicCipher, DegenerateKeysFollowTheRulesOfTheirNumbers) {
  Generator generator;
  // Modulo 1 the result is 0: the buffer is cleared, and 0 returned.
  RsaCipher one(TCipher::kOpEncrypt, Bytes(63) + kOne, kOne);
  EXPECT_EQ("0, changed: " + Hex(Bytes(64)), Processed(one, Buffer(kMessage, 64), 2));
  // Modulo 0, and with exponent 0, it is 1: one word, of which nothing is written 60 bytes in.
  RsaCipher zero(TCipher::kOpEncrypt, Bytes(64), kOne);
  RsaCipher power(TCipher::kOpEncrypt, Bytes(64, 0xFF), {0});
  TRsaPublicCipher noExponent(TCipher::kOpEncrypt, Bytes(64, 0xFF).data(), 64, kOne.data(), 0);
  for (TRsaPublicCipher* cipher : {static_cast<TRsaPublicCipher*>(&zero),
                                   static_cast<TRsaPublicCipher*>(&power), &noExponent}) {
    Bytes data = Buffer(kMessage, 64);
    EXPECT_EQ(4, cipher->EncryptData(data.data(), 2, true));
    EXPECT_EQ(Hex(Bytes(60) + Bytes(4, 0x77)), Hex(data));
  }
}

// Decryption.

TEST(RsaPublicCipher, TakesTheMessageOutOfABlock) {
  const size_t k = 64;
  // Columns: how the block of 64 bytes begins, with what it is filled up, how it ends; where the
  // message in it begins, 0 when the block is refused or the message has no byte.
  const struct {
    const char *begin, *fill, *end;
    size_t message;
  } rows[] = {
      {"0001", "ff", "006162", 62},
      {"0001ffffffffffffffff006162", "63", "", 11},
      {"000100", "78", "", 3},
      {"0001ff00", "78", "", 4},
      {"000100", "00", "", 3},
      {"0001ff", "ff", "0000", 63},
      {"0001", "ff", "00", 0},  // nothing after the zero
      {"0001", "ff", "", 0},    // no zero
      {"0001ffff", "fe", "006162", 0},
      {"0001fe", "ff", "006162", 0},
      {"0001ff01", "ff", "006162", 0},
      {"0002", "ff", "006162", 0},
      {"0000", "ff", "006162", 0},
      {"0003", "ff", "006162", 0},
      {"0101", "ff", "006162", 0},
      {"0100", "ff", "006162", 0},
      {"0000000001", "ff", "006162", 0},
      {"", "00", "01", 0},
      {"", "00", "", 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.begin) + " " + row.fill + " " + row.end);
    const Bytes begin = FromHex(row.begin), end = FromHex(row.end);
    const Bytes block = begin + Bytes(k - begin.size() - end.size(), FromHex(row.fill)[0]) + end;
    OpenCipher cipher(TCipher::kOpDecrypt, k);
    const std::string result = Processed(cipher, block, static_cast<int>(k));
    EXPECT_EQ(row.message == 0 ? "0" : Hex(block).substr(2 * row.message), result);
  }
}

// On the heap, where the address sanitizer sees a look behind the block.
TEST(RsaPublicCipher, PaddingIsReadUpToTheEndOfTheBlock) {
  OpenCipher cipher(TCipher::kOpDecrypt, 260);
  EXPECT_EQ("0", Processed(cipher, Bytes{0, 1} + Bytes(258, 0xFF), 260));
}

TEST(RsaPublicCipher, ShorterInputIsTheSameNumber) {
  OpenCipher cipher(TCipher::kOpDecrypt, 64);
  const Bytes block = Block(64, 1, kMessage);
  const Bytes shorter = Buffer(Bytes(block.begin() + 1, block.end()), 64);
  EXPECT_EQ("6162", Processed(cipher, shorter, 63));
  EXPECT_EQ("0", Processed(cipher, block, 63));
  EXPECT_EQ("0", Processed(cipher, block, 0));
  for (int length : {65, INT_MAX, -1, INT_MIN}) EXPECT_EQ("0", Processed(cipher, block, length));
  EXPECT_EQ("0", Processed(cipher, Bytes{0} + block, 65))
      << "longer, though the number is the same";
}

// The number in a block 00 01 ... has one byte less than the modulus. Dump writes it where its
// words fit: a multiple of 4 or one more.
TEST(RsaPublicCipher, DecryptsForModuliOfWholeWordsAndOneByteMore) {
  for (size_t k = 12; k <= 270; ++k) {
    OpenCipher cipher(TCipher::kOpDecrypt, k);
    const Bytes block = Block(k, 1, kMessage);
    EXPECT_EQ(k % 4 < 2 ? "6162" : "0", Processed(cipher, block, static_cast<int>(k))) << k;
  }
}

TEST(RsaPublicCipher, TinyModuliDecryptByTheSameRule) {
  const Bytes blocks[] = {{}, {0}, {0, 1}, {0, 1, 0}, {0, 1, 0, 'x'}, {0, 1, 0, 'x', 'y'}};
  const char* results[] = {"0", "0", "0", "0", "78", "7879"};
  for (size_t k = 0; k <= 5; ++k) {
    OpenCipher cipher(TCipher::kOpDecrypt, k);
    EXPECT_EQ(results[k], Processed(cipher, Buffer(blocks[k], 8), static_cast<int>(k))) << k;
  }
}

// Real keys.

TEST(RsaPublicCipher, AcceptsWhatOpensslSigned) {
  for (const RsaKey& key : kRsaKeys) {
    SCOPED_TRACE(key.bits);
    RsaCipher cipher(TCipher::kOpDecrypt, FromHex(key.modulus), FromHex(key.exponent));
    const Bytes signature = FromHex(key.signature);
    EXPECT_EQ(key.bits / 8 % 4 < 2 ? kSignedDigest : std::string("0"),
              Processed(cipher, signature, Size(signature)));
  }
}

TEST(RsaPublicCipher, RefusesDamagedSignaturesAndOtherKeys) {
  const RsaKey& key = kRsaKeys[0];
  RsaCipher cipher(TCipher::kOpDecrypt, FromHex(key.modulus), FromHex(key.exponent));
  for (size_t bit = 0; bit < 512; ++bit) {
    Bytes signature = FromHex(key.signature);
    signature[bit / 8] = static_cast<unsigned char>(signature[bit / 8] ^ 1 << bit % 8);
    EXPECT_EQ("0", Processed(cipher, signature, 64)) << bit;
  }
  const Bytes signature = FromHex(key.signature);
  Bytes modulus = FromHex(key.modulus);
  for (size_t i = 0; i < 64; ++i) {
    modulus[i] ^= 0x10;
    RsaCipher damaged(TCipher::kOpDecrypt, modulus, FromHex(key.exponent));
    EXPECT_EQ("0", Processed(damaged, signature, 64)) << i;
    modulus[i] ^= 0x10;
  }
  RsaCipher three(TCipher::kOpDecrypt, modulus, {3});
  EXPECT_EQ("0", Processed(three, signature, 64));
}

// The number of the block, taken to the private exponent with TBigInt.
Bytes Opened(const RsaKey& key, const Bytes& encrypted) {
  TBigInt block;
  TBigInt::ExpMod(block, TBigInt(encrypted.data(), Size(encrypted)), Big(key.privateExponent),
                  Big(key.modulus));
  Bytes opened(encrypted.size());
  block.Dump(opened.data(), Size(opened));
  return opened;
}

TEST(RsaPublicCipher, ThePrivateKeyOpensWhatItEncrypted) {
  Generator generator;
  for (const RsaKey& key : kRsaKeys) {
    const size_t k = static_cast<size_t>(key.bits) / 8;
    if (k % 4 != 0) continue;
    SCOPED_TRACE(key.bits);
    RsaCipher cipher(TCipher::kOpEncrypt, FromHex(key.modulus), FromHex(key.exponent));
    Bytes data = Buffer(kMessage, k);
    EXPECT_EQ(static_cast<int>(k), cipher.EncryptData(data.data(), 2, true));
    EXPECT_EQ(Hex(generator.NextBlock(k, kMessage)), Hex(Opened(key, data)));
  }
}

// With a byte or more past whole words, the result mostly has a word more than fits.
TEST(RsaPublicCipher, EncryptionWithOtherModuliFollowsTheRuleOfDump) {
  Generator generator;
  int written = 0;
  for (const RsaKey& key : kRsaKeys) {
    const size_t k = static_cast<size_t>(key.bits) / 8;
    if (k % 4 == 0 || key.bits > 600) continue;
    RsaCipher cipher(TCipher::kOpEncrypt, FromHex(key.modulus), FromHex(key.exponent));
    for (int i = 0; i < 400; ++i) {
      Bytes data = Buffer(kMessage, k), expected = data;
      const Bytes block = generator.NextBlock(k, kMessage);
      TBigInt c;
      TBigInt::ExpMod(c, TBigInt(block.data(), Size(block)), Big(key.exponent), Big(key.modulus));
      const int result = c.Dump(expected.data(), Size(expected));
      ASSERT_EQ(result, cipher.EncryptData(data.data(), 2, true));
      ASSERT_EQ(Hex(expected), Hex(data));
      written += result != 0 ? 1 : 0;
    }
  }
  EXPECT_LT(0, written);
  EXPECT_GT(100, written);
}

TEST(RsaPublicCipher, WorksThroughTCrypter) {
  Generator generator;
  const RsaKey& key = kRsaKeys[0];
  RsaCipher encrypt(TCipher::kOpEncrypt, FromHex(key.modulus), FromHex(key.exponent));
  RsaCipher decrypt(TCipher::kOpDecrypt, FromHex(key.modulus), FromHex(key.exponent));
  TCrypter encrypter(encrypt), decrypter(decrypt);
  Bytes data = Buffer(kMessage, 64), out(64);
  EXPECT_EQ(64, encrypter.CryptData(data.data(), 2, true));
  EXPECT_EQ(Hex(generator.NextBlock(64, kMessage)), Hex(Opened(key, data)));
  EXPECT_EQ(64, encrypter.CryptData(kMessage.data(), 2, out.data(), true));
  EXPECT_EQ(Hex(generator.NextBlock(64, kMessage)), Hex(Opened(key, out)));
  const Bytes signature = FromHex(key.signature);
  EXPECT_EQ(35, decrypter.CryptData(signature.data(), 64, out.data(), true));
  EXPECT_EQ(kSignedDigest, Hex(out.data(), 35));
}

// Keys in BER.

Bytes Element(unsigned char tag, const Bytes& content) {
  const size_t n = content.size();
  if (n < 0x80) return Bytes{tag, static_cast<unsigned char>(n)} + content;
  return Bytes{tag, 0x82, static_cast<unsigned char>(n >> 8), static_cast<unsigned char>(n)} +
         content;
}

Bytes KeyOf(const RsaKey& key) {
  return FromHex(key.header) + FromHex(key.modulus) + Element(2, FromHex(key.exponent));
}

// The parts of a key, for a cipher that opens blocks of twelve bytes.
struct Parts {
  Bytes algorithm = Element(0x30, {5, 0});
  Bytes modulus = Element(2, Bytes{0} + Bytes(12, 0xFF));
  Bytes exponent = Element(2, {1});
  unsigned char unusedBits = 0;

  Bytes Bits() const { return Element(3, Bytes{unusedBits} + Element(0x30, modulus + exponent)); }
  Bytes Key() const { return Element(0x30, algorithm + Bits()); }
};

// The size of the modulus that a cipher has after loading ber, or -1. Nothing is read past the end,
// which is that of a block of memory.
int Loaded(const Bytes& ber) {
  TRsaPublicCipher cipher(TCipher::kOpDecrypt);
  const int result = cipher.BerInit(ber.data(), Size(ber));
  EXPECT_TRUE(result == 0 || result == Size(ber));
  return result != 0 ? cipher.GetModulusSize() : -1;
}

TEST(RsaPublicCipher, LoadsKeysOfOpenssl) {
  for (const RsaKey& key : kRsaKeys) {
    SCOPED_TRACE(key.bits);
    const Bytes ber = KeyOf(key), signature = FromHex(key.signature);
    TRsaPublicCipher cipher(TCipher::kOpDecrypt);
    EXPECT_EQ(Size(ber), cipher.BerInit(ber.data(), Size(ber)));
    EXPECT_EQ(key.bits / 8, cipher.GetModulusSize());
    EXPECT_EQ(key.bits / 8 % 4 < 2 ? kSignedDigest : std::string("0"),
              Processed(cipher, signature, Size(signature)));
  }
}

TEST(RsaPublicCipher, RefusesEveryKeyThatIsCutShort) {
  for (int i : {0, 5}) {
    const Bytes ber = KeyOf(kRsaKeys[i]);
    for (int length = 0; length < Size(ber); ++length) {
      EXPECT_EQ(-1, Loaded(Bytes(ber.begin(), ber.begin() + length))) << length;
    }
  }
  TRsaPublicCipher cipher(TCipher::kOpDecrypt);
  EXPECT_EQ(0, cipher.BerInit(nullptr, 0));
  const Bytes ber = KeyOf(kRsaKeys[0]);
  EXPECT_EQ(0, cipher.BerInit(ber.data(), -1));
  EXPECT_EQ(0, cipher.BerInit(ber.data(), INT_MIN));
}

TEST(RsaPublicCipher, BytesAfterTheKeyAreCountedAsAccepted) {
  const Bytes ber = KeyOf(kRsaKeys[0]) + Bytes(10, 0x99);
  EXPECT_EQ(64, Loaded(ber));
}

TEST(RsaPublicCipher, TheSixTagsAreCheckedAndNothingElse) {
  const Bytes ber = Parts().Key();
  ASSERT_EQ(12, Loaded(ber));
  // Offsets of the tags: key, algorithm, bit string, sequence in it, modulus, exponent.
  const size_t bits = 2 + Parts().algorithm.size(), modulus = bits + 5;
  const size_t tags[] = {0, 2, bits, bits + 3, modulus, modulus + 15};
  for (size_t tag : tags) {
    for (int value = 0; value < 256; ++value) {
      Bytes changed = ber;
      changed[tag] = static_cast<unsigned char>(value);
      EXPECT_EQ(changed == ber ? 12 : -1, Loaded(changed)) << tag << " " << value;
    }
  }
  Parts parts;
  for (const Bytes& algorithm :
       {Bytes{}, Bytes{1}, FromHex("06092a864886f70d010101"), Bytes(100, 0xFF), Bytes(300, 0x30)}) {
    parts.algorithm = Element(0x30, algorithm);
    EXPECT_EQ(12, Loaded(parts.Key()));
  }
  for (int unused : {1, 7, 8, 255}) {
    parts.unusedBits = static_cast<unsigned char>(unused);
    EXPECT_EQ(12, Loaded(parts.Key()));
  }
}

TEST(RsaPublicCipher, TheFirstByteOfTheModulusIsDroppedWhateverItIs) {
  const Bytes block = Bytes{0, 1, 0} + Bytes(9, 'x');
  Parts parts;
  // Without the zero in front, the top byte is lost.
  parts.modulus = Element(2, Bytes(13, 0xFF));
  const Bytes ber = parts.Key();
  TRsaPublicCipher cipher(TCipher::kOpDecrypt);
  EXPECT_EQ(Size(ber), cipher.BerInit(ber.data(), Size(ber)));
  EXPECT_EQ(12, cipher.GetModulusSize());
  EXPECT_EQ("787878787878787878", Processed(cipher, block, 12));
  // A key of 128 bytes loads with 127.
  parts.modulus = Element(2, Bytes(128, 0xC1));
  EXPECT_EQ(127, Loaded(parts.Key()));
  // Two zeros in front leave one of them.
  parts.modulus = Element(2, Bytes{0, 0} + Bytes(12, 0xFF));
  EXPECT_EQ(13, Loaded(parts.Key()));
  parts.modulus = Element(2, {0});
  EXPECT_EQ(0, Loaded(parts.Key()));
  parts.modulus = Element(2, {});
  EXPECT_EQ(-1, Loaded(parts.Key()));
}

TEST(RsaPublicCipher, TheExponentIsTakenWhole) {
  Parts parts;
  const Bytes block = Bytes{0, 1, 0} + Bytes(9, 'x');
  for (const Bytes& exponent : {Bytes{1}, Bytes{0, 1}, Bytes(200) + Bytes{1}}) {
    parts.exponent = Element(2, exponent);
    const Bytes ber = parts.Key();
    TRsaPublicCipher cipher(TCipher::kOpDecrypt);
    EXPECT_EQ(Size(ber), cipher.BerInit(ber.data(), Size(ber)));
    EXPECT_EQ("787878787878787878", Processed(cipher, block, 12));
  }
  parts.exponent = Element(2, {});  // 0, and every power is 1
  EXPECT_EQ(12, Loaded(parts.Key()));
}

// The tag and length of the element before are not taken off, so an outer length that is too small
// by those two bytes is let through, and by three is not.
TEST(RsaPublicCipher, WhatFollowsAnElementMayReachPastTheOuterLengthByItsHeader) {
  const Parts parts;
  for (int missing = 0; missing <= 3; ++missing) {
    Bytes outer = parts.Key();
    outer[1] = static_cast<unsigned char>(outer[1] - missing);
    EXPECT_EQ(missing <= 2 ? 12 : -1, Loaded(outer)) << missing;

    Bytes inner = Element(0x30, parts.modulus + parts.exponent);
    inner[1] = static_cast<unsigned char>(inner[1] - missing);
    const Bytes bits = Element(3, Bytes{0} + inner);
    EXPECT_EQ(missing <= 2 ? 12 : -1, Loaded(Element(0x30, parts.algorithm + bits))) << missing;
  }
}

TEST(RsaPublicCipher, TheSequenceEndsWithinItsBitString) {
  const Parts parts;
  for (int missing : {0, 1, 2}) {
    Bytes bits = parts.Bits();
    bits[1] = static_cast<unsigned char>(bits[1] - missing);
    EXPECT_EQ(missing == 0 ? 12 : -1, Loaded(Element(0x30, parts.algorithm + bits))) << missing;
  }
}

TEST(RsaPublicCipher, NoElementReachesPastTheInput) {
  const Parts parts;
  for (unsigned char missing = 1; missing <= 6; ++missing) {
    Bytes outer = parts.Key();
    outer[1] = static_cast<unsigned char>(outer[1] - missing);
    outer.resize(outer.size() - missing);
    outer.shrink_to_fit();
    EXPECT_EQ(-1, Loaded(outer)) << missing;
  }
}

TEST(RsaPublicCipher, IndefiniteLengthsEndWithTheInput) {
  const Parts parts;
  const Bytes integers = parts.modulus + parts.exponent;
  const auto open = [](unsigned char tag, const Bytes& content) {
    return Bytes{tag, 0x80} + content;
  };
  const Bytes bits = Element(3, Bytes{0} + Element(0x30, integers));
  EXPECT_EQ(12, Loaded(open(0x30, parts.algorithm + bits)));
  EXPECT_EQ(12,
            Loaded(Element(0x30, parts.algorithm + open(3, Bytes{0} + Element(0x30, integers)))));
  EXPECT_EQ(12,
            Loaded(Element(0x30, parts.algorithm + Element(3, Bytes{0} + open(0x30, integers)))));
  EXPECT_EQ(12, Loaded(open(0x30, parts.algorithm + open(3, Bytes{0} + open(0x30, integers)))));
  // Nothing follows an element without an end, and integers have one.
  EXPECT_EQ(-1, Loaded(Element(0x30, open(0x30, {5, 0}) + bits)));
  EXPECT_EQ(-1, Loaded(open(0x30, open(0x30, {5, 0}) + bits)));
  Parts openParts;
  openParts.modulus = open(2, Bytes{0} + Bytes(12, 0xFF));
  EXPECT_EQ(-1, Loaded(openParts.Key()));
  openParts = Parts();
  openParts.exponent = open(2, {1});
  EXPECT_EQ(-1, Loaded(openParts.Key()));
  // Bit strings and sequences with nothing in them.
  EXPECT_EQ(-1, Loaded(open(0x30, {})));
  EXPECT_EQ(-1, Loaded(open(0x30, parts.algorithm + open(3, {}))));
  EXPECT_EQ(-1, Loaded(open(0x30, parts.algorithm + open(3, {0}))));
  EXPECT_EQ(-1, Loaded(open(0x30, parts.algorithm + open(3, {0, 0x30, 0x80}))));
  EXPECT_EQ(-1, Loaded(Element(0x30, parts.algorithm + Element(3, {}))));
}

TEST(RsaPublicCipher, ARefusedKeyLeavesTheOldOne) {
  OpenCipher cipher(TCipher::kOpDecrypt, 64);
  const Bytes ber = KeyOf(kRsaKeys[0]);
  EXPECT_EQ(0, cipher.BerInit(ber.data(), Size(ber) - 1));
  Parts openParts;
  openParts.exponent = Bytes{2, 0x80, 1};
  const Bytes openKey = openParts.Key();
  EXPECT_EQ(0, cipher.BerInit(openKey.data(), Size(openKey)));
  EXPECT_EQ("6162", Processed(cipher, Block(64, 1, kMessage), 64));
}

TEST(RsaPublicCipher, DamagedKeysAreRefusedOrLoadedWithoutHarm) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Bytes good[] = {KeyOf(kRsaKeys[0]), Parts().Key(), KeyOf(kRsaKeys[5])};
  for (int i = 0; i < Random::Cases(); ++i) {
    Bytes ber = good[random.Between(0, 2)];
    for (int changes = random.Between(1, 3); changes > 0; --changes) {
      const size_t at = static_cast<size_t>(random.Between(0, std::min(Size(ber) - 1, 40)));
      ber[at] = static_cast<unsigned char>(random.Between(0, 1) != 0 ? random.Next() : 0x80);
    }
    ber.resize(static_cast<size_t>(random.Between(Size(ber) - 4, Size(ber))));
    ber.shrink_to_fit();
    ASSERT_GE(Size(ber), Loaded(ber));
  }
}

// Memory.

TEST(RsaPublicCipher, TheWorkingBlockIsOnTheHeapFrom257BytesOn) {
  for (TCipher::ECipherOp op : {TCipher::kOpEncrypt, TCipher::kOpDecrypt}) {
    Generator generator;
    int requests[2];
    for (size_t longer : {0u, 1u}) {
      TestAllocator allocator;
      OpenCipher cipher(op, 256 + longer);
      Bytes block = Block(256 + longer, 1, kMessage);
      allocator.Reset();
      cipher.ProcessData(block.data(), op == TCipher::kOpEncrypt ? 2 : Size(block), true);
      requests[longer] = allocator.Requests();
    }
    EXPECT_EQ(requests[0] + 1, requests[1]);
  }
}

TEST(RsaPublicCipher, EveryRefusedRequestGivesZeroAndLeavesTheData) {
  Generator generator;
  for (int i : {0, 7}) {  // without and with a working block on the heap
    const RsaKey& key = kRsaKeys[i];
    const Bytes ber = KeyOf(key), signature = FromHex(key.signature);
    ForEachRefusedRequest([&](TestAllocator& allocator) {
      TRsaPublicCipher cipher(TCipher::kOpDecrypt);
      const int loaded = cipher.BerInit(ber.data(), Size(ber));
      EXPECT_EQ(loaded == 0, allocator.Refused() != 0);
      const std::string result = Processed(cipher, signature, Size(signature));
      EXPECT_EQ(allocator.Refused() != 0 ? "0" : kSignedDigest, result);
    });
  }
  for (size_t k : {64u, 260u}) {
    ForEachRefusedRequest([&](TestAllocator& allocator) {
      OpenCipher cipher(TCipher::kOpEncrypt, k);
      const std::string result = Processed(cipher, Buffer(kMessage, k), 2);
      EXPECT_EQ(allocator.Refused() != 0, result == "0");
    });
  }
}

TEST(RsaPublicCipher, EveryBlockIsWipedBeforeItIsFreed) {
  KEST::RandInit();  // its generator comes and goes under other hooks
  {
    const WipeChecker checker;
    {
      const RsaKey& key = kRsaKeys[7];
      RsaCipher cipher(TCipher::kOpDecrypt, FromHex(key.modulus), FromHex(key.exponent));
      Bytes data = FromHex(key.signature);
      EXPECT_EQ(35, cipher.DecryptData(data.data(), Size(data), true));
      OpenCipher open(TCipher::kOpEncrypt, 260);
      data.resize(260);
      EXPECT_EQ(260, open.EncryptData(data.data(), 35, true));
    }
    EXPECT_LT(10, checker.Freed());
    EXPECT_EQ(0, checker.Dirty());
  }
  KEST::RandTerm();
}

TRsaPublicCipher* s_cipher;
Bytes s_data;
int s_length;

// The stack of a thread on which the cipher worked on length bytes of data, which became s_data.
Bytes StackAfterProcessing(TRsaPublicCipher& cipher, const Bytes& data, int length) {
  s_cipher = &cipher;
  s_data = data;
  s_length = length;
  return StackAfter([] { s_cipher->ProcessData(s_data.data(), s_length, true); });
}

// A block of 32 bytes is on the stack while it is worked on.
TEST(RsaPublicCipher, LeavesNoMessageOnTheStack) {
  Generator generator;
  const Bytes message = ToBytes("nobody else sees this");
  OpenCipher encrypt(TCipher::kOpEncrypt, 32), decrypt(TCipher::kOpDecrypt, 32);
  Bytes stack = StackAfterProcessing(encrypt, Buffer(message, 32), 21);
  EXPECT_EQ(Hex(message), Hex(s_data.data() + 11, 21)) << "encrypted by an open cipher";
  EXPECT_FALSE(Holds(stack, message.data(), message.size()));
  stack = StackAfterProcessing(decrypt, Block(32, 1, message), 32);
  EXPECT_EQ(Hex(message), Hex(s_data.data(), 21));
  EXPECT_FALSE(Holds(stack, message.data(), message.size()));
}

}  // namespace
