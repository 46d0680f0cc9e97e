// Ciphers (DES, RC2, RC4, RSA) in one class tree, the front end TCrypter, and the unsigned big
// integers that RSA computes with.
//
// True of all ciphers:
//   Data       A cipher works in place, on the caller's buffer. Lengths are in bytes.
//   Direction  An object encrypts or decrypts, as its constructor was told, for good.
//   Messages   One may come in several calls. The call with final ends it, and the object is then
//              ready for the next one under the same key.
//   Failure    A returned length of 0; data and state are then as before. Nothing says more.
//   Ownership  A key, a vector or data is not kept by address after the call. TCrypter keeps a
//              reference to its cipher, which has to outlive it. Destructors wipe the key.
//   Threads    No locking: even decryption changes the object. Use one from one thread at a time.
//   Copies     A copied DES, RC2 or RC4 cipher goes on from the same place in the message, on its
//              own.
//   Examples   examples/ciphers/ciphers.cpp, examples/keys/keys.cpp
//
// All of these are here for compatibility, not for new designs: DES, RC2 and RC4 have been broken,
// as has the padding of PKCS #1 v1.5 that RSA uses. Nothing here authenticates: whoever can change
// ciphertext changes the plaintext, and the length that its padding gives.

#ifndef KEST_CRYPTO_H
#define KEST_CRYPTO_H

#include "kest/string.h"

namespace KEST {

// The root of all ciphers.
class KEST_API TCipher {
 public:
  // Every value but kOpEncrypt routes data to decryption.
  enum ECipherOp : int { kOpEncrypt = 0, kOpDecrypt = 1 };

  // Ciphers wipe their keys when they are destroyed.
  virtual ~TCipher() = 0;

  // Takes key or parameters from the BER structure at ber, of at most len bytes. Returns the number
  // of bytes accepted; 0 on failure, and where the cipher cannot read any, as DES, RC2 and RC4.
  virtual int BerInit(const unsigned char* ber, int len) = 0;

  // Writes key or parameters as a BER structure into buf, which has room for size bytes. Returns
  // the number of bytes written; 0, with nothing written, when there is no room or no such
  // structure.
  virtual int BerDump(unsigned char* buf, int size) = 0;

  // 0 for an RSA cipher, 1 for a block cipher, 2 for a stream cipher.
  virtual int GetType() = 0;

  // Works on len bytes at data, the next part of a message, or with final the last one. Returns how
  // many bytes of result data then holds.
  virtual int ProcessData(unsigned char* data, int len, bool final) = 0;

 protected:
  TCipher();  // kOpEncrypt
  TCipher(ECipherOp op);

  ECipherOp op;
};

// A block cipher with its chaining mode and padding. A subclass supplies ProcessBlock and
// GetBlockSize, from 1 to 8 bytes; with any other block size nothing is done and lengths are 0.
//
// Modes are ECB and CBC of FIPS 81. The last part of a message is padded as in PKCS #7: 1 byte to a
// whole block, each byte holding the number of bytes added.
class KEST_API TBlockCipher : public TCipher {
 public:
  enum ECipherMode : int { kModeCbc = 0, kModeEcb = 1 };

  ~TBlockCipher() override;
  int GetType() override;

  // EncryptData or DecryptData, by the direction.
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Encrypts or decrypts one block in place, without chaining.
  virtual void ProcessBlock(unsigned char* block) const = 0;

  // Bytes in a block.
  virtual int GetBlockSize() const = 0;

  // CBC until it is called. Any other value than the two is accepted, and then NOTHING IS
  // ENCRYPTED: data, padding and chain stay untouched while the lengths are returned as if.
  void SetMode(ECipherMode mode);

  // Copies one block from iv as the initial vector and starts a message; null stands for zeros.
  // Without a call the vector is zeros too.
  void SetIv(const unsigned char* iv);

  // Encrypts len bytes, and with final the padding behind them, for which data needs room: up to a
  // block more than len. Returns how many bytes of ciphertext data holds. Without final len has to
  // be whole blocks. Final in CBC goes back to the initial vector.
  //
  // Returns 0 and does nothing when len is below 0, is not whole blocks, or does not fit an int
  // when padded.
  int EncryptData(unsigned char* data, int len, bool final);

  // Decrypts len bytes, which always have to be whole blocks. Returns how many bytes of plaintext
  // data holds: len, and with final as many fewer as its last byte says, but at most a block. Final
  // in CBC goes back to the initial vector.
  //
  // That last byte is all that is looked at. A padding of 0, above the block size or with other
  // bytes in it is no failure, so that a wrong key goes unnoticed: check the message itself.
  //
  // Returns 0 and does nothing when len is below 0 or not whole blocks; a final len of 0 gives 0.
  int DecryptData(unsigned char* data, int len, bool final);

  // dst[k] ^= src[k] for n bytes; nothing when n is below 1.
  static void XorBlock(unsigned char* dst, const unsigned char* src, int n);

 protected:
  TBlockCipher();  // kOpEncrypt
  TBlockCipher(ECipherOp op);

  ECipherMode mode;
  unsigned char iv[8];
  unsigned char chain[8];  // what CBC mixes into the next block: the ciphertext before it
};

// A stream cipher: any number of bytes, no padding. A subclass supplies ProcessStream and Reset.
class KEST_API TStreamCipher : public TCipher {
 public:
  ~TStreamCipher() override;
  int GetType() override;

  // ProcessStream, and with final Reset after it. Returns len; a negative len does nothing and
  // returns 0.
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Works len bytes of keystream into data, from where the last call stopped.
  virtual void ProcessStream(unsigned char* data, int len) = 0;

  // Goes back to the start of the keystream, under the same key.
  virtual void Reset() = 0;

 protected:
  TStreamCipher();  // kOpEncrypt
  TStreamCipher(ECipherOp op);
};

// The root of the public-key ciphers, which TCrypter tells apart by it.
class KEST_API TRsaCipher : public TCipher {
 public:
  ~TRsaCipher() override;
  int GetType() override;

 protected:
  TRsaCipher();  // kOpEncrypt
  TRsaCipher(ECipherOp op);
};

// Single DES, FIPS 46-3: blocks of 8 bytes, a key of 8 bytes.
class KEST_API TDesCipher : public TBlockCipher {
 public:
  // Always reads 8 bytes of key; keyLength is not looked at, on purpose. Neither parity nor weak
  // keys are checked. An op that is neither of the two decrypts in DecryptData's way but by
  // encrypting each block, on purpose.
  TDesCipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);
  ~TDesCipher() override;

  // Always 0.
  int BerInit(const unsigned char* ber, int len) override;

  // The algorithm identifier 1.3.14.3.2.7 (DES in CBC, whatever the mode is) with the initial
  // vector, 21 bytes. The vector is wrapped in a SEQUENCE of its own, on purpose.
  int BerDump(unsigned char* buf, int size) override;

  void ProcessBlock(unsigned char* block) const override;
  int GetBlockSize() const override;

 private:
  unsigned int schedule[32];  // two words a round, in the order of use
};

// RC2, RFC 2268: blocks of 8 bytes, a key of 1 to 128 bytes, of whose strength effectiveBits are
// left.
class KEST_API TRc2Cipher : public TBlockCipher {
 public:
  // keyLength counts as the nearest of 1 to 128; at least one byte is read. effectiveBits of 0, and
  // below 0 or above 1024, stand for 1024.
  TRc2Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength, int effectiveBits);
  ~TRc2Cipher() override;

  // Always 0.
  int BerInit(const unsigned char* ber, int len) override;

  // The algorithm identifier 1.2.840.113549.3.2 (RC2 in CBC, whatever the mode is) with version and
  // initial vector: 27 bytes for 128 effective bits (version 58) and 56 (120), 28 for 40 (160).
  // Other effective bits give 0. The 120 is what RFC 2268 has for 64 bits; it is written for 56 on
  // purpose.
  int BerDump(unsigned char* buf, int size) override;

  void ProcessBlock(unsigned char* block) const override;
  int GetBlockSize() const override;

 private:
  unsigned short expandedKey[64];
  int effectiveBits;  // as given
};

// RC4. The keystream begins with its first byte, none is discarded, and it is the same in both
// directions. Two messages under one key therefore give away their difference.
class KEST_API TRc4Cipher : public TStreamCipher {
 public:
  // A keyLength below 1 counts as 1; bytes of the key behind the first 256 have no effect.
  TRc4Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);
  ~TRc4Cipher() override;

  // Both always 0.
  int BerInit(const unsigned char* ber, int len) override;
  int BerDump(unsigned char* buf, int size) override;

  // Nothing when len is below 1.
  void ProcessStream(unsigned char* data, int len) override;

  void Reset() override;

 private:
  unsigned char keyState[256];  // the permutation that the key gives
  unsigned char state[256];
  unsigned int i;
  unsigned int j;
};

// RSA with a public key, PKCS #1 version 1.5 (RFC 2313), on one block as long as the modulus: it
// encrypts a short message for the holder of the private key, or takes the message out of a block
// that the private key has signed. There is no operation with a private key.
//
// A key has two parts, modulus and public exponent, both big-endian bytes. The cipher keeps copies.
// While one of them is null there is no key, and nothing is encrypted or decrypted.
//
// TBigInt::Dump writes the results, which has consequences for a modulus whose length is not a
// multiple of 4. Decryption works when it is one byte more, and returns 0 when it is two or three
// more; encryption mostly returns 0 for all three.
//
// Padding is checked leniently, see DecryptData: COMPARE THE WHOLE MESSAGE with the one expected,
// its length included.
class KEST_API TRsaPublicCipher : public TRsaCipher {
 public:
  // Without a key: BerInit or Construct loads one.
  TRsaPublicCipher(TCipher::ECipherOp op);

  // With a key, see Construct, whose failure is not reported: nothing works then.
  TRsaPublicCipher(TCipher::ECipherOp op, const unsigned char* modulus, int modulusLen,
                   const unsigned char* exponent, int exponentLen);
  TRsaPublicCipher(const TRsaPublicCipher&) = delete;
  TRsaPublicCipher& operator=(const TRsaPublicCipher&) = delete;
  ~TRsaPublicCipher() override;

  // Loads a DER SubjectPublicKeyInfo (RFC 5280), len bytes with whatever follows it. Returns len;
  // 0 with the key as it was when this is no such structure, and 0 with a part of it gone when
  // there is no memory.
  //
  // Only tags and lengths are checked, not the algorithm or the unused bits. The first byte of the
  // modulus is dropped whatever it is: it is taken for the zero that DER puts before a top bit.
  int BerInit(const unsigned char* ber, int len) override;

  // Always 0: a key is not written.
  int BerDump(unsigned char* buf, int size) override;

  // EncryptData or DecryptData, as the constructor was told.
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Copies both parts of a key, in place of an earlier one. A part that is null or finds no memory
  // leaves null in its place, with the length of the one before. True when both are there. A
  // negative length gives false and changes nothing.
  bool Construct(const unsigned char* modulus, int modulusLen, const unsigned char* exponent,
                 int exponentLen);

  // Encrypts a message of 0 to GetModulusSize() - 11 bytes in one call, with final, in place: data
  // has room for GetModulusSize() bytes. The padding comes from KestGenerateRandom. Returns the
  // bytes written, normally GetModulusSize(); 0 for other lengths, without final, key, generator or
  // memory.
  int EncryptData(unsigned char* data, int len, bool final);

  // Takes the message out of a signed block of up to GetModulusSize() bytes, in one call with
  // final. It is written to the start of data, which has room for GetModulusSize() bytes, and its
  // length is returned. 0 with data as it was for longer blocks, without final, key or memory, when
  // the block is not 00 01, FF any number of times, 00, message, and when the message is empty.
  // There need not be a single FF, on purpose.
  int DecryptData(unsigned char* data, int len, bool final);

  // Bytes in the modulus, which are those of a block; 0 before the first key.
  int GetModulusSize() const;

 private:
  unsigned char* modulus;
  int modulusSize;
  unsigned char* exponent;
  int exponentSize;
};

// Runs data through a cipher that it refers to and does not own. Copies refer to the same cipher.
class KEST_API TCrypter {
 public:
  // Sets the cipher's mode and initial vector; a null iv stands for zeros.
  TCrypter(TBlockCipher& cipher, TBlockCipher::ECipherMode mode, const unsigned char* iv);
  TCrypter(TStreamCipher& cipher);
  TCrypter(TRsaCipher& cipher);

  // The cipher's ProcessData, in place.
  int CryptData(unsigned char* data, int len, bool final);

  // The same on a copy of the len bytes at in, made in out. The two may overlap, or be one. out
  // needs room for the result: for final encryption up to a block more than len, for RSA the size
  // of the modulus. When the cipher refuses, out holds the copy.
  int CryptData(const unsigned char* in, int len, unsigned char* out, bool final);

 private:
  TCipher& cipher;
};

// An integer from 0 up, of any size: 32-bit words, least significant first.
//
// True of all members:
//   Results    The operations are static, write their first arguments and return false on failure:
//              for want of memory, or with a divisor of 0. A result may be an operand too.
//   Failure    A failed result keeps its value, unless it was resized already. A constructor
//              without memory gives 0, assignment then changes nothing.
//   Memory     Buffers grow in steps of 8 words and never shrink, so a result that is used again
//              costs no request. They are wiped before they are freed, for values may be secret.
//   Normal     After every operation the top word is not 0, and 0 has no words. AdjustBuffer alone
//              leaves that to FixLength.
//   Time       Depends on the values: not for a secret that an attacker can watch being used.
//
// The constructors convert: TBigInt::ExpMod(r, 4, 13, 497).
class KEST_API TBigInt {
 public:
  TBigInt();
  TBigInt(const TBigInt& other);

  // value read as unsigned: -1 is 0xFFFFFFFF.
  TBigInt(int value);

  // Hexadecimal text, most significant digit first. Units that are no digits are skipped, so 0x1F
  // is 31, and "no digits" is 0xD. Null is 0.
  TBigInt(const unsigned short* text);

  // Big-endian bytes. A len below 1 gives 0.
  TBigInt(const unsigned char* bytes, int len);
  ~TBigInt();
  TBigInt& operator=(const TBigInt& other);

  // The low word; the others are ignored.
  int ToInt() const;

  // Upper-case hexadecimal without prefix or leading zeros; empty without memory.
  TBstr ToString() const;

  // Writes the value big-endian, in whole words, and returns 4 * GetLength(); 0 with nothing
  // written when that is above size.
  //
  // RIGHT ONLY WITH UP TO 3 BYTES TO SPARE, which are zeroed in front of the value. With more, as
  // many bytes in front are zeroed, but for every four of them a word is left out at the top of
  // the value, and four bytes at the end of buf are not written. A value of 0 zeroes all of buf and
  // returns 0.
  int Dump(unsigned char* buf, int size) const;

  // Below 0, 0 or above 0 as a is below, equal to or above b; any number, not only 1.
  static int Cmp(const TBigInt& a, const TBigInt& b);

  // r = a + b.
  static bool Add(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // r = a - b. a has to be b at least. If not, the result has no use, and nothing reports that.
  static bool Sub(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // r = a * b.
  static bool Mul(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // Quotient and remainder; one object for both ends up with the remainder. With a d of 0 neither
  // is touched.
  static bool Div(TBigInt& q, TBigInt& rem, const TBigInt& a, const TBigInt& d);

  // a * b mod m. With an m of 0 r is not touched.
  static bool MulMod(TBigInt& r, const TBigInt& a, const TBigInt& b, const TBigInt& m);

  // base^exp mod m. Always true: an m of 0 gives 1, and no memory gives 0. An exp of 0 gives 1 even
  // when m is 1.
  static bool ExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m);

  // a * 2^bits, and a / 2^bits rounded down. A negative count is refused.
  static bool Shl(TBigInt& r, const TBigInt& a, int bits);
  static bool Shr(TBigInt& r, const TBigInt& a, int bits);

  // Makes room for words words and sets the length to that. With keep the old words stay; new ones
  // are 0 when the buffer had to grow, and otherwise hold whatever was there. Without keep all are
  // 0. False with nothing changed for a negative count, or without memory.
  bool AdjustBuffer(int words, bool keep);

  // Drops zero words from the top.
  void FixLength();

  // The low half of a * b; high gets the other one.
  static unsigned int WordMul(unsigned int& high, unsigned int a, unsigned int b);

  // The low half of (high * 2^32 + low) / d; 0 when d is 0. The low word comes first.
  static unsigned int WordDiv(unsigned int low, unsigned int high, unsigned int d);

  // Significant bits of w: 0 for 0, 32 with the top bit.
  static int WordBits(unsigned int w);

  // Words in use, words allocated, and the words: null when there is no buffer. Only those below
  // GetLength() mean anything.
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
