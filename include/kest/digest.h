#ifndef KEST_DIGEST_H
#define KEST_DIGEST_H

#include "kest/export.h"
namespace KEST {
class KEST_API TMessageDigest {
 public:
  TMessageDigest();
  void Reset();
  void Update(const unsigned char* data, int length);
  virtual int Finish(unsigned char* digest, int length) = 0;
  virtual int GetDigestSize() const = 0;
  virtual void Transform(unsigned int* state, const unsigned char* block) = 0;

 protected:
  unsigned int state[5];
  unsigned int bitCount[2];
  unsigned char buffer[64];
};
class KEST_API TMdXDigest : public TMessageDigest {
 public:
  int Finish(unsigned char* digest, int length) override;
  int GetDigestSize() const override;
};
class KEST_API TMd4Digest : public TMdXDigest {
 public:
  void Transform(unsigned int* state, const unsigned char* block) override;
};
class KEST_API TMd5Digest : public TMdXDigest {
 public:
  void Transform(unsigned int* state, const unsigned char* block) override;
};
class KEST_API TShaDigest : public TMessageDigest {
 public:
  int Finish(unsigned char* digest, int length) override;
  int GetDigestSize() const override;
  void Transform(unsigned int* state, const unsigned char* block) override;
};
class KEST_API TDigestPrng {
 public:
  TDigestPrng(TMessageDigest& digest, unsigned char* buffers, int size);
  TDigestPrng(const TDigestPrng&) = delete;
  TDigestPrng& operator=(const TDigestPrng&) = delete;
  void Seed(const unsigned char* data, int length);
  void Generate(unsigned char* out, int length);

 protected:
  TMessageDigest* digest;
  int size;
  int seedPending;
  int seedCountdown;
  unsigned char* counter;
  unsigned char* increment;
  unsigned char* output;
  int available;
};
class KEST_API TMd5Prng : public TDigestPrng {
 public:
  TMd5Prng();

 private:
  TMd5Digest md5;
  unsigned char buffers[48];
};
}  // namespace KEST
extern "C" {
KEST_API void KestSeedRandom(const unsigned char* data, int length);
KEST_API void KestGenerateRandom(unsigned char* out, int length);
}
// Called by the library frame and the platform layer.
namespace KEST {
KEST_API bool RandInit();
KEST_API void RandTerm();
}  // namespace KEST

#endif  // KEST_DIGEST_H
