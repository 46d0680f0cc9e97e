// HMAC, RFC 2104, over digests with blocks of 64 bytes.

#include "kest/digest.h"

#include <stddef.h>

#include "crypto/wipe.h"
#include "frame/layout.h"

namespace {

constexpr int kBlockSize = 64;

// What the RFC calls ipad and opad.
constexpr int kInnerPad = 0x36;
constexpr int kOuterPad = 0x5c;

// RFC 2104 would have longer keys digested first; here they are refused, on purpose.
bool IsKeyLength(int length) { return length >= 0 && length <= kBlockSize; }

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
  const int innerSize = digest->Finish(mac, length);
  digest->Update(outerKey, kBlockSize);
  digest->Update(mac, innerSize);
  Reset();
  return digest->Finish(mac, length);
}

void THmac::Reset() { started = false; }

}  // namespace KEST
