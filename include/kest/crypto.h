// Ciphers (DES, RC2, RC4, RSA) in one class tree, the front end TCrypter, and the unsigned big
// integers that RSA computes with.
//
// True of all ciphers:
//   Data       A cipher works in place, on the caller's buffer. Lengths are in bytes.
//   Direction  An object encrypts or decrypts, as its constructor was told, for good.
//   Messages   One may come in several calls. The call with final ends it, and the object is then
//              ready for the next one under the same key.
//   Failure    A returned length of 0; data and state are then as before. Nothing says more.
//   Blocking   Never, save for what the allocator hooks do.
//   Cost       Linear in the bytes.
//   Ownership  A key, a vector or data is not kept by address after the call. TCrypter keeps a
//              reference to its cipher, which has to outlive it. Destructors wipe the key.
//   Threads    No locking: even decryption changes the object. Use one from one thread at a time.
//   Copies     A copied DES, RC2 or RC4 cipher goes on from the same place in the message, on its
//              own.
//   Example    examples/ciphers/ciphers.cpp, examples/keys/keys.cpp
//   See        docs/ciphers.md
//
// All of these are here for compatibility, not for new designs: DES, RC2 and RC4 have been broken,
// as has the padding of PKCS #1 v1.5 that RSA uses. Nothing here authenticates: whoever can change
// ciphertext changes the plaintext, and the length that its padding gives.

#ifndef KEST_CRYPTO_H
#define KEST_CRYPTO_H

#include "kest/string.h"

namespace KEST {

// The root of all ciphers.
//
//   op         kOpEncrypt or kOpDecrypt
//   data       the bytes to work on, in place, with room for the result; null only for a len of 0
//   len        in bytes
//   final      whether this call ends the message
//   See        TCrypter, docs/ciphers.md
class KEST_API TCipher {
 public:
  // The direction. Every value but kOpEncrypt routes data to decryption.
  enum ECipherOp : int { kOpEncrypt = 0, kOpDecrypt = 1 };

  // Destroys the cipher, which wipes its key.
  //   Failure  none
  //   Cost     constant
  virtual ~TCipher() = 0;

  // Takes key or parameters from a BER structure.
  //   ber     the structure, which is not kept; not null unless len is 0
  //   len     bytes at ber
  //   Result  the bytes accepted; 0 on failure, and where the cipher cannot read any, as DES, RC2
  //           and RC4
  virtual int BerInit(const unsigned char* ber, int len) = 0;

  // Writes key or parameters as a BER structure.
  //   buf     receives the structure; may be null when size is 0
  //   size    the room in bytes
  //   Result  the bytes written; 0, with nothing written, when there is no room or no such
  //           structure
  //   Cost    constant
  virtual int BerDump(unsigned char* buf, int size) = 0;

  // The kind of cipher: 0 for an RSA cipher, 1 for a block cipher, 2 for a stream cipher.
  //   Failure  none
  //   Cost     constant
  virtual int GetType() = 0;

  // Works on len bytes at data, the next part of a message, or with final the last one. Returns how
  // many bytes of result data then holds.
  virtual int ProcessData(unsigned char* data, int len, bool final) = 0;

 protected:
  // For derived classes: a cipher that works in one direction, kOpEncrypt unless told otherwise.
  //   Failure  none
  //   Cost     constant
  TCipher();
  TCipher(ECipherOp op);

  ECipherOp op;  // The direction.
};

// A block cipher with its chaining mode and padding. A subclass supplies ProcessBlock and
// GetBlockSize, from 1 to 8 bytes; with any other block size nothing is done and lengths are 0.
//
// Modes are ECB and CBC of FIPS 81. The last part of a message is padded as in PKCS #7: 1 byte to a
// whole block, each byte holding the number of bytes added.
class KEST_API TBlockCipher : public TCipher {
 public:
  // The chaining modes, of FIPS 81.
  enum ECipherMode : int { kModeCbc = 0, kModeEcb = 1 };

  // Destroys the cipher, which wipes its vectors.
  //   Failure  none
  //   Cost     constant
  ~TBlockCipher() override;

  // The kind of cipher: 1, a block cipher.
  int GetType() override;

  // Works on the next part of a message, by EncryptData or DecryptData as the direction is.
  //   Result  the bytes of result in data; 0 where that member returns 0
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Encrypts or decrypts one block in place, without chaining.
  //   block    GetBlockSize() bytes; not null
  //   Failure  none
  //   Cost     constant
  virtual void ProcessBlock(unsigned char* block) const = 0;

  // The number of bytes in a block.
  //   Failure  none
  //   Cost     constant
  virtual int GetBlockSize() const = 0;

  // Sets the chaining mode, which is CBC until then. Any other value than the two is accepted, and
  // then NOTHING IS ENCRYPTED: data, padding and chain stay untouched while the lengths are
  // returned as if.
  //   mode     kModeCbc or kModeEcb
  //   Failure  none
  //   Cost     constant
  void SetMode(ECipherMode mode);

  // Sets the initial vector and starts a message. Without a call the vector is zeros.
  //   iv       one block, which is copied; null stands for zeros
  //   Failure  none
  //   Cost     constant
  void SetIv(const unsigned char* iv);

  // Encrypts len bytes, and with final the padding behind them. Final in CBC goes back to the
  // initial vector.
  //   data    the bytes, with room for a block more than len when final; null only for a len of 0
  //           without final
  //   len     in bytes; without final whole blocks
  //   Result  the bytes of ciphertext in data; 0, and nothing is done, when len is below 0, is not
  //           whole blocks, or does not fit an int when padded
  int EncryptData(unsigned char* data, int len, bool final);

  // Decrypts len bytes, and with final takes the padding off. Final in CBC goes back to the initial
  // vector.
  //
  // The last byte of the padding is all that is looked at. A padding of 0, above the block size or
  // with other bytes in it is no failure, so that a wrong key goes unnoticed: check the message
  // itself.
  //   len     in bytes, always whole blocks
  //   Result  the bytes of plaintext in data: len, and with final as many fewer as its last byte
  //           says, but at most a block; 0, and nothing is done, when len is below 0 or not whole
  //           blocks; a final len of 0 gives 0
  int DecryptData(unsigned char* data, int len, bool final);

  // Mixes src into dst: dst[k] ^= src[k] for n bytes.
  //   dst      n bytes to change; null only for an n below 1
  //   src      n bytes; null only for an n below 1
  //   n        in bytes; nothing below 1
  //   Failure  none
  //   Threads  any
  static void XorBlock(unsigned char* dst, const unsigned char* src, int n);

 protected:
  // For derived classes: a cipher in CBC mode with a vector of zeros, kOpEncrypt unless told
  // otherwise.
  //   Failure  none
  //   Cost     constant
  TBlockCipher();
  TBlockCipher(ECipherOp op);

  ECipherMode mode;        // The chaining mode.
  unsigned char iv[8];     // The initial vector.
  unsigned char chain[8];  // What CBC mixes into the next block: the ciphertext before it.
};

// A stream cipher: any number of bytes, no padding. A subclass supplies ProcessStream and Reset.
//
//   Example    stream-cipher
class KEST_API TStreamCipher : public TCipher {
 public:
  // Destroys the cipher.
  ~TStreamCipher() override;

  // The kind of cipher: 2, a stream cipher.
  int GetType() override;

  // Works on the next part of a message: ProcessStream, and with final Reset after it.
  //   Result  len, in bytes; 0, and nothing is done, for a negative len
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Works len bytes of keystream into data, from where the last call stopped.
  //   Failure  none
  virtual void ProcessStream(unsigned char* data, int len) = 0;

  // Goes back to the start of the keystream, under the same key.
  //   Failure  none
  virtual void Reset() = 0;

 protected:
  // For derived classes: a cipher that works in one direction, kOpEncrypt unless told otherwise.
  //   Failure  none
  //   Cost     constant
  TStreamCipher();
  TStreamCipher(ECipherOp op);
};

// The root of the public-key ciphers, which TCrypter tells apart by it.
class KEST_API TRsaCipher : public TCipher {
 public:
  // Destroys the cipher.
  ~TRsaCipher() override;

  // The kind of cipher: 0, an RSA cipher.
  int GetType() override;

 protected:
  // For derived classes: a cipher that works in one direction, kOpEncrypt unless told otherwise.
  //   Failure  none
  //   Cost     constant
  TRsaCipher();
  TRsaCipher(ECipherOp op);
};

// Single DES, FIPS 46-3: blocks of 8 bytes, a key of 8 bytes.
//
//   Example    des
class KEST_API TDesCipher : public TBlockCipher {
 public:
  // A cipher with a key. Neither parity nor weak keys are checked. An op that is neither of the two
  // decrypts in DecryptData's way but by encrypting each block, on purpose.
  //   key        8 bytes, which are always read and not kept; not null
  //   keyLength  in bytes; not looked at, on purpose
  //   Failure    none
  //   Cost       constant
  TDesCipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);

  // Wipes the key.
  ~TDesCipher() override;

  // Reads nothing: DES has no structure to take a key from.
  //   ber     not looked at, and may be null
  //   Result  always 0
  //   Cost    constant
  int BerInit(const unsigned char* ber, int len) override;

  // Writes the algorithm identifier 1.3.14.3.2.7 (DES in CBC, whatever the mode is) with the
  // initial vector. The vector is wrapped in a SEQUENCE of its own, on purpose.
  //   Result  21, in bytes; 0, with nothing written, when there is no room
  int BerDump(unsigned char* buf, int size) override;

  // Encrypts or decrypts one block of 8 bytes in place, without chaining.
  void ProcessBlock(unsigned char* block) const override;

  // The number of bytes in a block: 8.
  int GetBlockSize() const override;

 private:
  unsigned int schedule[32];  // two words a round, in the order of use
};

// RC2, RFC 2268: blocks of 8 bytes, a key of 1 to 128 bytes, of whose strength effectiveBits are
// left.
class KEST_API TRc2Cipher : public TBlockCipher {
 public:
  // A cipher with a key.
  //   key            keyLength bytes, at least one, which are not kept; not null
  //   keyLength      in bytes; it counts as the nearest of 1 to 128
  //   effectiveBits  the strength that is left; 0, and below 0 or above 1024, stand for 1024
  //   Failure        none
  //   Cost           constant
  TRc2Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength, int effectiveBits);

  // Wipes the key.
  ~TRc2Cipher() override;

  // Reads nothing: a key is not taken from a structure.
  //   ber     not looked at, and may be null
  //   Result  always 0
  //   Cost    constant
  int BerInit(const unsigned char* ber, int len) override;

  // Writes the algorithm identifier 1.2.840.113549.3.2 (RC2 in CBC, whatever the mode is) with
  // version and initial vector.
  //
  // There is a version for 128 effective bits (58), 56 (120) and 40 (160). The 120 is what RFC 2268
  // has for 64 bits; it is written for 56 on purpose.
  //   Result  27, in bytes, and 28 for 40 effective bits; 0, with nothing written, for other
  //           effective bits or when there is no room
  int BerDump(unsigned char* buf, int size) override;

  // Encrypts or decrypts one block of 8 bytes in place, without chaining.
  void ProcessBlock(unsigned char* block) const override;

  // The number of bytes in a block: 8.
  int GetBlockSize() const override;

 private:
  unsigned short expandedKey[64];
  int effectiveBits;  // as given
};

// RC4. The keystream begins with its first byte, none is discarded, and it is the same in both
// directions. Two messages under one key therefore give away their difference.
class KEST_API TRc4Cipher : public TStreamCipher {
 public:
  // A cipher with a key, at the start of its keystream.
  //   key        keyLength bytes, at least one, which are not kept; not null
  //   keyLength  in bytes; below 1 counts as 1, and bytes behind the first 256 have no effect
  //   Failure    none
  //   Cost       constant
  TRc4Cipher(TCipher::ECipherOp op, const unsigned char* key, int keyLength);

  // Wipes the key.
  ~TRc4Cipher() override;

  // Reads nothing: a key is not taken from a structure.
  //   ber     not looked at, and may be null
  //   Result  always 0
  //   Cost    constant
  int BerInit(const unsigned char* ber, int len) override;

  // Writes nothing: RC4 has no parameters.
  //   buf     not looked at, and may be null
  //   Result  always 0
  int BerDump(unsigned char* buf, int size) override;

  // Works len bytes of keystream into data, from where the last call stopped.
  //   len  in bytes; nothing below 1
  void ProcessStream(unsigned char* data, int len) override;

  // Goes back to the start of the keystream, under the same key.
  //   Cost  constant
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
//
//   modulus      big-endian bytes, which are copied; with null there is no key
//   modulusLen   bytes of the modulus
//   exponent     big-endian bytes, which are copied; with null there is no key
//   exponentLen  bytes of the exponent
//   See          docs/rsa.md
class KEST_API TRsaPublicCipher : public TRsaCipher {
 public:
  // A cipher without a key: BerInit or Construct loads one.
  //   Failure  none
  //   Cost     constant
  TRsaPublicCipher(TCipher::ECipherOp op);

  // A cipher with a key.
  //   Failure  a failure of Construct is not reported: nothing works then
  //   Cost     two requests for memory and copies
  TRsaPublicCipher(TCipher::ECipherOp op, const unsigned char* modulus, int modulusLen,
                   const unsigned char* exponent, int exponentLen);
  TRsaPublicCipher(const TRsaPublicCipher&) = delete;
  TRsaPublicCipher& operator=(const TRsaPublicCipher&) = delete;

  // Wipes and frees the key.
  ~TRsaPublicCipher() override;

  // Loads the key of a DER SubjectPublicKeyInfo (RFC 5280).
  //
  // Only tags and lengths are checked, not the algorithm or the unused bits. The first byte of the
  // modulus is dropped whatever it is: it is taken for the zero that DER puts before a top bit.
  //   len      in bytes, with whatever follows the structure
  //   Result   len; 0 on failure
  //   Failure  0, with the key as it was when this is no such structure, and with a part of it gone
  //            when there is no memory
  //   Cost     two requests for memory and copies
  int BerInit(const unsigned char* ber, int len) override;

  // Writes nothing: a key is not written.
  //   buf     not looked at, and may be null
  //   Result  always 0
  int BerDump(unsigned char* buf, int size) override;

  // Works on a whole message, by EncryptData or DecryptData as the constructor was told.
  //   Result  what that member returns, in bytes
  //   Cost    as for that member
  int ProcessData(unsigned char* data, int len, bool final) override;

  // Copies both parts of a key, in place of an earlier one.
  //   Result   true when both are there; false otherwise, and for a negative length, which changes
  //            nothing
  //   Failure  a part that is null or finds no memory leaves null in its place, with the length of
  //            the one before
  //   Cost     two requests for memory and copies
  bool Construct(const unsigned char* modulus, int modulusLen, const unsigned char* exponent,
                 int exponentLen);

  // Encrypts a message in one call, with final, in place. The padding comes from
  // KestGenerateRandom.
  //   data    the message, with room for GetModulusSize() bytes; not null
  //   len     0 to GetModulusSize() - 11 bytes
  //   Result  the bytes written, normally GetModulusSize(); 0 for other lengths, without final,
  //           key, generator or memory
  //   Cost    that of TBigInt::ExpMod with the key: the square of the modulus for each bit of the
  //           exponent
  int EncryptData(unsigned char* data, int len, bool final);

  // Takes the message out of a signed block, in one call with final, in place. The block is 00 01,
  // FF any number of times, 00, message. There need not be a single FF, on purpose.
  //   data    the block, then the message, with room for GetModulusSize() bytes; not null
  //   len     up to GetModulusSize() bytes
  //   Result  the bytes of the message; 0, with data as it was, for longer blocks, without final,
  //           key or memory, when the block is not as above, and when the message is empty
  //   Cost    that of TBigInt::ExpMod with the key: the square of the modulus for each bit of the
  //           exponent
  int DecryptData(unsigned char* data, int len, bool final);

  // The number of bytes in the modulus, which are those of a block; 0 before the first key.
  //   Failure  none
  //   Cost     constant
  int GetModulusSize() const;

 private:
  unsigned char* modulus;
  int modulusSize;
  unsigned char* exponent;
  int exponentSize;
};

// Runs data through a cipher that it refers to and does not own. Copies refer to the same cipher.
//
//   cipher     what data runs through; it has to outlive the object
//   len        in bytes
//   final      whether this call ends the message
//   See        TCipher, docs/ciphers.md
class KEST_API TCrypter {
 public:
  // Refers to a block cipher and sets its mode and initial vector.
  //   mode     the cipher's chaining mode from now on
  //   iv       one block, which is copied; null stands for zeros
  //   Failure  none
  //   Cost     constant
  TCrypter(TBlockCipher& cipher, TBlockCipher::ECipherMode mode, const unsigned char* iv);

  // Refers to a stream cipher or an RSA cipher.
  //   Failure  none
  //   Cost     constant
  TCrypter(TStreamCipher& cipher);
  TCrypter(TRsaCipher& cipher);

  // Runs bytes through the cipher's ProcessData, in place.
  //   data    the bytes, with room for the result; null only for a len of 0
  //   Result  the bytes of result, or 0 when the cipher refuses
  int CryptData(unsigned char* data, int len, bool final);

  // Runs a copy of the bytes at in through the cipher's ProcessData. The two may overlap, or be
  // one.
  //   in       the bytes, which stay as they are unless out overlaps; null only for a len of 0
  //   out      receives the result, with room for it: for final encryption up to a block more than
  //            len, for RSA the size of the modulus; not null
  //   Result   the bytes of result, or 0 when the cipher refuses
  //   Failure  when the cipher refuses, out holds the copy
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
//
//   other      the number to copy
//   r          receives the result, and may be an operand too
//   a, b       operands
//   d          the divisor; with 0 the call fails
//   m          the modulus
//   bits       how many bits to shift by; a negative count is refused
//   Ownership  The words are the number's. Nothing that is passed is kept.
//   Threads    No locking. One thread at a time may change a number; any may read one that nobody
//              changes.
//   Cost       Linear in the words.
//   See        docs/big-integers.md
class KEST_API TBigInt {
 public:
  // The number 0, without memory.
  //   Failure  none
  //   Cost     constant
  TBigInt();

  // A copy.
  TBigInt(const TBigInt& other);

  // The number that value is, read as unsigned: -1 is 0xFFFFFFFF.
  //   value  any
  //   Cost   constant
  TBigInt(int value);

  // Reads hexadecimal text, most significant digit first. Units that are no digits are skipped, so
  // 0x1F is 31, and "no digits" is 0xD.
  //   text  units up to the terminator; null is 0
  TBigInt(const unsigned short* text);

  // Reads big-endian bytes.
  //   bytes  len bytes; may be null when len is below 1
  //   len    in bytes; below 1 gives 0
  TBigInt(const unsigned char* bytes, int len);

  // Wipes and frees the words.
  //   Failure  none
  ~TBigInt();

  // Makes this number the value of other.
  //   Result   this number
  //   Failure  nothing is changed without memory
  TBigInt& operator=(const TBigInt& other);

  // The low word; the others are ignored.
  //   Failure  none
  //   Cost     constant
  int ToInt() const;

  // The number as upper-case hexadecimal text without prefix or leading zeros.
  //   Result   the text, "0" for 0
  //   Failure  the text is empty without memory
  TBstr ToString() const;

  // Writes the value big-endian, in whole words.
  //
  // RIGHT ONLY WITH UP TO 3 BYTES TO SPARE, which are zeroed in front of the value. With more, as
  // many bytes in front are zeroed, but for every four of them a word is left out at the top of
  // the value, and four bytes at the end of buf are not written. A value of 0 zeroes all of buf and
  // gives 0.
  //   buf      receives the value; may be null when size is 0
  //   size     the room in bytes
  //   Result   4 * GetLength(), in bytes; 0, with nothing written, when that is above size
  //   Failure  0 when there is no room
  int Dump(unsigned char* buf, int size) const;

  // Compares a and b.
  //   Result   below 0, 0 or above 0 as a is below, equal to or above b; any number, not only 1
  //   Failure  none
  static int Cmp(const TBigInt& a, const TBigInt& b);

  // Adds: r = a + b.
  //   Result  true; false without memory
  static bool Add(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // Subtracts: r = a - b. Where a is below b the result has no use, and nothing reports that.
  //   a       b at least
  //   Result  true; false without memory
  static bool Sub(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // Multiplies: r = a * b.
  //   Result  true; false without memory
  //   Cost    the product of the two lengths
  static bool Mul(TBigInt& r, const TBigInt& a, const TBigInt& b);

  // Divides: q = a / d, and rem is what is left. One object for both ends up with the remainder.
  //   q        receives the quotient, and may be an operand too
  //   rem      receives the remainder, and may be an operand too
  //   Result   true; false with a d of 0 and without memory
  //   Failure  with a d of 0 neither result is touched
  //   Cost     the length of the quotient times that of d
  static bool Div(TBigInt& q, TBigInt& rem, const TBigInt& a, const TBigInt& d);

  // Multiplies modulo m: r = a * b mod m.
  //   Result   true; false with an m of 0 and without memory
  //   Failure  with an m of 0 r is not touched
  //   Cost     that of Mul and Div
  static bool MulMod(TBigInt& r, const TBigInt& a, const TBigInt& b, const TBigInt& m);

  // Raises to a power modulo m: r = base^exp mod m. An exp of 0 gives 1 even when m is 1.
  //   base     the number to raise
  //   exp      the power
  //   Result   always true
  //   Failure  an m of 0 gives 1, and no memory gives 0
  //   Cost     the square of the length of m for each bit of exp
  static bool ExpMod(TBigInt& r, const TBigInt& base, const TBigInt& exp, const TBigInt& m);

  // Shifts to the left: r = a * 2^bits.
  //   Result  true; false for a negative count and without memory
  static bool Shl(TBigInt& r, const TBigInt& a, int bits);

  // Shifts to the right: r = a / 2^bits, rounded down.
  //   Result  true; false for a negative count and without memory
  static bool Shr(TBigInt& r, const TBigInt& a, int bits);

  // Makes room for words words and sets the length to that.
  //   words    how many words
  //   keep     whether the old words stay; new ones are then 0 when the buffer had to grow, and
  //            otherwise hold whatever was there; without it all are 0
  //   Result   true; false for a negative count, or without memory
  //   Failure  nothing is changed
  bool AdjustBuffer(int words, bool keep);

  // Drops zero words from the top.
  //   Failure  none
  void FixLength();

  // Arithmetic on single words.
  //
  //   a, b     words
  //   high     the high word
  //   low      the low word
  //   d        the divisor
  //   w        a word
  //   Failure  none
  //   Threads  any
  //   Cost     constant
  //   See      docs/big-integers.md

  // Multiplies two words.
  //   high    receives the high half of the product
  //   Result  the low half
  static unsigned int WordMul(unsigned int& high, unsigned int a, unsigned int b);

  // Divides two words by one: (high * 2^32 + low) / d. The low word comes first.
  //   Result  the low half of the quotient; 0 when d is 0
  static unsigned int WordDiv(unsigned int low, unsigned int high, unsigned int d);

  // The number of significant bits of w: 0 for 0, 32 with the top bit.
  static int WordBits(unsigned int w);

  // What is stored.
  //
  //   Failure  none
  //   Cost     constant
  //   See      docs/big-integers.md

  // The number of words in use.
  int GetLength() const { return length; }

  // The number of words allocated.
  int GetCapacity() const { return capacity; }

  // The words; null when there is no buffer. Only those below GetLength() mean anything.
  const unsigned int* GetWords() const { return words; }

 private:
  unsigned int* words;
  int length;
  int capacity;
};
}  // namespace KEST

#endif  // KEST_CRYPTO_H
