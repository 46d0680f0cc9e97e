// RC2, RFC 2268.

#include "kest/crypto.h"

#include <string.h>

#include <algorithm>

#include "cpu/dispatch.h"
#include "crypto/ber_items.h"
#include "crypto/block_runs.h"
#include "crypto/rc2_levels.h"
#include "crypto/wipe.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace {

using KEST::TBlockCipher;
using KEST::TCipher;

constexpr int kBlockSize = 8;
constexpr int kRounds = 16;
constexpr int kMaxKeyLength = 128;
constexpr int kMaxEffectiveBits = 1024;
// 1.2.840.113549.3.2
constexpr unsigned char kRc2Cbc[] = {0x2a, 0x86, 0x48, 0x86, 0xf7, 0x0d, 0x03, 0x02};

// PITABLE, section 2.
constexpr unsigned char kPi[256] = {
    0xd9, 0x78, 0xf9, 0xc4, 0x19, 0xdd, 0xb5, 0xed, 0x28, 0xe9, 0xfd, 0x79, 0x4a, 0xa0, 0xd8, 0x9d,
    0xc6, 0x7e, 0x37, 0x83, 0x2b, 0x76, 0x53, 0x8e, 0x62, 0x4c, 0x64, 0x88, 0x44, 0x8b, 0xfb, 0xa2,
    0x17, 0x9a, 0x59, 0xf5, 0x87, 0xb3, 0x4f, 0x13, 0x61, 0x45, 0x6d, 0x8d, 0x09, 0x81, 0x7d, 0x32,
    0xbd, 0x8f, 0x40, 0xeb, 0x86, 0xb7, 0x7b, 0x0b, 0xf0, 0x95, 0x21, 0x22, 0x5c, 0x6b, 0x4e, 0x82,
    0x54, 0xd6, 0x65, 0x93, 0xce, 0x60, 0xb2, 0x1c, 0x73, 0x56, 0xc0, 0x14, 0xa7, 0x8c, 0xf1, 0xdc,
    0x12, 0x75, 0xca, 0x1f, 0x3b, 0xbe, 0xe4, 0xd1, 0x42, 0x3d, 0xd4, 0x30, 0xa3, 0x3c, 0xb6, 0x26,
    0x6f, 0xbf, 0x0e, 0xda, 0x46, 0x69, 0x07, 0x57, 0x27, 0xf2, 0x1d, 0x9b, 0xbc, 0x94, 0x43, 0x03,
    0xf8, 0x11, 0xc7, 0xf6, 0x90, 0xef, 0x3e, 0xe7, 0x06, 0xc3, 0xd5, 0x2f, 0xc8, 0x66, 0x1e, 0xd7,
    0x08, 0xe8, 0xea, 0xde, 0x80, 0x52, 0xee, 0xf7, 0x84, 0xaa, 0x72, 0xac, 0x35, 0x4d, 0x6a, 0x2a,
    0x96, 0x1a, 0xd2, 0x71, 0x5a, 0x15, 0x49, 0x74, 0x4b, 0x9f, 0xd0, 0x5e, 0x04, 0x18, 0xa4, 0xec,
    0xc2, 0xe0, 0x41, 0x6e, 0x0f, 0x51, 0xcb, 0xcc, 0x24, 0x91, 0xaf, 0x50, 0xa1, 0xf4, 0x70, 0x39,
    0x99, 0x7c, 0x3a, 0x85, 0x23, 0xb8, 0xb4, 0x7a, 0xfc, 0x02, 0x36, 0x5b, 0x25, 0x55, 0x97, 0x31,
    0x2d, 0x5d, 0xfa, 0x98, 0xe3, 0x8a, 0x92, 0xae, 0x05, 0xdf, 0x29, 0x10, 0x67, 0x6c, 0xba, 0xc9,
    0xd3, 0x00, 0xe6, 0xcf, 0xe1, 0x9e, 0xa8, 0x2c, 0x63, 0x16, 0x01, 0x3f, 0x58, 0xe2, 0x89, 0xa9,
    0x0d, 0x38, 0x34, 0x1b, 0xab, 0x33, 0xff, 0xb0, 0xbb, 0x48, 0x0c, 0x5f, 0xb9, 0xb1, 0xcd, 0x2e,
    0xc5, 0xf3, 0xdb, 0x47, 0xe5, 0xa5, 0x9c, 0x77, 0x0a, 0xa6, 0x20, 0x68, 0xfe, 0x7f, 0xc1, 0xad,
};

// The version number that stands for the effective bits, or -1. The one for 56 bits is not that of
// RFC 2268 section 6, on purpose: the data exchanged has it so.
int VersionFor(int effectiveBits) {
  switch (effectiveBits) {
    case 128:
      return 58;
    case 56:
      return 120;
    case 40:
      return 160;
    default:
      return -1;
  }
}

// Section 2, for a key of length bytes in l.
void ExpandKey(unsigned char (&l)[128], int length, int effectiveBits) {
  for (int n = length; n < 128; ++n) l[n] = kPi[(l[n - 1] + l[n - length]) & 255];
  const int bytes = (effectiveBits + 7) / 8, first = 128 - bytes;
  l[first] = kPi[l[first] & (255 >> (8 * bytes - effectiveBits))];
  for (int n = first - 1; n >= 0; --n) l[n] = kPi[l[n + 1] ^ l[n + bytes]];
}

// A word of a block. What each operator gives is cut to 16 bits right there, where compilers see
// that nothing has to be widened in between.
struct SWord {
  unsigned short bits;

  SWord(unsigned short word) : bits(word) {}

  SWord operator+(SWord other) const { return static_cast<unsigned short>(bits + other.bits); }
  SWord operator-(SWord other) const { return static_cast<unsigned short>(bits - other.bits); }
  SWord operator&(SWord other) const { return static_cast<unsigned short>(bits & other.bits); }
  SWord operator^(SWord other) const { return static_cast<unsigned short>(bits ^ other.bits); }
  SWord operator~() const { return static_cast<unsigned short>(~bits); }

  template <int kCount>
  SWord Rotate() const {
    return static_cast<unsigned short>(bits << kCount | bits >> (16 - kCount));
  }
};

// The four words of a block.
struct SWords {
  SWord r0, r1, r2, r3;

  explicit SWords(const unsigned char* block)
      : SWords(KEST::LoadLittleEndian(block), KEST::LoadLittleEndian(block + 4)) {}

  SWords(unsigned int low, unsigned int high)
      : r0(static_cast<unsigned short>(low)),
        r1(static_cast<unsigned short>(low >> 16)),
        r2(static_cast<unsigned short>(high)),
        r3(static_cast<unsigned short>(high >> 16)) {}

  void Store(unsigned char* block) const {
    KEST::StoreLittleEndian(block, r0.bits | static_cast<unsigned int>(r1.bits) << 16);
    KEST::StoreLittleEndian(block + 4, r2.bits | static_cast<unsigned int>(r3.bits) << 16);
  }

  void Xor(const SWords& other) {
    r0 = r0 ^ other.r0;
    r1 = r1 ^ other.r1;
    r2 = r2 ^ other.r2;
    r3 = r3 ^ other.r3;
  }

  // What a mixing round adds to a word with the key: the bits of b where a has ones, and those of c
  // elsewhere, a to c being the three words before it, nearest first. The least waits for a.
  static SWord Term(SWord a, SWord b, SWord c) { return ((b ^ c) & a) ^ c; }

  void Mix(const unsigned short* key) {
    r0 = (r0 + key[0] + Term(r3, r2, r1)).Rotate<1>();
    r1 = (r1 + key[1] + Term(r0, r3, r2)).Rotate<2>();
    r2 = (r2 + key[2] + Term(r1, r0, r3)).Rotate<3>();
    r3 = (r3 + key[3] + Term(r2, r1, r0)).Rotate<5>();
  }

  // The same term in two, because here c is what comes last.
  static SWord Less(SWord word, SWord a, SWord b, SWord c) { return word - (a & b) - (~a & c); }

  void Unmix(const unsigned short* key) {
    r3 = Less(r3.Rotate<11>() - key[3], r2, r1, r0);
    r2 = Less(r2.Rotate<13>() - key[2], r1, r0, r3);
    r1 = Less(r1.Rotate<14>() - key[1], r0, r3, r2);
    r0 = Less(r0.Rotate<15>() - key[0], r3, r2, r1);
  }

  void Mash(const unsigned short* key) {
    r0 = r0 + key[r3.bits & 63];
    r1 = r1 + key[r0.bits & 63];
    r2 = r2 + key[r1.bits & 63];
    r3 = r3 + key[r2.bits & 63];
  }

  void Unmash(const unsigned short* key) {
    r3 = r3 - key[r2.bits & 63];
    r2 = r2 - key[r1.bits & 63];
    r1 = r1 - key[r0.bits & 63];
    r0 = r0 - key[r3.bits & 63];
  }
};

// Sections 3 and 4: mashing comes after the fifth and the eleventh mixing round. Inlined, so that
// the words stay in registers from block to block.
[[gnu::always_inline]] inline SWords Encrypted(SWords words, const unsigned short* key) {
  int round = 0;
  for (; round < 5; ++round) words.Mix(key + 4 * round);
  words.Mash(key);
  for (; round < 11; ++round) words.Mix(key + 4 * round);
  words.Mash(key);
  for (; round < kRounds; ++round) words.Mix(key + 4 * round);
  return words;
}

[[gnu::always_inline]] inline SWords Decrypted(SWords words, const unsigned short* key) {
  int round = kRounds - 1;
  for (; round >= 11; --round) words.Unmix(key + 4 * round);
  words.Unmash(key);
  for (; round >= 5; --round) words.Unmix(key + 4 * round);
  words.Unmash(key);
  for (; round >= 0; --round) words.Unmix(key + 4 * round);
  return words;
}

void CryptBlock(const unsigned short* key, bool encrypts, unsigned char* block) {
  const SWords words(block);
  (encrypts ? Encrypted(words, key) : Decrypted(words, key)).Store(block);
}

// CBC encryption, in which each block waits for the one before.
template <SWords (*kCrypted)(SWords words, const unsigned short* key)>
void CryptChained(const unsigned short* key, unsigned char* data, size_t count,
                  unsigned char* chain) {
  SWords words(chain);
  for (unsigned char* block = data; block != data + kBlockSize * count; block += kBlockSize) {
    words.Xor(SWords(block));
    words = kCrypted(words, key);
    words.Store(block);
  }
  words.Store(chain);
}

size_t LanesPlain(const unsigned short*, bool, unsigned char*, size_t, unsigned char*) { return 0; }

constexpr KEST::SVersions<KEST::Rc2Lanes> kLanes = {LanesPlain, KEST::Rc2LanesSse2, nullptr,
                                                    KEST::Rc2LanesAvx2, KEST::Rc2LanesAvx512};
constexpr KEST::TDispatch<kLanes> CryptLanes;

// The expanded key of a TRc2Cipher: private, but its place is settled and checked below.
const unsigned short* KeyOf(const TBlockCipher& cipher) {
  const auto* const object = reinterpret_cast<const unsigned char*>(&cipher);
  return reinterpret_cast<const unsigned short*>(object + sizeof(TBlockCipher));
}

void RunEcb(const TBlockCipher& cipher, TCipher::ECipherOp op, unsigned char* data, size_t count) {
  const unsigned short* const key = KeyOf(cipher);
  const bool encrypts = op == TCipher::kOpEncrypt;
  size_t done = CryptLanes(key, encrypts, data, count, nullptr);
  for (; done < count; ++done) CryptBlock(key, encrypts, data + kBlockSize * done);
}

void EncryptCbc(const TBlockCipher& cipher, TCipher::ECipherOp op, unsigned char* data,
                size_t count, unsigned char* chain) {
  const auto crypt = op == TCipher::kOpEncrypt ? CryptChained<Encrypted> : CryptChained<Decrypted>;
  crypt(KeyOf(cipher), data, count, chain);
}

void DecryptCbc(const TBlockCipher& cipher, TCipher::ECipherOp op, unsigned char* data,
                size_t count, unsigned char* chain) {
  const unsigned short* const key = KeyOf(cipher);
  const bool encrypts = op == TCipher::kOpEncrypt;
  for (size_t n = CryptLanes(key, encrypts, data, count, chain); n < count; ++n) {
    unsigned char* const block = data + kBlockSize * n;
    unsigned char next[kBlockSize];
    memcpy(next, block, kBlockSize);
    CryptBlock(key, encrypts, block);
    KEST::XorEight(block, chain);
    memcpy(chain, next, kBlockSize);
  }
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TRc2Cipher, 160, 168);

TRc2Cipher::TRc2Cipher(TCipher::ECipherOp direction, const unsigned char* key, int keyLength,
                       int bits)
    : TBlockCipher(direction), effectiveBits(bits) {
  KEST_FIELD_AT(TRc2Cipher, expandedKey, 28, 32);
  static_assert(offsetof(TRc2Cipher, expandedKey) == sizeof(TBlockCipher));
  KEST_FIELD_AT(TRc2Cipher, effectiveBits, 156, 160);
  const int length = std::clamp(keyLength, 1, kMaxKeyLength);
  const bool usable = bits >= 1 && bits <= kMaxEffectiveBits;
  unsigned char l[128];
  memcpy(l, key, static_cast<size_t>(length));
  ExpandKey(l, length, usable ? bits : kMaxEffectiveBits);
  for (int n = 0; n < 64; ++n)
    expandedKey[n] = static_cast<unsigned short>(l[2 * n] | l[2 * n + 1] << 8);
  Wipe(l, sizeof(l));
}

TRc2Cipher::~TRc2Cipher() { Wipe(expandedKey, sizeof(expandedKey)); }

int TRc2Cipher::BerInit(const unsigned char*, int) { return 0; }

int TRc2Cipher::BerDump(unsigned char* buf, int size) {
  const int version = VersionFor(effectiveBits);
  const unsigned char content[2] = {0, static_cast<unsigned char>(version)};
  const int length = version < 128 ? 1 : 2;  // an INTEGER with the top bit set would be negative
  const int total = 26 + length;
  if (version < 0 || size < total) return 0;
  const SBerItem items[] = {
      {kBerSequence, total - 2, nullptr},  {kBerObjectIdentifier, sizeof(kRc2Cbc), kRc2Cbc},
      {kBerSequence, total - 14, nullptr}, {kBerInteger, length, content + 2 - length},
      {kBerOctetString, kBlockSize, iv},
  };
  return WriteBerItems(buf, size, items);
}

void TRc2Cipher::ProcessBlock(unsigned char* block) const {
  CryptBlock(expandedKey, op == kOpEncrypt, block);
}

int TRc2Cipher::GetBlockSize() const { return kBlockSize; }

const SBlockRuns kRc2Runs = {RunEcb, EncryptCbc, DecryptCbc};

}  // namespace KEST
