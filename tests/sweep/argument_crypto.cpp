// kest/crypto.h at the edges of its arguments.

#include "crypto/cipher_checks.h"
#include "crypto/rsa_keys.h"
#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;
using Block = GuardedBlock<unsigned char>;

constexpr int kBlockSize = 8;
const Bytes kKey = Counting(kBlockSize);

// More data than this is no edge but work.
constexpr long long kMuchData = 1000;

TCipher::ECipherOp Op(int op) { return static_cast<TCipher::ECipherOp>(op); }
TBlockCipher::ECipherMode Mode(int mode) { return static_cast<TBlockCipher::ECipherMode>(mode); }
bool IsMode(int mode) { return mode == kCbc || mode == kEcb; }

// Blocks of any size, which are inverted.
class ToyBlockCipher : public TBlockCipher {
 public:
  explicit ToyBlockCipher(int size, int way = kOpEncrypt)
      : TBlockCipher(Op(way)), blockSize(size) {}
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  void ProcessBlock(unsigned char* block) const override {
    for (int i = 0; i < blockSize; ++i) block[i] = static_cast<unsigned char>(~block[i]);
  }
  int GetBlockSize() const override { return blockSize; }

 private:
  int blockSize;
};

// Gives the number of bytes that it is to work on.
class ToyStreamCipher : public TStreamCipher {
 public:
  explicit ToyStreamCipher(int way = kOpEncrypt) : TStreamCipher(Op(way)) {}
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  void ProcessStream(unsigned char*, int len) override { processed += len; }
  void Reset() override { processed = 0; }
  long long processed = 0;
};

class ToyRsaCipher : public TRsaCipher {
 public:
  explicit ToyRsaCipher(int way = kOpEncrypt) : TRsaCipher(Op(way)) {}
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  int ProcessData(unsigned char*, int len, bool) override { return op == kOpEncrypt ? len : -1; }
};

// What the engine gives for len bytes in blocks of size.
long long EncryptedLength(long long len, bool final, long long size = kBlockSize) {
  if (len < 0 || size < 1 || size > kBlockSize) return 0;
  const long long padded = final ? (len / size + 1) * size : len;
  return padded % size != 0 || padded > INT_MAX ? 0 : padded;
}
long long DecryptableLength(long long len, long long size = kBlockSize) {
  return len < 0 || size < 1 || size > kBlockSize || len % size != 0 ? 0 : len;
}

// Encrypts or decrypts len bytes, as work says. The block has the padding's room.
template <typename Cipher, typename Work>
void ExpectEncrypts(Cipher& cipher, int len, bool final, bool touches, Work work,
                    int size = kBlockSize) {
  const long long result = EncryptedLength(len, final, size);
  if (touches && result > kMuchData) return LeaveOut();
  const Block data(touches ? result : 0);
  EXPECT_EQ(result, work(cipher, data.Get()));
}
template <typename Cipher, typename Work>
void ExpectDecrypts(Cipher& cipher, int len, bool final, bool touches, Work work,
                    int size = kBlockSize) {
  const long long result = DecryptableLength(len, size);
  if (touches && result > kMuchData) return LeaveOut();
  const Block data(touches ? result : 0);
  // The last byte becomes 0xFF, which stands for a block of padding.
  const bool padded = touches && final && result != 0;
  EXPECT_EQ(padded ? result - size : result, work(cipher, data.Get()));
}

// A DES, RC2 or RC4 cipher gives the plaintext back.
template <typename Cipher, typename... Key>
void ExpectRoundTrip(Key... key) {
  Cipher encrypting(kEncrypt, key...), decrypting(kDecrypt, key...);
  const Bytes message = Counting(21);
  EXPECT_EQ(message, Process(decrypting, Process(encrypting, message, true), true));
}

// Ciphers that read no structure, whatever is given.
template <typename Cipher, typename... Key>
Sweep NoBerInit(Key... key) {
  return Over(Around(21), [=](bool given, int len) {
    Cipher cipher(kEncrypt, key...);
    const Block ber(std::clamp(len, 0, 21));
    EXPECT_EQ(0, cipher.BerInit(given ? ber.Get() : nullptr, len));
    EXPECT_EQ(16, static_cast<int>(Process(cipher, Counting(kBlockSize * 2), false).size()));
  });
}

// A structure of so many bytes is written where there is room for it. 0 stands for none.
template <typename Cipher, typename... Key>
Sweep BerDumps(int count, Key... key) {
  return Over(Around(count), [=](int size) {
    Cipher cipher(kEncrypt, key...);
    const int written = count != 0 && size >= count ? count : 0;
    const Block buffer(written);
    EXPECT_EQ(written, cipher.BerDump(buffer.Get(), size));
    if (written != 0) {
      EXPECT_EQ(0x30, buffer.Get()[0]);
    }
  });
}

// A key of 64 bytes, and its structure.
const Bytes kModulus = FromHex(kRsaKeys[0].modulus);
const Bytes kExponent = FromHex(kRsaKeys[0].exponent);
const Bytes kSignature = FromHex(kRsaKeys[0].signature);
const Bytes kDigest = FromHex(kSignedDigest);
const Bytes kPublicKey =
    FromHex(std::string(kRsaKeys[0].header) + kRsaKeys[0].modulus + "0203" + kRsaKeys[0].exponent);
constexpr int kModulusSize = 64;
constexpr int kExponentSize = 3;
constexpr int kLongestMessage = kModulusSize - 11;

bool Construct(TRsaPublicCipher& cipher) {
  return cipher.Construct(kModulus.data(), kModulusSize, kExponent.data(), kExponentSize);
}

// The cipher has this key: it takes the message out of what was signed with the private one.
void ExpectDecryptsSignature(TRsaPublicCipher& cipher, bool hasKey = true) {
  Bytes data = kSignature;
  const int length = cipher.DecryptData(data.data(), kModulusSize, true);
  EXPECT_EQ(hasKey ? kDigest : Bytes(), Bytes(data.begin(), data.begin() + length));
}

// The bytes of a key's part, as far as there is memory; otherwise they are not read.
Block Part(int length) { return Block(length <= static_cast<int>(kLargestBlock) ? length : 0); }

// Whether a copy of a key's part is made.
bool IsCopied(bool given, int length) { return given && length <= static_cast<int>(kLargestBlock); }

// One call of the RSA cipher on a block that has room for the modulus.
template <typename Work>
void ExpectRsaEncrypts(int len, bool final, Work work) {
  TRsaPublicCipher cipher(kEncrypt);
  ASSERT_TRUE(Construct(cipher));
  const Block data(kModulusSize);
  const bool fits = final && len >= 0 && len <= kLongestMessage;
  EXPECT_EQ(fits ? kModulusSize : 0, work(cipher, data.Get()));
  ExpectDecryptsSignature(cipher);
}
template <typename Work>
void ExpectRsaDecrypts(int len, bool final, Work work) {
  TRsaPublicCipher cipher(kDecrypt);
  ASSERT_TRUE(Construct(cipher));
  const Block data(kSignature);
  // What is shorter is another number, and no signature.
  const bool fits = final && len == kModulusSize;
  EXPECT_EQ(fits ? static_cast<int>(kDigest.size()) : 0, work(cipher, data.Get()));
  ExpectDecryptsSignature(cipher);
}

// 0x00000001'00000002'00000003
const Bytes kNumber = {1, 0, 0, 0, 2, 0, 0, 0, 3};
TBigInt Number() { return TBigInt(kNumber.data(), static_cast<int>(kNumber.size())); }
std::string Shown(const TBigInt& number) {
  const std::u16string text = TextOf(number.ToString());
  return std::string(text.begin(), text.end());
}
const char kShown[] = "10000000200000003";

// Whether the sweep's allocator has room for a number of that many words.
bool HasRoom(long long words) { return words * 4 + 32 <= kLargestBlock; }

void AddCryptoRows(Table& table) {
  // What the constructors of the abstract classes keep is the direction.
  table.Row("KEST::TCipher::TCipher(KEST::TCipher::ECipherOp)", [](int op) {
    EXPECT_EQ(op == kEncrypt ? 5 : -1, ToyRsaCipher(op).ProcessData(nullptr, 5, false));
  });
  table.Row("KEST::TRsaCipher::TRsaCipher(KEST::TCipher::ECipherOp)", [](int op) {
    ToyRsaCipher cipher(op);
    EXPECT_EQ(0, cipher.GetType());
    EXPECT_EQ(op == kEncrypt ? 5 : -1, cipher.ProcessData(nullptr, 5, false));
  });
  table.Row("KEST::TStreamCipher::TStreamCipher(KEST::TCipher::ECipherOp)", [](int op) {
    ToyStreamCipher cipher(op);
    EXPECT_EQ(2, cipher.GetType());
    EXPECT_EQ(5, cipher.ProcessData(nullptr, 5, false));
  });
  table.Row("KEST::TBlockCipher::TBlockCipher(KEST::TCipher::ECipherOp)", [](int op) {
    ToyBlockCipher cipher(kBlockSize, op);
    EXPECT_EQ(1, cipher.GetType());
    const Block data(kBlockSize * 2);
    EXPECT_EQ(op == kEncrypt ? kBlockSize : 0, cipher.ProcessData(data.Get(), 5, true));
  });
  table.Row("KEST::TBlockCipher::ProcessData(unsigned char*, int, bool)",
            Around(kBlockSize, 3 * kBlockSize), [](int op, int len, bool final) {
              ToyBlockCipher cipher(kBlockSize, op);
              const auto work = [=](TCipher& c, unsigned char* data) {
                return c.ProcessData(data, len, final);
              };
              if (op == kEncrypt) return ExpectEncrypts(cipher, len, final, true, work);
              ExpectDecrypts(cipher, len, final, true, work);
            });
  table.Row(
      "KEST::TBlockCipher::EncryptData(unsigned char*, int, bool)",
      Around(kBlockSize, 3 * kBlockSize), [](int blockSize, int mode, int len, bool final) {
        ToyBlockCipher cipher(blockSize);
        cipher.SetMode(Mode(mode));
        ExpectEncrypts(
            cipher, len, final, IsMode(mode),
            [=](ToyBlockCipher& c, unsigned char* data) { return c.EncryptData(data, len, final); },
            blockSize);
      });
  table.Row(
      "KEST::TBlockCipher::DecryptData(unsigned char*, int, bool)",
      Around(kBlockSize, 3 * kBlockSize), [](int blockSize, int mode, int len, bool final) {
        ToyBlockCipher cipher(blockSize);
        cipher.SetMode(Mode(mode));
        ExpectDecrypts(
            cipher, len, final, IsMode(mode),
            [=](ToyBlockCipher& c, unsigned char* data) { return c.DecryptData(data, len, final); },
            blockSize);
      });
  table.Row("KEST::TBlockCipher::SetMode(KEST::TBlockCipher::ECipherMode)", [](int mode) {
    ToyBlockCipher cipher(kBlockSize);
    cipher.SetMode(Mode(mode));
    EXPECT_EQ(IsMode(mode) ? Bytes(8, 0xFF) : Bytes(8, 0), Process(cipher, Bytes(8, 0), false));
  });
  table.Row("KEST::TBlockCipher::SetIv(unsigned char const*)", Around(kBlockSize),
            [](bool given, int blockSize) {
              ToyBlockCipher cipher(blockSize);
              const bool usable = blockSize >= 1 && blockSize <= kBlockSize;
              // One block is read, and nothing where that has no usable size.
              const Block iv(Bytes(usable ? static_cast<size_t>(blockSize) : 0, 0x11));
              cipher.SetIv(given ? iv.Get() : nullptr);
              if (!usable) return;
              const size_t size = static_cast<size_t>(blockSize);
              EXPECT_EQ(Bytes(size, given ? 0xEE : 0xFF), Process(cipher, Bytes(size, 0), false));
            });
  table.Row("KEST::TBlockCipher::XorBlock(unsigned char*, unsigned char const*, int)",
            Around(kBlockSize), [](int n) {
              // It works on all of n bytes.
              if (n > kMuchData) return LeaveOut();
              const Bytes ones(static_cast<size_t>(std::max(n, 0)), 1);
              const Block dst(ones), src(ones);
              TBlockCipher::XorBlock(dst.Get(), src.Get(), n);
              EXPECT_EQ(Bytes(ones.size(), 0), dst.Content());
            });
  table.Row("KEST::TStreamCipher::ProcessData(unsigned char*, int, bool)", [](bool final, int len) {
    ToyStreamCipher cipher;
    EXPECT_EQ(std::max(len, 0), cipher.ProcessData(nullptr, len, final));
    EXPECT_EQ(final ? 0 : std::max(len, 0), cipher.processed);
  });

  table.Row("KEST::TDesCipher::TDesCipher(KEST::TCipher::ECipherOp, unsigned char const*, int)",
            Around(kBlockSize), [](int op, int keyLength) {
              // The key is read whole whatever its length is said to be.
              const Block key(kKey);
              TDesCipher cipher(Op(op), key.Get(), keyLength);
              EXPECT_EQ(16u, Process(cipher, Counting(16), false).size());
              ExpectRoundTrip<TDesCipher>(key.Get(), keyLength);
            });
  table.Row("KEST::TDesCipher::BerInit(unsigned char const*, int)",
            NoBerInit<TDesCipher>(kKey.data(), 8));
  table.Row("KEST::TDesCipher::BerDump(unsigned char*, int)",
            BerDumps<TDesCipher>(21, kKey.data(), 8));
  table.Row("KEST::TDesCipher::ProcessBlock(unsigned char*) const", [] {
    const Block block(kBlockSize);
    TDesCipher(kEncrypt, kKey.data(), 8).ProcessBlock(block.Get());
    TDesCipher(kDecrypt, kKey.data(), 8).ProcessBlock(block.Get());
    EXPECT_EQ(Bytes(kBlockSize, 0), block.Content());
  });
  table.Row(
      "KEST::TRc2Cipher::TRc2Cipher(KEST::TCipher::ECipherOp, unsigned char const*, int, int)",
      Around(kBlockSize, 128, 1024), [](int keyLength, int effectiveBits) {
        const Block key(Counting(std::clamp(keyLength, 1, 128)));
        ExpectRoundTrip<TRc2Cipher>(key.Get(), keyLength, effectiveBits);
        TRc2Cipher odd(Op(keyLength), key.Get(), keyLength, effectiveBits);
        EXPECT_EQ(16u, Process(odd, Counting(16), false).size());
      });
  table.Row("KEST::TRc2Cipher::BerInit(unsigned char const*, int)",
            NoBerInit<TRc2Cipher>(kKey.data(), 8, 64));
  table.Row("KEST::TRc2Cipher::BerDump(unsigned char*, int)", Around(27, 28, 40, 56, 128),
            [](int size, int bits) {
              TRc2Cipher cipher(kEncrypt, kKey.data(), 8, bits);
              const int count = bits == 128 || bits == 56 ? 27 : bits == 40 ? 28 : 0;
              const int written = size >= count ? count : 0;
              const Block buffer(written);
              EXPECT_EQ(written, cipher.BerDump(buffer.Get(), size));
            });
  table.Row("KEST::TRc2Cipher::ProcessBlock(unsigned char*) const", [] {
    const Block block(kBlockSize);
    TRc2Cipher(kEncrypt, kKey.data(), 8, 64).ProcessBlock(block.Get());
    TRc2Cipher(kDecrypt, kKey.data(), 8, 64).ProcessBlock(block.Get());
    EXPECT_EQ(Bytes(kBlockSize, 0), block.Content());
  });
  table.Row("KEST::TRc4Cipher::TRc4Cipher(KEST::TCipher::ECipherOp, unsigned char const*, int)",
            Around(kBlockSize, 256), [](int op, int keyLength) {
              // Bytes behind the first 256 are not read.
              const Block key(Counting(std::clamp(keyLength, 1, 256)));
              TRc4Cipher cipher(Op(op), key.Get(), keyLength);
              EXPECT_EQ(21u, Process(cipher, Counting(21), false).size());
              ExpectRoundTrip<TRc4Cipher>(key.Get(), keyLength);
            });
  table.Row("KEST::TRc4Cipher::BerInit(unsigned char const*, int)",
            NoBerInit<TRc4Cipher>(kKey.data(), 8));
  table.Row("KEST::TRc4Cipher::BerDump(unsigned char*, int)",
            BerDumps<TRc4Cipher>(0, kKey.data(), 8));
  table.Row("KEST::TRc4Cipher::ProcessStream(unsigned char*, int)", Around(kBlockSize),
            [](int len) {
              // It works on all of len bytes.
              if (len > kMuchData) return LeaveOut();
              TRc4Cipher cipher(kEncrypt, kKey.data(), 8);
              const Block data(len);
              cipher.ProcessStream(data.Get(), len);
              cipher.Reset();
              cipher.ProcessStream(data.Get(), len);
              EXPECT_EQ(Bytes(static_cast<size_t>(std::max(len, 0)), 0), data.Content());
            });

  table.Row("KEST::TRsaPublicCipher::TRsaPublicCipher(KEST::TCipher::ECipherOp)", [](int op) {
    TRsaPublicCipher cipher(Op(op));
    EXPECT_EQ(0, cipher.GetModulusSize());
    ExpectDecryptsSignature(cipher, false);
    EXPECT_TRUE(Construct(cipher));
    ExpectDecryptsSignature(cipher);
  });
  table.Row(
      "KEST::TRsaPublicCipher::TRsaPublicCipher(KEST::TCipher::ECipherOp, unsigned char const*, "
      "int, "
      "unsigned char const*, int)",
      Around(kModulusSize), [](bool hasModulus, int modulusLen, bool hasExponent, int exponentLen) {
        const auto modulus = Part(modulusLen), exponent = Part(exponentLen);
        TRsaPublicCipher cipher(kEncrypt, hasModulus ? modulus.Get() : nullptr, modulusLen,
                                hasExponent ? exponent.Get() : nullptr, exponentLen);
        const bool copied = modulusLen >= 0 && exponentLen >= 0 && IsCopied(hasModulus, modulusLen);
        EXPECT_EQ(copied ? modulusLen : 0, cipher.GetModulusSize());
        // A modulus of zeros, or none: nothing is taken out of any block.
        ExpectDecryptsSignature(cipher, false);
        EXPECT_TRUE(Construct(cipher));
        ExpectDecryptsSignature(cipher);
      });
  table.Row(
      "KEST::TRsaPublicCipher::Construct(unsigned char const*, int, unsigned char const*, int)",
      Around(kModulusSize), [](bool hasModulus, int modulusLen, bool hasExponent, int exponentLen) {
        TRsaPublicCipher cipher(kEncrypt);
        ASSERT_TRUE(Construct(cipher));
        const auto modulus = Part(modulusLen), exponent = Part(exponentLen);
        const bool refused = modulusLen < 0 || exponentLen < 0;
        const bool copied = !refused && IsCopied(hasModulus, modulusLen);
        EXPECT_EQ(copied && IsCopied(hasExponent, exponentLen),
                  cipher.Construct(hasModulus ? modulus.Get() : nullptr, modulusLen,
                                   hasExponent ? exponent.Get() : nullptr, exponentLen));
        EXPECT_EQ(copied ? modulusLen : kModulusSize, cipher.GetModulusSize());
        ExpectDecryptsSignature(cipher, refused);
        EXPECT_TRUE(Construct(cipher));
        ExpectDecryptsSignature(cipher);
      });
  table.Row("KEST::TRsaPublicCipher::BerInit(unsigned char const*, int)", Around(5, 24, 94),
            [](int len) {
              // So many bytes have to be there, with whatever follows the structure.
              if (len > kMuchData) return LeaveOut();
              TRsaPublicCipher cipher(kEncrypt);
              const int count = static_cast<int>(kPublicKey.size());
              Bytes bytes = kPublicKey;
              bytes.resize(static_cast<size_t>(std::max(len, 0)));
              const Block ber(bytes);
              EXPECT_EQ(len >= count ? len : 0, cipher.BerInit(ber.Get(), len));
              ExpectDecryptsSignature(cipher, len >= count);
            });
  table.Row("KEST::TRsaPublicCipher::BerDump(unsigned char*, int)", Around(94),
            [](int size, bool given) {
              TRsaPublicCipher cipher(kEncrypt);
              ASSERT_TRUE(Construct(cipher));
              const Block nothing(0);
              EXPECT_EQ(0, cipher.BerDump(given ? nothing.Get() : nullptr, size));
            });
  table.Row("KEST::TRsaPublicCipher::ProcessData(unsigned char*, int, bool)",
            Around(kModulusSize, kLongestMessage), [](bool encrypts, int len, bool final) {
              const auto work = [=](TRsaPublicCipher&, unsigned char* data) {
                TRsaPublicCipher cipher(encrypts ? kEncrypt : kDecrypt);
                return Construct(cipher) ? cipher.ProcessData(data, len, final) : -1;
              };
              if (encrypts) return ExpectRsaEncrypts(len, final, work);
              ExpectRsaDecrypts(len, final, work);
            });
  table.Row("KEST::TRsaPublicCipher::EncryptData(unsigned char*, int, bool)",
            Around(kModulusSize, kLongestMessage), [](int len, bool final) {
              ExpectRsaEncrypts(len, final, [=](TRsaPublicCipher& cipher, unsigned char* data) {
                return cipher.EncryptData(data, len, final);
              });
            });
  table.Row("KEST::TRsaPublicCipher::DecryptData(unsigned char*, int, bool)", Around(kModulusSize),
            [](int len, bool final) {
              ExpectRsaDecrypts(len, final, [=](TRsaPublicCipher& cipher, unsigned char* data) {
                return cipher.DecryptData(data, len, final);
              });
            });

  table.Row(
      "KEST::TCrypter::TCrypter(KEST::TBlockCipher&, KEST::TBlockCipher::ECipherMode, unsigned "
      "char "
      "const*)",
      [](int mode, bool given) {
        ToyBlockCipher cipher(kBlockSize);
        const Block iv(Bytes(kBlockSize, 0x11));
        TCrypter crypter(cipher, Mode(mode), given ? iv.Get() : nullptr);
        const Block data(kBlockSize);
        EXPECT_EQ(kBlockSize, crypter.CryptData(data.Get(), kBlockSize, false));
        EXPECT_EQ(!IsMode(mode) ? 0 : mode == kCbc && given ? 0xEE : 0xFF, data.Get()[0]);
      });
  table.Row("KEST::TCrypter::CryptData(unsigned char*, int, bool)",
            Around(kBlockSize, 3 * kBlockSize), [](int len, bool final) {
              ToyBlockCipher cipher(kBlockSize);
              TCrypter crypter(cipher, kCbc, nullptr);
              ExpectEncrypts(crypter, len, final, true, [=](TCrypter& c, unsigned char* data) {
                return c.CryptData(data, len, final);
              });
            });
  table.Row("KEST::TCrypter::CryptData(unsigned char const*, int, unsigned char*, bool)",
            Around(kBlockSize, 3 * kBlockSize), [](int len, bool final) {
              // The copy is made of all of len bytes.
              if (len > kMuchData) return LeaveOut();
              ToyBlockCipher cipher(kBlockSize);
              TCrypter crypter(cipher, kCbc, nullptr);
              const long long result = EncryptedLength(len, final);
              const Block in(len), out(std::max<long long>(len, result));
              EXPECT_EQ(result, crypter.CryptData(in.Get(), len, out.Get(), final));
              EXPECT_EQ(Bytes(static_cast<size_t>(std::max(len, 0)), 0), in.Content());
            });

  table.Row("KEST::TBigInt::TBigInt(int)", [](int value) {
    const TBigInt number(value);
    EXPECT_EQ(value, number.ToInt());
    EXPECT_EQ(value != 0 ? 1 : 0, number.GetLength());
  });
  table.Row("KEST::TBigInt::TBigInt(unsigned short const*)",
            [](bool given) { EXPECT_EQ(given ? "ABC" : "0", Shown(TBigInt(Abc(given)))); });
  table.Row("KEST::TBigInt::TBigInt(unsigned char const*, int)", Around(9), [](int len) {
    // Without memory the bytes are not read.
    const bool fits = HasRoom(std::max(len, 0) / 4);
    const Block bytes(Bytes(fits ? static_cast<size_t>(std::max(len, 0)) : 0, 1));
    TBigInt number(bytes.Get(), len);
    if (len > 0) {
      ExpectRequested((static_cast<unsigned int>(len) + 31) / 32 * 32);
    }
    EXPECT_EQ(fits && len > 0 ? (len + 3) / 4 : 0, number.GetLength());
    EXPECT_TRUE(TBigInt::Add(number, number, 1));
  });
  table.Row("KEST::TBigInt::AdjustBuffer(int, bool)", Around(3, 8), [](int words, bool keep) {
    TBigInt number = Number();
    const bool done = words >= 0 && HasRoom(words);
    EXPECT_EQ(done, number.AdjustBuffer(words, keep));
    if (words > 8 && words < (1 << 30) - 8) {
      ExpectRequested((static_cast<unsigned int>(words) + 7) / 8 * 32);
    }
    EXPECT_EQ(done ? words : 3, number.GetLength());
    // Words that the buffer had room for already hold whatever was there.
    if (!keep || words <= 3 || words > 8) number.FixLength();
    if (!done || (keep && words == 3)) {
      EXPECT_EQ(kShown, Shown(number));
    }
    if (done && !keep) {
      EXPECT_EQ("0", Shown(number));
    }
    number = 7;
    EXPECT_EQ("7", Shown(number));
  });
  table.Row("KEST::TBigInt::Shl(KEST::TBigInt&, KEST::TBigInt const&, int)", Around(32, 96),
            [](int bits, bool inPlace) {
              TBigInt other, number = Number();
              TBigInt& result = inPlace ? number : other;
              const bool done = bits >= 0 && HasRoom(3 + bits / 32 + 1);
              EXPECT_EQ(done, TBigInt::Shl(result, number, bits));
              if (!done) {
                EXPECT_EQ(kShown, Shown(number));
                return;
              }
              EXPECT_EQ(65 + bits,
                        32 * (result.GetLength() - 1) +
                            TBigInt::WordBits(result.GetWords()[result.GetLength() - 1]));
              EXPECT_TRUE(TBigInt::Shr(result, result, bits));
              EXPECT_EQ(kShown, Shown(result));
            });
  table.Row("KEST::TBigInt::Shr(KEST::TBigInt&, KEST::TBigInt const&, int)", Around(32, 65, 96),
            [](int bits, bool inPlace) {
              TBigInt other, number = Number();
              TBigInt& result = inPlace ? number : other;
              EXPECT_EQ(bits >= 0, TBigInt::Shr(result, number, bits));
              if (bits < 0 || bits == 0) {
                EXPECT_EQ(kShown, Shown(number));
              }
              if (bits >= 65) {
                EXPECT_EQ("0", Shown(result));
              }
              if (bits == 64) {
                EXPECT_EQ("1", Shown(result));
              }
              if (bits == 32) {
                EXPECT_EQ("100000002", Shown(result));
              }
            });
  table.Row("KEST::TBigInt::Dump(unsigned char*, int) const", Around(12), [](bool zero, int size) {
    // What is to spare is written over with zeros, however much it is.
    if (size > kMuchData) return LeaveOut();
    const TBigInt number = zero ? TBigInt() : Number();
    const Block out(size);
    EXPECT_EQ(!zero && size >= 12 ? 12 : 0, number.Dump(out.Get(), size));
    if (!zero && size == 12) {
      EXPECT_EQ("000000010000000200000003", Hex(out.Content()));
    }
  });
  table.Row("KEST::TBigInt::WordMul(unsigned int&, unsigned int, unsigned int)",
            [](unsigned int a, unsigned int b) {
              unsigned int high = 1;
              const unsigned int low = TBigInt::WordMul(high, a, b);
              EXPECT_EQ(1ull * a * b, (1ull * high << 32) | low);
            });
  table.Row("KEST::TBigInt::WordDiv(unsigned int, unsigned int, unsigned int)",
            [](unsigned int low, unsigned int high, unsigned int d) {
              const unsigned long long quotient = d != 0 ? ((1ull * high << 32) | low) / d : 0;
              EXPECT_EQ(static_cast<unsigned int>(quotient), TBigInt::WordDiv(low, high, d));
            });
  table.Row("KEST::TBigInt::WordBits(unsigned int)", Around(255), [](unsigned int w) {
    int bits = 0;
    while (bits < 32 && w >> bits != 0) ++bits;
    EXPECT_EQ(bits, TBigInt::WordBits(w));
  });
}

const Table kCrypto(AddCryptoRows);

TEST(ArgumentSweep, Crypto) { kCrypto.Run(); }

}  // namespace

}  // namespace kest_test
