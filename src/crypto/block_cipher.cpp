// The chaining modes ECB and CBC of FIPS 81, with the padding of PKCS #7 (RFC 5652 section 6.3).

#include "kest/crypto.h"

#include <limits.h>
#include <string.h>

#include <algorithm>

#include "crypto/block_runs.h"
#include "crypto/wipe.h"
#include "frame/layout.h"
#include "frame/own_slot.h"

namespace {

using KEST::TBlockCipher;

constexpr int kMaxBlockSize = 8;

bool IsUsable(int blockSize) { return blockSize >= 1 && blockSize <= kMaxBlockSize; }

// Null for a cipher of a class that has a ProcessBlock or a block size of its own.
const KEST::SBlockRuns* RunsOf(const TBlockCipher& cipher, int blockSize) {
  using namespace KEST;
  constexpr auto kProcessBlock = &TBlockCipher::ProcessBlock;
  constexpr unsigned char kKey[8] = {};
  if (blockSize != 8) return nullptr;
  if (IsOwn<kProcessBlock, TDesCipher>(cipher, TCipher::kOpEncrypt, kKey, 8)) {
    return &kDesRuns;
  }
  if (IsOwn<kProcessBlock, TRc2Cipher>(cipher, TCipher::kOpEncrypt, kKey, 8, 64)) {
    return &kRc2Runs;
  }
  return nullptr;
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TBlockCipher, 28, 32);

TBlockCipher::~TBlockCipher() {
  Wipe(iv, sizeof(iv));
  Wipe(chain, sizeof(chain));
}

int TBlockCipher::GetType() { return 1; }

// Every direction but kOpEncrypt decrypts, on purpose.
int TBlockCipher::ProcessData(unsigned char* data, int len, bool final) {
  return op != kOpEncrypt ? DecryptData(data, len, final) : EncryptData(data, len, final);
}

void TBlockCipher::SetMode(ECipherMode newMode) { mode = newMode; }

void TBlockCipher::SetIv(const unsigned char* vector) {
  const int size = GetBlockSize();
  if (!IsUsable(size)) return;
  const size_t count = static_cast<size_t>(size);
  if (vector != nullptr) {
    memmove(iv, vector, count);
  } else {
    memset(iv, 0, count);
  }
  memcpy(chain, iv, count);
}

int TBlockCipher::EncryptData(unsigned char* data, int len, bool final) {
  const int size = GetBlockSize();
  if (!IsUsable(size) || len < 0) return 0;
  const int rest = len % size;
  if (rest != 0 && !final) return 0;
  const int whole = len - rest;
  if (final && whole > INT_MAX - size) return 0;
  const int total = whole + (final ? size : 0);
  // An unknown mode writes nothing, not even padding, on purpose.
  if (mode != kModeCbc && mode != kModeEcb) return total;

  if (final) memset(data + len, size - rest, static_cast<size_t>(size - rest));
  if (const SBlockRuns* runs = RunsOf(*this, size)) {
    const size_t count = static_cast<size_t>(total / size);
    if (mode == kModeCbc) {
      runs->encryptCbc(*this, op, data, count, chain);
    } else {
      runs->ecb(*this, op, data, count);
    }
  } else {
    for (int at = 0; at < total; at += size) {
      if (mode == kModeCbc) XorBlock(data + at, chain, size);
      ProcessBlock(data + at);
      if (mode == kModeCbc) memcpy(chain, data + at, static_cast<size_t>(size));
    }
  }
  if (final && mode == kModeCbc) memcpy(chain, iv, static_cast<size_t>(size));
  return total;
}

int TBlockCipher::DecryptData(unsigned char* data, int len, bool final) {
  const int size = GetBlockSize();
  if (!IsUsable(size) || len < 0 || len % size != 0) return 0;
  if (mode != kModeCbc && mode != kModeEcb) return len;

  if (const SBlockRuns* runs = RunsOf(*this, size)) {
    const size_t count = static_cast<size_t>(len / size);
    if (mode == kModeCbc) {
      runs->decryptCbc(*this, op, data, count, chain);
    } else {
      runs->ecb(*this, op, data, count);
    }
  } else {
    for (int at = 0; at < len; at += size) {
      unsigned char ciphertext[kMaxBlockSize];
      memcpy(ciphertext, data + at, static_cast<size_t>(size));
      ProcessBlock(data + at);
      if (mode != kModeCbc) continue;
      XorBlock(data + at, chain, size);
      memcpy(chain, ciphertext, static_cast<size_t>(size));
    }
  }
  if (final && mode == kModeCbc) memcpy(chain, iv, static_cast<size_t>(size));
  if (!final || len == 0) return len;
  // The last byte alone counts, and whatever it says is taken, on purpose.
  return len - std::min<int>(size, data[len - 1]);
}

void TBlockCipher::XorBlock(unsigned char* dst, const unsigned char* src, int n) {
  for (int at = 0; at < n; ++at) dst[at] ^= src[at];
}

TBlockCipher::TBlockCipher() : TBlockCipher(kOpEncrypt) {}

TBlockCipher::TBlockCipher(ECipherOp direction)
    : TCipher(direction), mode(kModeCbc), iv(), chain() {
  KEST_FIELD_AT(TBlockCipher, mode, 8, 12);
  KEST_FIELD_AT(TBlockCipher, iv, 12, 16);
  KEST_FIELD_AT(TBlockCipher, chain, 20, 24);
}

}  // namespace KEST
