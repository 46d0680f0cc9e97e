// Message digests (MD4, MD5, SHA-1) and the random generator built on them.
//
// True of all of them:
//   Lengths    Bytes. A length below 0 does nothing; with a length of 0 the pointer may be null.
//   Ownership  Nothing here keeps a caller's data or allocates, save RandInit. The generator keeps
//              the address of its digest and of its buffers, which have to outlive it.
//   Threads    No locking. Use an object from one thread at a time, or under a lock of yours; that
//              goes for the generator of the process too.
//   Failure    Nothing fails, save RandInit for want of memory.
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
class KEST_API TMessageDigest {
 public:
  TMessageDigest();

  // Discards what was fed and starts a new message. The bytes of a partial block stay in memory.
  void Reset();

  // Feeds the next length bytes of the message. Whole blocks are read where they lie, at any
  // address. The message may have up to 2^61 - 1 bytes; its bit count wraps after that.
  void Update(const unsigned char* data, int length);

  // Ends the message: writes its digest, all GetDigestSize() bytes, and starts the next message.
  // length is not looked at, on purpose; callers pass 0. Returns GetDigestSize().
  virtual int Finish(unsigned char* digest, int length) = 0;

  // Bytes in the digest.
  virtual int GetDigestSize() const = 0;

  // The compression function: works one block of 64 bytes into the five words of state. Update
  // calls it for every block; a host's own digest overrides it.
  virtual void Transform(unsigned int* state, const unsigned char* block) = 0;

 protected:
  unsigned int state[5];     // A to E; MD4 and MD5 use the first four
  unsigned int bitCount[2];  // bits fed so far, low word first
  unsigned char buffer[64];  // the first (bitCount / 8) % 64 bytes are a block not complete yet
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

class KEST_API THmac {
 public:
  THmac(TMessageDigest& digest, const unsigned char* key, int keyLength);
  ~THmac();
  void Update(const unsigned char* data, int length);
  int Finish(unsigned char* mac, int length);
  void Reset();

 private:
  TMessageDigest* digest;
  bool started;
  unsigned char innerKey[64];
  unsigned char outerKey[64];
};

// A pseudo-random byte generator over any digest. Each block of output is the digest of a counter,
// which then moves on: by a step of its own until Seed has been called twice, by an odd increment
// from then on.
//
// Unseeded, every generator yields the same constant sequence. The same seeds in the same order,
// with the same requests between them, yield the same bytes; how a request is cut into calls does
// not matter.
class KEST_API TDigestPrng {
 public:
  // size, that of the digest in bytes, also is that of each of the three blocks in buffers:
  // counter, increment, output. Only the counter is zeroed. A generator whose size is not its
  // digest's, or is below 1, is refused: Seed and Generate then do nothing. The digest is used
  // from the first Seed or Generate on, and must not be in the middle of somebody else's message.
  TDigestPrng(TMessageDigest& digest, unsigned char* buffers, int size);
  TDigestPrng(const TDigestPrng&) = delete;
  TDigestPrng& operator=(const TDigestPrng&) = delete;

  // Adds seed material. It takes effect with the next Generate, which digests all material since
  // the last one into the new counter; from the second Seed on, such a batch starts with the old
  // counter. A length of 0 counts as a call.
  void Seed(const unsigned char* data, int length);

  // Writes the next length bytes. New seed material discards what was left of the last block, and
  // that happens with a length of 0 too.
  void Generate(unsigned char* out, int length);

 protected:
  TMessageDigest* digest;
  int size;
  int seedPending;           // not 0: the digest holds seed material
  int seedCountdown;         // 2, 1, then 0 from the second Seed on
  unsigned char* counter;    // size bytes, as are the next two
  unsigned char* increment;  // set by the first Seed
  unsigned char* output;
  int available;  // bytes at the end of output not handed out yet
};

// The generator over MD5, complete with its digest and buffers.
class KEST_API TMd5Prng : public TDigestPrng {
 public:
  TMd5Prng();

 private:
  TMd5Digest md5;
  unsigned char buffers[48];
};

struct KEST_API SBerItem {
  unsigned char tag;
  int length;
  const unsigned char* value;
};
class KEST_API TInetChecksum {
 public:
  TInetChecksum();
  void Update(const unsigned char* data, int length);
  unsigned short GetCurrent() const;
  void SetCurrent(unsigned short checksum, int length);
  unsigned short Finish();
  void Reset();

 private:
  unsigned int sum;
  bool odd;
};

}  // namespace KEST

using KEST::SBerItem;

extern "C" {

// Seed and Generate of the one TMd5Prng of the process, which lives from KestInitialize to the last
// KestUninitialize. Without it they do nothing: out keeps what it holds.
//
// The library never seeds the generator itself. Until the application does, from a source that
// nobody can guess, the bytes are the same in every run of every program.
KEST_API void KestSeedRandom(const unsigned char* data, int length);
KEST_API void KestGenerateRandom(unsigned char* out, int length);

KEST_API int KestBerDecode(const unsigned char* data, int length, KEST::SBerItem* item);
KEST_API int KestBerEncode(unsigned char* out, int size, const KEST::SBerItem* item);
KEST_API int KestBinToBase64(const unsigned char* data, int length, unsigned short* text, int size);
KEST_API int KestBase64ToBin(const unsigned short* text, unsigned char* out, int size);
KEST_API unsigned short KestComputeChecksum(const unsigned char* data, int length);
}

// Called by the library frame and the platform layer.
namespace KEST {

// Makes the generator of the process, unseeded, and seeds the C library's rand with the time. False
// when there is no memory. While there is a generator, it is kept and nothing is done.
KEST_API bool RandInit();

// Destroys the generator.
KEST_API void RandTerm();
}  // namespace KEST

#endif  // KEST_DIGEST_H
