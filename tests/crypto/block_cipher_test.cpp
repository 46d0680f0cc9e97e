#include "crypto/cipher_checks.h"

namespace {

using namespace kest_test;
using KEST::TBlockCipher;
using KEST::TCipher;

constexpr TBlockCipher::ECipherMode kUnknown = static_cast<TBlockCipher::ECipherMode>(2);

// Any block size; not secret, but neither its own inverse nor blind to the order of bytes.
class TToyCipher : public TBlockCipher {
 public:
  TToyCipher(TCipher::ECipherOp direction, int size) : TBlockCipher(direction), blockSize(size) {}

  using TBlockCipher::chain;
  using TBlockCipher::iv;
  using TBlockCipher::mode;

  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  int GetBlockSize() const override { return blockSize; }
  void ProcessBlock(unsigned char* block) const override {
    if (op == kEncrypt) {
      Encrypt(block, blockSize);
    } else {
      Decrypt(block, blockSize);
    }
  }

  // Each byte takes in the one before it; the first one is changed as well.
  static void Encrypt(unsigned char* block, int size) {
    for (int n = 0; n < size; ++n) {
      block[n] = static_cast<unsigned char>(5 * block[n] + (n > 0 ? block[n - 1] : 0) + 0x3c);
    }
  }
  // 5 * 205 is 1 modulo 256.
  static void Decrypt(unsigned char* block, int size) {
    for (int n = size - 1; n >= 0; --n) {
      block[n] = static_cast<unsigned char>(205 * (block[n] - (n > 0 ? block[n - 1] : 0) - 0x3c));
    }
  }

 private:
  int blockSize;
};

std::string Chain(const TToyCipher& cipher) { return Hex(cipher.chain, 8); }

// The modes and the padding written from their definitions, over a whole message.
struct SModel {
  int size;
  int mode;
  Bytes iv, chain;

  explicit SModel(int blockSize)
      : size(blockSize), mode(0), iv(static_cast<size_t>(blockSize)), chain(iv) {}

  Bytes Encrypt(Bytes data, bool final) {
    const int n = static_cast<int>(data.size()) / size, r = static_cast<int>(data.size()) % size;
    if (r != 0 && !final) return {};
    const bool known = mode == 0 || mode == 1;
    if (final)
      data.insert(data.end(), static_cast<size_t>(size - r), known ? Byte(size - r) : 0xee);
    if (!known) return data;
    for (int block = 0; block < n + (final ? 1 : 0); ++block) {
      unsigned char* bytes = data.data() + block * size;
      for (int k = 0; mode == 0 && k < size; ++k) bytes[k] ^= chain[static_cast<size_t>(k)];
      TToyCipher::Encrypt(bytes, size);
      if (mode == 0) chain.assign(bytes, bytes + size);
    }
    if (final && mode == 0) chain = iv;
    return data;
  }

  // length is what the call returns; the bytes behind it are decrypted too.
  Bytes Decrypt(Bytes data, bool final, int* length) {
    *length = 0;
    if (static_cast<int>(data.size()) % size != 0) return data;
    *length = static_cast<int>(data.size());
    if (mode != 0 && mode != 1) return data;
    for (size_t at = 0; at < data.size(); at += static_cast<size_t>(size)) {
      const Bytes saved(data.begin() + static_cast<int>(at),
                        data.begin() + static_cast<int>(at) + size);
      TToyCipher::Decrypt(data.data() + at, size);
      for (size_t k = 0; mode == 0 && k < saved.size(); ++k) data[at + k] ^= chain[k];
      if (mode == 0) chain = saved;
    }
    if (final && mode == 0) chain = iv;
    if (final && !data.empty()) *length -= data.back() < size ? data.back() : size;
    return data;
  }

  static unsigned char Byte(int value) { return static_cast<unsigned char>(value); }
};

TEST(BlockCipher, XorBlockChangesNBytes) {
  unsigned char data[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  const unsigned char with[8] = {0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff, 0xff};
  for (int n : {0, -1, INT_MIN}) {
    TBlockCipher::XorBlock(data, with, n);
    EXPECT_EQ("0102030405060708", Hex(data, 8)) << n;
  }
  TBlockCipher::XorBlock(data, with, 3);
  EXPECT_EQ("fefdfc0405060708", Hex(data, 8));
  TBlockCipher::XorBlock(data + 2, data + 2, 6);
  EXPECT_EQ("fefd000000000000", Hex(data, 8));
  TBlockCipher::XorBlock(nullptr, nullptr, 0);
}

TEST(BlockCipher, SetModeStoresAnyValue) {
  TToyCipher cipher(kEncrypt, 8);
  for (int mode : {1, 0, 2, -1, INT_MAX, INT_MIN}) {
    cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    EXPECT_EQ(mode, cipher.mode);
  }
}

TEST(BlockCipher, SetIvCopiesOneBlockIntoVectorAndChain) {
  const Bytes vector = FromHex("a1a2a3a4a5a6a7a8");
  for (int size = 1; size <= 8; ++size) {
    SCOPED_TRACE(size);
    TToyCipher cipher(kEncrypt, size);
    memset(cipher.iv, 0xee, 8);
    memset(cipher.chain, 0xdd, 8);
    const size_t count = static_cast<size_t>(size);
    // Exactly a block, so that a sanitizer sees a read beyond it.
    cipher.SetIv(Bytes(vector.begin(), vector.begin() + size).data());
    const std::string expected = Hex(vector.data(), count);
    EXPECT_EQ(expected + std::string(16 - 2 * count, 'e'), Hex(cipher.iv, 8));
    EXPECT_EQ(expected + std::string(16 - 2 * count, 'd'), Chain(cipher));
    cipher.SetIv(nullptr);
    EXPECT_EQ(std::string(2 * count, '0') + std::string(16 - 2 * count, 'e'), Hex(cipher.iv, 8));
    EXPECT_EQ(std::string(2 * count, '0') + std::string(16 - 2 * count, 'd'), Chain(cipher));
  }
}

TEST(BlockCipher, SetIvTakesTheVectorItself) {
  TToyCipher cipher(kEncrypt, 8);
  cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
  Process(cipher, Counting(8), false);
  cipher.SetIv(cipher.iv);
  EXPECT_EQ("a1a2a3a4a5a6a7a8", Hex(cipher.iv, 8));
  EXPECT_EQ("a1a2a3a4a5a6a7a8", Chain(cipher));
}

TEST(BlockCipher, ABlockSizeOutside1To8DoesNothing) {
  for (int size : {0, 9, -1, -8, 16, INT_MAX, INT_MIN}) {
    for (TCipher::ECipherOp op : {kEncrypt, kDecrypt}) {
      for (int mode : {0, 1, 2}) {
        SCOPED_TRACE(size);
        TToyCipher cipher(op, size);
        cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
        memset(cipher.iv, 0xee, 8);
        memset(cipher.chain, 0xdd, 8);
        cipher.SetIv(Counting(16).data());
        cipher.SetIv(nullptr);
        for (bool final : {false, true}) {
          Bytes data = Counting(64);
          for (int length : {0, 1, 8, 9, 48}) {
            EXPECT_EQ(0, cipher.EncryptData(data.data(), length, final));
            EXPECT_EQ(0, cipher.DecryptData(data.data(), length, final));
            EXPECT_EQ(0, cipher.ProcessData(data.data(), length, final));
          }
          EXPECT_EQ(Counting(64), data);
        }
        EXPECT_EQ("eeeeeeeeeeeeeeee", Hex(cipher.iv, 8));
        EXPECT_EQ("dddddddddddddddd", Chain(cipher));
      }
    }
  }
}

TEST(BlockCipher, EncryptingNothingFinallyGivesOneBlockOfPadding) {
  for (int size = 1; size <= 8; ++size) {
    for (TBlockCipher::ECipherMode mode : {kCbc, kEcb}) {
      TToyCipher cipher(kEncrypt, size);
      cipher.SetMode(mode);
      unsigned char expected[8], data[8];
      memset(expected, size, sizeof(expected));
      TToyCipher::Encrypt(expected, size);
      EXPECT_EQ(size, cipher.EncryptData(data, 0, true));
      EXPECT_EQ(Hex(expected, static_cast<size_t>(size)), Hex(data, static_cast<size_t>(size)));
    }
  }
}

TEST(BlockCipher, PadsWithOneByteToAWholeBlock) {
  for (int length = 0; length <= 16; ++length) {
    SCOPED_TRACE(length);
    TToyCipher cipher(kEncrypt, 8);
    cipher.SetMode(kEcb);
    Bytes data = Process(cipher, Counting(length), true);
    const int pad = 8 - length % 8;
    ASSERT_EQ(length + pad, static_cast<int>(data.size()));
    for (size_t at = 0; at < data.size(); at += 8) TToyCipher::Decrypt(data.data() + at, 8);
    Bytes expected = Counting(length);
    expected.insert(expected.end(), static_cast<size_t>(pad), static_cast<unsigned char>(pad));
    EXPECT_EQ(Hex(expected), Hex(data));
  }
}

TEST(BlockCipher, PartsOfBlocksAreRefused) {
  for (int mode : {0, 1, 2}) {
    TToyCipher encrypting(kEncrypt, 8), decrypting(kDecrypt, 8);
    for (TToyCipher* cipher : {&encrypting, &decrypting}) {
      cipher->SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
      cipher->SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    }
    Bytes data = Counting(24);
    for (int length : {1, 5, 7, 9, 15}) {
      EXPECT_EQ(0, encrypting.EncryptData(data.data(), length, false)) << length;
      EXPECT_EQ(0, decrypting.DecryptData(data.data(), length, false)) << length;
      EXPECT_EQ(0, decrypting.DecryptData(data.data(), length, true)) << length;
    }
    EXPECT_EQ(Counting(24), data);
    EXPECT_EQ("a1a2a3a4a5a6a7a8", Chain(encrypting));
    EXPECT_EQ("a1a2a3a4a5a6a7a8", Chain(decrypting));
  }
}

TEST(BlockCipher, LengthsBelow0AreRefused) {
  for (int mode : {0, 1, 2}) {
    for (bool final : {false, true}) {
      TToyCipher cipher(kEncrypt, 8);
      cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
      Process(cipher, Counting(8), false);
      const std::string chain = Chain(cipher);
      for (int length : {-1, -8, -16, INT_MIN, INT_MIN + 8}) {
        EXPECT_EQ(0, cipher.EncryptData(nullptr, length, final)) << length;
        EXPECT_EQ(0, cipher.DecryptData(nullptr, length, final)) << length;
        EXPECT_EQ(0, cipher.ProcessData(nullptr, length, final)) << length;
      }
      EXPECT_EQ(chain, Chain(cipher)) << "a refused call ends no message";
    }
  }
}

// No padded length fits an int any more.
TEST(BlockCipher, LengthsAtTheLimitAreRefused) {
  struct SRow {
    int size, length;
  };
  const SRow rows[] = {
      {8, INT_MAX}, {8, INT_MAX - 7}, {1, INT_MAX}, {7, INT_MAX}, {7, INT_MAX - 1}};
  for (const SRow& row : rows) {
    for (int mode : {0, 1, 2}) {
      TToyCipher cipher(kEncrypt, row.size);
      cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
      EXPECT_EQ(0, cipher.EncryptData(nullptr, row.length, true)) << row.size << ' ' << row.length;
    }
  }
  TToyCipher cipher(kEncrypt, 8);
  cipher.SetMode(kUnknown);
  EXPECT_EQ(INT_MAX - 7, cipher.EncryptData(nullptr, INT_MAX - 7, false));
  EXPECT_EQ(INT_MAX - 7, cipher.EncryptData(nullptr, INT_MAX - 8, true));
  EXPECT_EQ(INT_MAX - 7, cipher.DecryptData(nullptr, INT_MAX - 7, true));
  EXPECT_EQ(0, cipher.DecryptData(nullptr, INT_MAX, true));
}

TEST(BlockCipher, NothingWithoutFinalIsNothing) {
  for (int mode : {0, 1, 2}) {
    TToyCipher cipher(kEncrypt, 8);
    cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    Process(cipher, Counting(8), false);
    const std::string chain = Chain(cipher);
    EXPECT_EQ(0, cipher.EncryptData(nullptr, 0, false));
    EXPECT_EQ(0, cipher.DecryptData(nullptr, 0, false));
    EXPECT_EQ(chain, Chain(cipher));
  }
}

// The byte before the buffer is not taken for a padding length.
TEST(BlockCipher, DecryptingNothingFinallyGives0AndEndsTheMessage) {
  for (int mode : {0, 1, 2}) {
    SCOPED_TRACE(mode);
    TToyCipher cipher(kDecrypt, 8);
    cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
    memset(cipher.chain, 0xcc, 8);
    cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    unsigned char data[2] = {5, 6};
    EXPECT_EQ(0, cipher.DecryptData(data + 1, 0, true));
    EXPECT_EQ(5, data[0]);
    EXPECT_EQ(6, data[1]);
    EXPECT_EQ(mode == 0 ? "a1a2a3a4a5a6a7a8" : "cccccccccccccccc", Chain(cipher));
    EXPECT_EQ(0, cipher.DecryptData(nullptr, 0, true));
  }
}

// For every last byte: 0 removes nothing, a value above the block size a block, and the other
// padding bytes are never compared.
TEST(BlockCipher, TheLastByteAloneTellsThePadding) {
  for (int size = 1; size <= 8; ++size) {
    for (TBlockCipher::ECipherMode mode : {kCbc, kEcb}) {
      for (int last = 0; last <= 255; ++last) {
        TToyCipher encrypting(kEncrypt, size), decrypting(kDecrypt, size);
        encrypting.SetMode(mode);
        decrypting.SetMode(mode);
        Bytes plaintext = Counting(3 * size);
        plaintext.back() = static_cast<unsigned char>(last);
        Bytes data = Process(encrypting, plaintext, false);
        const int pad = last < size ? last : size;
        ASSERT_EQ(3 * size - pad, decrypting.DecryptData(data.data(), 3 * size, true)) << last;
        ASSERT_EQ(plaintext, data) << "the padding stays behind the result";
      }
    }
  }
}

TEST(BlockCipher, WithoutFinalNoPaddingIsRemoved) {
  TToyCipher encrypting(kEncrypt, 8), decrypting(kDecrypt, 8);
  const Bytes ciphertext = Process(encrypting, Counting(13), true);
  const Bytes plaintext = Process(decrypting, ciphertext, false);
  ASSERT_EQ(16u, plaintext.size());
  EXPECT_EQ(Hex(Counting(13)) + "030303", Hex(plaintext));
}

TEST(BlockCipher, FinalInCbcGoesBackToTheVector) {
  TToyCipher cipher(kEncrypt, 8);
  cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
  const Bytes first = Process(cipher, Counting(20), true);
  EXPECT_EQ("a1a2a3a4a5a6a7a8", Chain(cipher));
  EXPECT_EQ(first, Process(cipher, Counting(20), true));
  const Bytes part = Process(cipher, Counting(16), false);
  EXPECT_EQ(Hex(part.data() + 8, 8), Chain(cipher)) << "the last ciphertext";
  EXPECT_NE(part, Process(cipher, Counting(16), false)) << "the chain carries over";

  TToyCipher decrypting(kDecrypt, 8);
  decrypting.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
  for (int n = 0; n < 2; ++n) EXPECT_EQ(Counting(20), Process(decrypting, first, true));
  EXPECT_EQ("a1a2a3a4a5a6a7a8", Chain(decrypting));
}

TEST(BlockCipher, EcbLeavesTheChainAlone) {
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt}) {
    TToyCipher cipher(op, 8);
    cipher.SetMode(kEcb);
    cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
    memset(cipher.chain, 0xcc, 8);
    for (bool final : {false, true}) {
      Process(cipher, Counting(16), final);
      EXPECT_EQ("cccccccccccccccc", Chain(cipher));
    }
  }
}

TEST(BlockCipher, AMessageMayComeInPieces) {
  for (int size = 1; size <= 8; ++size) {
    for (TBlockCipher::ECipherMode mode : {kCbc, kEcb}) {
      const Bytes message = Counting(4 * size + size / 2);
      TToyCipher whole(kEncrypt, size), pieces(kEncrypt, size), back(kDecrypt, size);
      for (TToyCipher* cipher : {&whole, &pieces, &back}) {
        cipher->SetMode(mode);
        cipher->SetIv(Counting(8).data());
      }
      const Bytes expected = Process(whole, message, true);
      for (int cut = 0; cut <= 4; ++cut) {
        const auto at = message.begin() + cut * size;
        Bytes result = Process(pieces, Bytes(message.begin(), at), false);
        const Bytes rest = Process(pieces, Bytes(at, message.end()), true);
        result.insert(result.end(), rest.begin(), rest.end());
        EXPECT_EQ(expected, result) << cut;

        const auto in = expected.begin() + cut * size;
        result = Process(back, Bytes(expected.begin(), in), false);
        const Bytes end = Process(back, Bytes(in, expected.end()), true);
        result.insert(result.end(), end.begin(), end.end());
        EXPECT_EQ(message, result) << cut;
      }
    }
  }
}

// No check, on purpose: the lengths are returned as if, padding neither written nor removed.
TEST(BlockCipher, AnUnknownModeTouchesNothing) {
  for (int mode : {2, 3, -1, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(mode);
    TToyCipher cipher(kEncrypt, 8);
    cipher.SetIv(FromHex("a1a2a3a4a5a6a7a8").data());
    memset(cipher.chain, 0xcc, 8);
    cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    Bytes data = Counting(32);
    data[15] = 4;
    const Bytes before = data;
    EXPECT_EQ(16, cipher.EncryptData(data.data(), 16, false));
    EXPECT_EQ(24, cipher.EncryptData(data.data(), 16, true));
    EXPECT_EQ(16, cipher.EncryptData(data.data(), 13, true));
    EXPECT_EQ(8, cipher.EncryptData(data.data(), 0, true));
    EXPECT_EQ(16, cipher.DecryptData(data.data(), 16, false));
    EXPECT_EQ(16, cipher.DecryptData(data.data(), 16, true));
    EXPECT_EQ(before, data);
    EXPECT_EQ("cccccccccccccccc", Chain(cipher));
    EXPECT_EQ("a1a2a3a4a5a6a7a8", Hex(cipher.iv, 8));
  }
}

TEST(BlockCipher, EveryOpButEncryptDecrypts) {
  for (int op : {0, 1, 2, -1, INT_MAX, INT_MIN}) {
    TToyCipher cipher(static_cast<TCipher::ECipherOp>(op), 8), same(cipher);
    Bytes data = Counting(24), expected = Counting(24);
    const int length = cipher.ProcessData(data.data(), 16, true);
    if (op == 0) {
      EXPECT_EQ(24, length);
      EXPECT_EQ(24, same.EncryptData(expected.data(), 16, true));
    } else {
      EXPECT_EQ(length, same.DecryptData(expected.data(), 16, true));
      EXPECT_LE(length, 16);
    }
    EXPECT_EQ(expected, data) << op;
  }
}

// The direction of the engine is the call's, that of ProcessBlock the object's.
TEST(BlockCipher, TheEngineRunsBothWaysOnOneObject) {
  TToyCipher cipher(kDecrypt, 8);
  cipher.SetMode(kEcb);
  Bytes data = Counting(16), expected = data;
  expected.insert(expected.end(), 8, 8);
  data.resize(24);
  EXPECT_EQ(24, cipher.EncryptData(data.data(), 16, true));
  for (size_t at = 0; at < 24; at += 8) TToyCipher::Decrypt(expected.data() + at, 8);
  EXPECT_EQ(expected, data);
}

TEST(BlockCipher, ACopyGoesOnByItself) {
  TToyCipher cipher(kEncrypt, 8);
  cipher.SetIv(Counting(8).data());
  CopiesGoOnByThemselves(cipher, TToyCipher(kDecrypt, 4));
}

TEST(BlockCipher, DestructionWipesTheChain) {
  alignas(TToyCipher) unsigned char place[sizeof(TToyCipher)];
  TToyCipher* cipher = ::new (place) TToyCipher(kEncrypt, 8);
  cipher->SetIv(Counting(8).data());
  Process(*cipher, Counting(8), false);
  const unsigned char *iv = cipher->iv, *chain = cipher->chain;
  EXPECT_NE(std::string(16, '0'), Hex(iv, 8));
  EXPECT_NE(std::string(16, '0'), Hex(chain, 8));
  cipher->~TToyCipher();
  EXPECT_EQ(std::string(16, '0'), Hex(iv, 8));
  EXPECT_EQ(std::string(16, '0'), Hex(chain, 8));
}

// Objects of both directions and all block sizes through random calls, beside the model: bytes,
// lengths, chain, and the bytes behind the result.
TEST(BlockCipher, AgreesWithTheModelForRandomCalls) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(); n < cases;) {
    const int size = random.Between(1, 8);
    const bool encrypts = random.Between(0, 1) == 0;
    TToyCipher cipher(encrypts ? kEncrypt : kDecrypt, size);
    SModel model(size);
    for (int calls = random.Between(1, 20); calls > 0; --calls, ++n) {
      if (random.Between(0, 3) == 0) {
        model.mode = random.Between(0, 2);
        cipher.SetMode(static_cast<TBlockCipher::ECipherMode>(model.mode));
      }
      if (random.Between(0, 3) == 0) {
        model.iv = model.chain = random.Bytes(size);
        cipher.SetIv(model.iv.data());
      }
      const bool final = random.Between(0, 2) == 0;
      const int whole = size * random.Between(0, 5);
      const Bytes message =
          random.Bytes(whole + (random.Between(0, 3) == 0 ? random.Between(0, 7) : 0));
      Bytes data = message;
      data.insert(data.end(), 8, 0xee);
      const int length = static_cast<int>(message.size());
      const int result = cipher.ProcessData(data.data(), length, final);

      Bytes expected;
      int expectedResult;
      if (encrypts) {
        expected = model.Encrypt(message, final);
        expectedResult = static_cast<int>(expected.size());
        if (expected.empty()) expected = message;
      } else {
        expected = model.Decrypt(message, final, &expectedResult);
      }
      expected.resize(message.size() + 8, 0xee);
      ASSERT_EQ(expectedResult, result) << "case " << n << ", " << Hex(message);
      ASSERT_EQ(Hex(expected), Hex(data)) << "case " << n << ", " << Hex(message);
      ASSERT_EQ(Hex(model.chain), Hex(cipher.chain, model.chain.size())) << "case " << n;
      ASSERT_EQ(Hex(model.iv), Hex(cipher.iv, model.iv.size())) << "case " << n;
    }
  }
}

}  // namespace
