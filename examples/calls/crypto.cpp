// The calls of kest/crypto.h.

#include "kest/crypto.h"

#include <string.h>

#include "check.h"
#include "kest/digest.h"
#include "kest/frame.h"

using KEST::TBigInt;
using KEST::TBlockCipher;
using KEST::TCipher;
using KEST::TCrypter;
using KEST::TDesCipher;
using KEST::TRc2Cipher;
using KEST::TRc4Cipher;
using KEST::TRsaPublicCipher;

//! [block-cipher]
// A block cipher of your own: TBlockCipher gives it modes, vector and padding.
class TXorCipher : public TBlockCipher {
 public:
  TXorCipher(ECipherOp direction, unsigned char value) : TBlockCipher(direction), key(value) {}
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  int GetBlockSize() const override { return 4; }
  void ProcessBlock(unsigned char* block) const override {
    const unsigned char keys[4] = {key, key, key, key};
    TBlockCipher::XorBlock(block, keys, 4);
  }

 private:
  unsigned char key;
};
//! [block-cipher]

//! [stream-cipher]
// A stream cipher of your own: a keystream of 1, 2, 3, ...
class TCountCipher : public KEST::TStreamCipher {
 public:
  TCountCipher() : TStreamCipher(kOpEncrypt), next(1) {}
  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  void ProcessStream(unsigned char* data, int len) override {
    for (int i = 0; i < len; ++i) data[i] ^= next++;
  }
  void Reset() override { next = 1; }

 private:
  unsigned char next;
};
//! [stream-cipher]

static const unsigned char kKey[8] = {1, 2, 3, 4, 5, 6, 7, 8};

static void Blocks() {
  //! [des]
  unsigned char data[16] = "secret";  // 6 bytes, with room for the padding
  TDesCipher encrypt(TCipher::kOpEncrypt, kKey, 8);
  const unsigned char iv[8] = {8, 7, 6, 5, 4, 3, 2, 1};
  encrypt.SetIv(iv);
  Check(encrypt.EncryptData(data, 6, true) == 8);  // a whole block

  TDesCipher decrypt(TCipher::kOpDecrypt, kKey, 8);
  decrypt.SetIv(iv);
  Check(decrypt.DecryptData(data, 8, true) == 6);  // as the padding says
  Check(memcmp(data, "secret", 6) == 0);
  //! [des]

  //! [des-block]
  unsigned char block[8] = {0};
  TDesCipher des(TCipher::kOpEncrypt, kKey, 8);
  Check(des.GetBlockSize() == 8 && des.GetType() == 1);
  des.ProcessBlock(block);  // no chaining, no padding
  unsigned char identifier[21];
  Check(des.BerDump(identifier, 21) == 21 && des.BerInit(identifier, 21) == 0);
  //! [des-block]

  //! [rc2]
  unsigned char bytes[8] = {0};
  TRc2Cipher rc2(TCipher::kOpEncrypt, kKey, 8, 128);  // all 128 effective bits
  rc2.SetMode(TBlockCipher::kModeEcb);
  Check(rc2.GetBlockSize() == 8);
  rc2.ProcessBlock(bytes);
  unsigned char parameters[27];
  Check(rc2.BerDump(parameters, 27) == 27 && rc2.BerInit(parameters, 27) == 0);
  //! [rc2]
}

static void Streams() {
  //! [rc4]
  unsigned char text[5] = {'H', 'e', 'l', 'l', 'o'};
  TRc4Cipher rc4(TCipher::kOpEncrypt, kKey, 8);
  rc4.ProcessStream(text, 5);
  rc4.Reset();                 // the keystream from its start
  rc4.ProcessStream(text, 5);  // the same bytes: decrypted
  Check(memcmp(text, "Hello", 5) == 0);
  Check(rc4.BerInit(text, 5) == 0 && rc4.BerDump(text, 5) == 0);  // no parameters
  //! [rc4]

  //! [any-cipher]
  unsigned char message[8] = "abc";
  TXorCipher ours(TCipher::kOpEncrypt, 0x55);
  TCipher& cipher = ours;  // whichever it is
  Check(cipher.GetType() == 1);
  Check(cipher.ProcessData(message, 3, true) == 4);
  Check(cipher.BerInit(message, 4) == 0 && cipher.BerDump(message, 8) == 0);
  TBlockCipher& blocks = ours;
  Check(blocks.GetType() == 1 && blocks.GetBlockSize() == 4);
  blocks.SetMode(TBlockCipher::kModeCbc);
  blocks.SetIv(nullptr);  // zeros
  blocks.ProcessBlock(message);
  Check(blocks.EncryptData(message, 4, false) == 4 && blocks.DecryptData(message, 3, false) == 0);
  Check(blocks.ProcessData(message, 4, false) == 4);
  //! [any-cipher]

  //! [any-stream]
  TCountCipher count;
  KEST::TStreamCipher& stream = count;
  unsigned char zeros[3] = {0, 0, 0};
  Check(stream.GetType() == 2 && stream.ProcessData(zeros, 3, true) == 3);  // then Reset
  Check(zeros[2] == 3);
  stream.ProcessStream(zeros, 3);
  stream.Reset();
  Check(zeros[2] == 0);
  //! [any-stream]

  //! [crypter]
  unsigned char in[8] = "1234567", out[16];
  TDesCipher des(TCipher::kOpEncrypt, kKey, 8);
  TCrypter crypter(des, TBlockCipher::kModeCbc, nullptr);
  Check(crypter.CryptData(in, 8, out, false) == 8);  // in stays as it is
  Check(crypter.CryptData(out, 8, true) == 16);      // in place, with padding
  //! [crypter]
}

static void Keys() {
  //! [rsa]
  unsigned char modulus[64], data[64] = "hi";
  memset(modulus, 0xC5, sizeof(modulus));  // a key of the other side's
  const unsigned char exponent[1] = {3};
  TRsaPublicCipher rsa(TCipher::kOpEncrypt);
  Check(rsa.Construct(modulus, 64, exponent, 1));
  Check(rsa.GetModulusSize() == 64 && rsa.GetType() == 0);
  Check(rsa.EncryptData(data, 2, true) == 64);  // in place
  Check(rsa.DecryptData(data, 64, true) == 0);  // no block that was signed
  Check(rsa.ProcessData(data, 64, true) == 0);  // too long to be encrypted
  //! [rsa]

  //! [rsa-key]
  // SEQUENCE { SEQUENCE { }, BIT STRING { 0, SEQUENCE { INTEGER modulus, INTEGER exponent } } }
  const unsigned char info[] = {0x30, 0x10, 0x30, 0x00, 0x03, 0x0C, 0x00, 0x30, 0x09,
                                0x02, 0x04, 0x00, 0xC5, 0xC5, 0xC5, 0x02, 0x01, 0x03};
  TRsaPublicCipher loaded(TCipher::kOpDecrypt);
  Check(loaded.BerInit(info, sizeof(info)) == sizeof(info));
  Check(loaded.GetModulusSize() == 3);
  Check(loaded.BerDump(nullptr, 0) == 0);  // a key is not written
  KEST::TRsaCipher& kind = loaded;         // how a TRsaCipher is told apart
  Check(kind.GetType() == 0);
  //! [rsa-key]
}

static void Numbers() {
  //! [big-int]
  TBigInt sum, product;
  const TBigInt a(KEST_TEXT("FFFFFFFFFFFFFFFF")), b(2);
  Check(TBigInt::Add(sum, a, b));  // false without memory
  Check(sum.ToString() == KEST_TEXT("10000000000000001"));
  Check(TBigInt::Sub(sum, sum, b) && TBigInt::Cmp(sum, a) == 0);
  Check(TBigInt::Mul(product, a, b) && product.ToInt() == -2);
  product = a;  // a copy
  //! [big-int]

  //! [big-int-divide]
  TBigInt quotient, rest, power;
  Check(TBigInt::Div(quotient, rest, 100, 7));
  Check(quotient.ToInt() == 14 && rest.ToInt() == 2);
  Check(!TBigInt::Div(quotient, rest, 100, 0));
  Check(TBigInt::MulMod(rest, 20, 30, 7) && rest.ToInt() == 5);
  Check(TBigInt::ExpMod(power, 4, 13, 497) && power.ToInt() == 445);
  Check(TBigInt::Shl(power, 1, 40) && TBigInt::Shr(power, power, 38) && power.ToInt() == 4);
  //! [big-int-divide]

  //! [big-int-bytes]
  const unsigned char bytes[] = {0x01, 0x02, 0x03, 0x04};
  const TBigInt number(bytes, 4);  // big-endian
  unsigned char back[4];
  Check(number.Dump(back, 4) == 4 && memcmp(back, bytes, 4) == 0);
  //! [big-int-bytes]

  //! [big-int-words]
  TBigInt words;
  Check(words.AdjustBuffer(2, false));  // two words of 0
  Check(words.GetLength() == 2 && words.GetCapacity() >= 2 && words.GetWords()[1] == 0);
  words.FixLength();  // 0 has no words
  Check(words.GetLength() == 0);
  unsigned int high;
  Check(TBigInt::WordMul(high, 0x80000000, 4) == 0 && high == 2);
  Check(TBigInt::WordDiv(0, 2, 4) == 0x80000000);  // 2 * 2^32 / 4
  Check(TBigInt::WordBits(255) == 8);
  //! [big-int-words]
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  Blocks();
  Streams();
  Keys();
  Numbers();
  KestUninitialize();
  puts("as shown");
  return 0;
}
