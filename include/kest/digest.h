// Message digests (MD4, MD5, SHA-1), HMAC and the random generator built on them, and three small
// encodings of data: BER elements, base64 and the Internet checksum.
//
// True of all of them:
//   Lengths    Bytes, but 16-bit units for the text of base64. A length below 0 does nothing; with
//              a length of 0 the pointer may be null, save where it says otherwise.
//   Ownership  Nothing here keeps a caller's data or allocates, save RandInit. HMAC and the
//              generator keep the address of their digest, the generator that of its buffers too;
//              these have to outlive them.
//   Threads    No locking. Use an object from one thread at a time, or under a lock of yours; that
//              goes for the generator of the process too.
//   Blocking   Never.
//   Cost       Linear in the bytes, and constant where there are none.
//   Failure    Digests, generator and checksum never fail, save RandInit for want of memory. HMAC
//              refuses some keys. The encoders and decoders return 0 for input that they cannot
//              take and for an output buffer that is too small.
//   Example    examples/digests/digests.cpp
//   See        docs/digests.md
//
//   data       length bytes; may be null when length is 0
//
// MD4, MD5 and SHA-1 no longer resist collisions. They are here for formats and protocols that call
// for them, not for new designs.

#ifndef KEST_DIGEST_H
#define KEST_DIGEST_H

#include "kest/export.h"
namespace KEST {

// A one-way digest of a message that arrives in pieces. Construction starts a message; any number
// of Update calls feed it; Finish ends it and is ready for the next one. The digest depends on the
// bytes alone, not on how they were cut into pieces. A copy, made at any time, goes on from the
// same state.
//
// There is no virtual destructor: never delete a digest through a pointer to this class.
//
//   length     bytes of data; nothing happens below 1
//   digest     receives the digest, GetDigestSize() bytes; not null
//   state      the five words that the compression function works on; not null
//   block      the 64 bytes of a block, at any address; not null
//   Failure    none
//   See        TMd5Digest, TShaDigest, TMd4Digest, THmac, docs/digests.md
class KEST_API TMessageDigest {
 public:
  // Starts a message.
  //   Cost  constant
  TMessageDigest();

  // Discards what was fed and starts a new message. The bytes of a partial block stay in memory.
  //   Cost  constant
  void Reset();

  // Feeds the next length bytes of the message. Whole blocks are read where they lie, at any
  // address. The message may have up to 2^61 - 1 bytes; its bit count wraps after that.
  void Update(const unsigned char* data, int length);

  // Ends the message: writes its digest, all GetDigestSize() bytes, and starts the next message.
  //   length  not looked at, on purpose; callers pass 0, as of bytes
  //   Result  GetDigestSize(), in bytes
  //   Cost    one block or two
  virtual int Finish(unsigned char* digest, int length) = 0;

  // The number of bytes in the digest.
  //   Cost  constant
  virtual int GetDigestSize() const = 0;

  // The compression function: works one block of 64 bytes into the five words of state. Update
  // calls it for every block; a host's own digest overrides it.
  //   Cost  constant
  virtual void Transform(unsigned int* state, const unsigned char* block) = 0;

 protected:
  unsigned int state[5];     // A to E; MD4 and MD5 use the first four.
  unsigned int bitCount[2];  // Bits fed so far, low word first.
  unsigned char buffer[64];  // The first (bitCount / 8) % 64 bytes are a block not complete yet.
};

// What MD4 and MD5 share: 16 bytes of digest, low byte of each word first. Finish writes 16 bytes
// whatever an override of GetDigestSize says.
class KEST_API TMdXDigest : public TMessageDigest {
 public:
  int Finish(unsigned char* digest, int length) override;
  int GetDigestSize() const override;
};

// MD4, RFC 1320.
class KEST_API TMd4Digest : public TMdXDigest {
 public:
  void Transform(unsigned int* state, const unsigned char* block) override;
};

// MD5, RFC 1321.
//
//   Example    md5
class KEST_API TMd5Digest : public TMdXDigest {
 public:
  void Transform(unsigned int* state, const unsigned char* block) override;
};

// SHA-1, FIPS 180-1: 20 bytes of digest, high byte of each word first.
class KEST_API TShaDigest : public TMessageDigest {
 public:
  int Finish(unsigned char* digest, int length) override;
  int GetDigestSize() const override;
  void Transform(unsigned int* state, const unsigned char* block) override;
};

// HMAC, RFC 2104: a code that only those who have the key can compute, over any digest with blocks
// of 64 bytes. Update and Finish as for a digest; each Finish is ready for the next message under
// the same key.
//
// The message goes through the caller's digest, which nobody else may feed between the first Update
// and Finish. A copy has the same key and shares the digest, so one of the two works at a time.
//
//   length     bytes of data; nothing happens below 0
//   See        TMessageDigest, docs/digests.md
class KEST_API THmac {
 public:
  // Takes a copy of the key. The digest is not touched yet.
  //   digest     kept by address, and has to outlive the object
  //   key        keyLength bytes, copied; may be null when there are none
  //   keyLength  0 to 64 bytes
  //   Failure    a longer key is refused, not digested first as RFC 2104 has it, and so is one of
  //              negative length; the key is not read then, Update does nothing, and Finish writes
  //              nothing and returns 0
  //   Ownership  the digest stays the caller's and has to outlive the object; the key is copied
  //   Cost       constant
  THmac(TMessageDigest& digest, const unsigned char* key, int keyLength);

  // Wipes the key. What the digest holds of a message without its Finish stays there.
  //   Failure  none
  //   Cost     constant
  ~THmac();

  // Feeds the next length bytes of the message. The first call feeds the key before them, also when
  // length is 0.
  void Update(const unsigned char* data, int length);

  // Ends the message: writes its code, all GetDigestSize() bytes of the digest.
  //
  // Without any Update the key has not been fed, and what is written is not the code of the empty
  // message, on purpose. For that one, call Update with length 0 first.
  //   mac     receives the code, as many bytes as the digest has; not null
  //   length  passed on to the digest, which does not look at it; callers pass 0, as of bytes
  //   Result  the bytes written; 0, with nothing written, when the key was refused
  //   Cost    three or four blocks of the digest
  int Finish(unsigned char* mac, int length);

  // Forgets that a message was started, so that the next Update feeds the key again. It leaves the
  // digest alone, with what it was fed: to discard a message, Reset the digest as well.
  //   Failure  none
  //   Cost     constant
  void Reset();

 private:
  TMessageDigest* digest;      // null when the key was refused
  bool started;                // the digest has been fed innerKey
  unsigned char innerKey[64];  // the key and zeros, each byte xor 0x36
  unsigned char outerKey[64];  // the same, xor 0x5c
};

// A pseudo-random byte generator over any digest. Each block of output is the digest of a counter,
// which then moves on: by a step of its own until Seed has been called twice, by an odd increment
// from then on.
//
// Unseeded, every generator yields the same constant sequence. The same seeds in the same order,
// with the same requests between them, yield the same bytes; how a request is cut into calls does
// not matter.
//
//   length     in bytes; nothing happens below 0
//   Failure    none
//   See        TMd5Prng, KestSeedRandom, KestGenerateRandom, docs/randomness.md
class KEST_API TDigestPrng {
 public:
  // Starts a generator without a seed. Only the counter is zeroed. The digest is used from the
  // first Seed or Generate on, and must not be in the middle of somebody else's message.
  //   digest     kept by address, and has to outlive the generator
  //   buffers    three blocks of size bytes, counter, increment, output: kept by address, and have
  //              to outlive the generator; not null
  //   size       that of the digest in bytes, and of each block
  //   Failure    a generator whose size is not its digest's, or is below 1, is refused: Seed and
  //              Generate then do nothing
  //   Ownership  digest and buffers stay the caller's and have to outlive the generator
  TDigestPrng(TMessageDigest& digest, unsigned char* buffers, int size);
  TDigestPrng(const TDigestPrng&) = delete;
  TDigestPrng& operator=(const TDigestPrng&) = delete;

  // Adds seed material. It takes effect with the next Generate, which digests all material since
  // the last one into the new counter; the old counter comes before it, unless the first Seed of
  // all began the batch. A length of 0 counts as a call.
  void Seed(const unsigned char* data, int length);

  // Writes the next length bytes. New seed material discards what was left of the last block, and
  // that happens with a length of 0 too.
  //   out   receives length bytes; may be null when length is 0
  //   Cost  a digest of one block for each GetDigestSize() bytes, and of the seed material
  void Generate(unsigned char* out, int length);

 protected:
  TMessageDigest* digest;    // The digest, null when the generator was refused.
  int size;                  // Bytes in a block of output.
  int seedPending;           // Not 0: the digest holds seed material.
  int seedCountdown;         // 2, 1, then 0 from the second Seed on.
  unsigned char* counter;    // What the next block is the digest of, size bytes.
  unsigned char* increment;  // What is added to the counter, size bytes, set by the first Seed.
  unsigned char* output;     // The last block of output, size bytes.
  int available;             // Bytes at the end of output not handed out yet.
};

// The generator over MD5, complete with its digest and buffers.
class KEST_API TMd5Prng : public TDigestPrng {
 public:
  // A generator without a seed.
  //   Failure  none
  //   Cost     constant
  TMd5Prng();

 private:
  TMd5Digest md5;
  unsigned char buffers[48];
};

// One element of the Basic Encoding Rules, ITU-T X.690: a tag and its content.
struct KEST_API SBerItem {
  unsigned char tag;           // The identifier octet, whole; longer tags are not supported.
  int length;                  // Bytes of content; 0x7fffffff is the indefinite form.
  const unsigned char* value;  // The content, in memory of the caller's; null when there is none.
};

// The Internet checksum, RFC 1071, of data that arrives in pieces of any length, odd ones too: the
// complement of the one's complement sum of its big-endian 16-bit words. A last odd byte counts as
// the high half of a word. Checksums are numbers: store them high byte first.
//
// Feed at most 128 KiB in one Update. With one byte more, the carries of the call can outgrow their
// 32 bits, and the checksum is then wrong.
//
//   Failure    none
//   See        KestComputeChecksum, docs/encodings.md
class KEST_API TInetChecksum {
 public:
  // Starts with nothing summed yet.
  //   Cost  constant
  TInetChecksum();

  // Adds the next length bytes. After an odd number of bytes a length of 0 takes one byte from data
  // all the same, on purpose: do not pass empty pieces then.
  //   data    length bytes; may be null when length is 0 after an even number of bytes
  //   length  in bytes, at most 131,072; nothing happens below 0
  void Update(const unsigned char* data, int length);

  // The checksum of the data so far; 0xffff when there was none.
  //   Cost  constant
  unsigned short GetCurrent() const;

  // Continues after length bytes that gave checksum.
  //   checksum  what GetCurrent returned
  //   length    in bytes, of which it matters only whether it is odd
  //   Cost      constant
  void SetCurrent(unsigned short checksum, int length);

  // Gives the checksum of the data so far and starts again.
  //   Result  what GetCurrent gives
  //   Cost    constant
  unsigned short Finish();

  // Starts again with no data.
  //   Cost  constant
  void Reset();

 private:
  unsigned int sum;  // at most 0xffff between calls
  bool odd;          // the next byte is the low half of a word
};

}  // namespace KEST

using KEST::SBerItem;

extern "C" {

// The one TMd5Prng of the process, which lives from KestInitialize to the last KestUninitialize.
//
// The library never seeds the generator itself. Until the application does, from a source that
// nobody can guess, the bytes are the same in every run of every program.
//
//   Failure  without the generator nothing is done
//   Threads  no locking: one thread at a time, or under a lock of the callers'
//   See      KestSeedRandom, KestGenerateRandom, TDigestPrng, docs/randomness.md

// Adds seed material to the generator of the process.
//   length  bytes of data; nothing happens below 0, and 0 counts as a call
KEST_API void KestSeedRandom(const unsigned char* data, int length);

// Writes the next bytes of the generator of the process.
//   out      receives length bytes; may be null when length is 0
//   length   in bytes; nothing happens below 0
//   Failure  without the generator out keeps what it holds
KEST_API void KestGenerateRandom(unsigned char* out, int length);

// Encodings of data.
//
//   Failure  0 for input that cannot be taken and for an output buffer that is too small; nothing
//            is allocated
//   Threads  any: there is no state
//   See      docs/encodings.md

// Reads the element at the start of data. Elements inside are read by further calls on value and
// length. The indefinite form has a length of 0x7fffffff and takes the 2 bytes of its header; its
// content is not looked at, and may be missing. Any number of length octets is taken, and only the
// last four of them count.
//   data       length bytes; may be null when there are none
//   length     bytes of data
//   item       receives the element, whose value points at the content, or behind the header when
//              that is empty; not null
//   Result     the bytes that the element takes, header and content; 0 and a cleared item when
//              length bytes do not hold the whole element
//   Ownership  item points into data, which has to stay as long
//   Cost       constant: the content is not read
//   See        KestBerEncode, SBerItem, docs/encodings.md
KEST_API int KestBerDecode(const unsigned char* data, int length, KEST::SBerItem* item);

// Writes an element. With a null value only the header is written, and its size returned, for the
// caller to put the content behind it; out needs room for both all the same. Otherwise the content
// is copied; it may lie in out.
//
// Only lengths up to 127 come out as X.690 has them, and can be decoded again. On purpose, 128 to
// 65535 is written as 0x81 0x00, and from 65536 on as 0x82 0x00 and the low byte of the length.
//   out     receives the element; not null
//   size    the room in bytes; on purpose, one below 0 counts as a large one
//   item    the element, which is not kept; not null
//   Result  the bytes written; 0, with nothing written, when size is too small, and for lengths
//           below 0 and from 2^24 on, save the indefinite 0x7fffffff
//   See     KestBerDecode, SBerItem, docs/encodings.md
KEST_API int KestBerEncode(unsigned char* out, int size, const KEST::SBerItem* item);

// Writes bytes as base64, RFC 4648 section 4: with padding, no line breaks and a terminating zero.
//   length  bytes of data
//   text    receives the text; not null
//   size    the room in units: 4 for each 3 bytes begun, and 1
//   Result  the units without the zero, which is 0 for no bytes; 0, with nothing written, when size
//           is too small, length is below 0 or the text would have more than INT_MAX units
//   See     KestBase64ToBin, docs/encodings.md
KEST_API int KestBinToBase64(const unsigned char* data, int length, unsigned short* text, int size);

// Reads base64 text up to its terminating zero, in groups of 4. Some odd text is accepted on
// purpose: further groups behind a padded one, a letter after a "=" in the fourth place, and bits
// other than 0 that the padding cuts off.
//   text    units up to a zero; null is empty
//   out     receives the bytes; not null unless text is empty
//   size    the room in bytes
//   Result  the bytes written; 0 for empty text, and at the first group that is cut short, has a
//           unit outside the alphabet (line breaks and blanks are) or does not fit; the groups
//           before it are in out by then
//   See     KestBinToBase64, docs/encodings.md
KEST_API int KestBase64ToBin(const unsigned short* text, unsigned char* out, int size);

// The TInetChecksum of length bytes; 0xffff for none.
//   length   in bytes, at most 131,072
//   Failure  none
//   See      TInetChecksum, docs/encodings.md
KEST_API unsigned short KestComputeChecksum(const unsigned char* data, int length);
}

namespace KEST {

// Called by the library frame and the platform layer.
//
//   Threads  The one that starts or stops the library, while no other is inside it.
//   Cost     constant
//   Example  None: the library frame makes these calls.
//   See      KestInitialize, KestUninitialize

// Makes the generator of the process, unseeded, and seeds the C library's rand with the time. While
// there is a generator, it is kept and nothing is done.
//   Result   true; false when there is no memory
//   Failure  false without memory, and there is no generator
KEST_API bool RandInit();

// Wipes and destroys the generator.
//   Failure  none
KEST_API void RandTerm();
}  // namespace KEST

#endif  // KEST_DIGEST_H
