// HMAC, RFC 2104, over digests with blocks of 64 bytes.

#include "kest/digest.h"

#include <string.h>

#include "crypto/padding.h"
#include "crypto/transforms.h"
#include "crypto/wipe.h"
#include "frame/layout.h"
#include "frame/own_slot.h"

namespace {

constexpr int kBlockSize = 64;

// What the RFC calls ipad and opad.
constexpr int kInnerPad = 0x36;
constexpr int kOuterPad = 0x5c;

// RFC 2104 would have longer keys digested first; here they are refused, on purpose.
bool IsKeyLength(int length) { return length >= 0 && length <= kBlockSize; }

// One of the library's own digests from inside.
struct SOwnDigest {
  KEST::TransformBlocks* blocks;
  KEST::TransformPair* pair;
  void (*storeBits)(unsigned char* bits, const unsigned int* bitCount);
  void (*storeWords)(unsigned char* bytes, const unsigned int* words, int count);
  int words;
};
constexpr SOwnDigest kMd4 = {KEST::Md4Blocks, KEST::Md4Pair, KEST::SLowFirst::StoreBits,
                             KEST::SLowFirst::StoreWords, 4};
constexpr SOwnDigest kMd5 = {KEST::Md5Blocks, KEST::Md5Pair, KEST::SLowFirst::StoreBits,
                             KEST::SLowFirst::StoreWords, 4};
constexpr SOwnDigest kSha = {KEST::ShaBlocks, KEST::ShaPair, KEST::SHighFirst::StoreBits,
                             KEST::SHighFirst::StoreWords, 5};

// Whether digest does in everything what a plain Digest does.
template <typename Digest>
bool IsPlain(const KEST::TMessageDigest& digest) {
  return KEST::IsOwn<&KEST::TMessageDigest::Transform, Digest>(digest) &&
         KEST::IsOwn<&KEST::TMessageDigest::Finish, Digest>(digest) &&
         KEST::IsOwn<&KEST::TMessageDigest::GetDigestSize, Digest>(digest);
}

// Null when a host's class has a part in it.
const SOwnDigest* OwnDigest(const KEST::TMessageDigest& digest) {
  if (IsPlain<KEST::TMd5Digest>(digest)) return &kMd5;
  if (IsPlain<KEST::TShaDigest>(digest)) return &kSha;
  return IsPlain<KEST::TMd4Digest>(digest) ? &kMd4 : nullptr;
}

// The way to the fields of any digest.
class TFields : public KEST::TMessageDigest {
 public:
  static unsigned int (&State(KEST::TMessageDigest& digest))[5] {
    return digest.*(&TFields::state);
  }
  static unsigned int (&BitCount(KEST::TMessageDigest& digest))[2] {
    return digest.*(&TFields::bitCount);
  }
  static unsigned char (&Buffer(KEST::TMessageDigest& digest))[kBlockSize] {
    return digest.*(&TFields::buffer);
  }
};

// What digest.Finish and then digest.Update with outerKey and with what Finish wrote come to. The
// last block of the one message and the first of the other, which do not depend on each other, are
// worked in side by side.
void FinishInner(const SOwnDigest& own, KEST::TMessageDigest& digest,
                 const unsigned char* outerKey) {
  auto& state = TFields::State(digest);
  auto& bitCount = TFields::BitCount(digest);
  auto& buffer = TFields::Buffer(digest);
  unsigned char bits[8];
  own.storeBits(bits, bitCount);
  KEST::PadLastBlock(own.blocks, state, buffer, bitCount[0], bits);
  unsigned int inner[5];
  memcpy(inner, state, sizeof(inner));
  digest.Reset();
  own.pair(inner, buffer, state, outerKey);
  own.storeWords(buffer, inner, own.words);
  bitCount[0] = 8 * static_cast<unsigned int>(kBlockSize + 4 * own.words);
  KEST::Wipe(inner, sizeof(inner));
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(THmac, 136, 144);

// An object that refused its key has no digest.
THmac::THmac(TMessageDigest& hash, const unsigned char* key, int keyLength)
    : digest(IsKeyLength(keyLength) ? &hash : nullptr), started(false) {
  KEST_FIELD_AT(THmac, digest, 0, 0);
  KEST_FIELD_AT(THmac, started, 4, 8);
  KEST_FIELD_AT(THmac, innerKey, 5, 9);
  KEST_FIELD_AT(THmac, outerKey, 69, 73);
  const int keyBytes = digest != nullptr ? keyLength : 0;
  for (int i = 0; i < kBlockSize; ++i) {
    const int byte = i < keyBytes ? key[i] : 0;
    innerKey[i] = static_cast<unsigned char>(byte ^ kInnerPad);
    outerKey[i] = static_cast<unsigned char>(byte ^ kOuterPad);
  }
}

THmac::~THmac() {
  Wipe(innerKey, sizeof(innerKey));
  Wipe(outerKey, sizeof(outerKey));
}

void THmac::Update(const unsigned char* data, int length) {
  if (digest == nullptr || length < 0) return;
  if (!started) digest->Update(innerKey, kBlockSize);
  started = true;
  digest->Update(data, length);
}

// Does not feed the inner key when Update was never called, on purpose: the result is then
// H(outer key, H(nothing)).
int THmac::Finish(unsigned char* mac, int length) {
  if (digest == nullptr) return 0;
  if (const SOwnDigest* const own = OwnDigest(*digest)) {
    FinishInner(*own, *digest, outerKey);
  } else {
    const int innerSize = digest->Finish(mac, length);
    digest->Update(outerKey, kBlockSize);
    digest->Update(mac, innerSize);
  }
  Reset();
  return digest->Finish(mac, length);
}

void THmac::Reset() { started = false; }

}  // namespace KEST
