#ifndef KEST_CRYPTO_H
#define KEST_CRYPTO_H

#include "kest/string.h"
namespace KEST {
class KEST_API TCipher {
 public:
  enum ECipherOp : int { kOpEncrypt = 0, kOpDecrypt = 1 };
  virtual ~TCipher() = 0;
  virtual int BerInit(const unsigned char* ber, int len) = 0;
  virtual int BerDump(unsigned char* buf, int size) = 0;
  virtual int GetType() = 0;
  virtual int ProcessData(unsigned char* data, int len, bool final) = 0;

 protected:
  TCipher();
  TCipher(ECipherOp op);
  ECipherOp op;
};
class KEST_API TBlockCipher : public TCipher {
 public:
  enum ECipherMode : int { kModeCbc = 0, kModeEcb = 1 };
  ~TBlockCipher() override;
  int GetType() override;
  int ProcessData(unsigned char* data, int len, bool final) override;
  virtual void ProcessBlock(unsigned char* block) const = 0;
  virtual int GetBlockSize() const = 0;
  void SetMode(ECipherMode mode);
  void SetIv(const unsigned char* iv);
  int EncryptData(unsigned char* data, int len, bool final);
  int DecryptData(unsigned char* data, int len, bool final);
  static void XorBlock(unsigned char* dst, const unsigned char* src, int n);

 protected:
  TBlockCipher();
  TBlockCipher(ECipherOp op);
  ECipherMode mode;
  unsigned char iv[8];
  unsigned char chain[8];
};
class KEST_API TStreamCipher : public TCipher {
 public:
  ~TStreamCipher() override;
  int GetType() override;
  int ProcessData(unsigned char* data, int len, bool final) override;
  virtual void ProcessStream(unsigned char* data, int len) = 0;
  virtual void Reset() = 0;

 protected:
  TStreamCipher();
  TStreamCipher(ECipherOp op);
};
class KEST_API TRsaCipher : public TCipher {
 public:
  ~TRsaCipher() override;
  int GetType() override;

 protected:
  TRsaCipher();
  TRsaCipher(ECipherOp op);
};
class KEST_API TDesCipher : public TBlockCipher {
 public:
  TDesCipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);
  ~TDesCipher() override;
  int BerInit(const unsigned char* ber, int len) override;
  int BerDump(unsigned char* buf, int size) override;
  void ProcessBlock(unsigned char* block) const override;
  int GetBlockSize() const override;

 private:
  unsigned int schedule[32];
};
class KEST_API TRc2Cipher : public TBlockCipher {
 public:
  TRc2Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength, int effectiveBits);
  ~TRc2Cipher() override;
  int BerInit(const unsigned char* ber, int len) override;
  int BerDump(unsigned char* buf, int size) override;
  void ProcessBlock(unsigned char* block) const override;
  int GetBlockSize() const override;

 private:
  unsigned short expandedKey[64];
  int effectiveBits;
};
class KEST_API TRc4Cipher : public TStreamCipher {
 public:
  TRc4Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);
  ~TRc4Cipher() override;
  int BerInit(const unsigned char* ber, int len) override;
  int BerDump(unsigned char* buf, int size) override;
  void ProcessStream(unsigned char* data, int len) override;
  void Reset() override;

 private:
  unsigned char keyState[256];
  unsigned char state[256];
  unsigned int i;
  unsigned int j;
};
class KEST_API TRsaPublicCipher : public TRsaCipher {
 public:
  TRsaPublicCipher(TCipher::ECipherOp op);
  TRsaPublicCipher(TCipher::ECipherOp op, const unsigned char* modulus, int modulusLen,
                   const unsigned char* exponent, int exponentLen);
  TRsaPublicCipher(const TRsaPublicCipher&) = delete;
  TRsaPublicCipher& operator=(const TRsaPublicCipher&) = delete;
  ~TRsaPublicCipher() override;
  int BerInit(const unsigned char* ber, int len) override;
  int BerDump(unsigned char* buf, int size) override;
  int ProcessData(unsigned char* data, int len, bool final) override;
  bool Construct(const unsigned char* modulus, int modulusLen, const unsigned char* exponent,
                 int exponentLen);
  int EncryptData(unsigned char* data, int len, bool final);
  int DecryptData(unsigned char* data, int len, bool final);
  int GetModulusSize() const;

 private:
  unsigned char* modulus;
  int modulusSize;
  unsigned char* exponent;
  int exponentSize;
};
class KEST_API TCrypter {
 public:
  TCrypter(TBlockCipher& cipher, TBlockCipher::ECipherMode mode, const unsigned char* iv);
  TCrypter(TStreamCipher& cipher);
  TCrypter(TRsaCipher& cipher);
  int CryptData(unsigned char* data, int len, bool final);
  int CryptData(const unsigned char* in, int len, unsigned char* out, bool final);

 private:
  TCipher& cipher;
};
class KEST_API TBigInt {
 public:
  TBigInt();
  TBigInt(const TBigInt& other);
  TBigInt(int value);
  TBigInt(const unsigned short* text);
  TBigInt(const unsigned char* bytes, int len);
  ~TBigInt();
  TBigInt& operator=(const TBigInt& other);
  int ToInt() const;
  TBstr ToString() const;
  int Dump(unsigned char* buf, int size) const;
  static int Cmp(const TBigInt& a, const TBigInt& b);
  static bool Add(TBigInt& r, const TBigInt& a, const TBigInt& b);
  static bool Sub(TBigInt& r, const TBigInt& a, const TBigInt& b);
  static bool Mul(TBigInt& r, const TBigInt& a, const TBigInt& b);
  static bool Div(TBigInt& q, TBigInt& rem, const TBigInt& a, const TBigInt& d);
  static bool MulMod(TBigInt& r, const TBigInt& a, const TBigInt& b, const TBigInt& m);
  static bool ExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m);
  static bool Shl(TBigInt& r, const TBigInt& a, int bits);
  static bool Shr(TBigInt& r, const TBigInt& a, int bits);
  bool AdjustBuffer(int words, bool keep);
  void FixLength();
  static unsigned int WordMul(unsigned int& high, unsigned int a, unsigned int b);
  static unsigned int WordDiv(unsigned int low, unsigned int high, unsigned int d);
  static int WordBits(unsigned int w);
  int GetLength() const { return length; }
  int GetCapacity() const { return capacity; }
  const unsigned int* GetWords() const { return words; }

 private:
  unsigned int* words;
  int length;
  int capacity;
};
}  // namespace KEST

#endif  // KEST_CRYPTO_H
