// RC2, RFC 2268.

#include "kest/crypto.h"

#include <string.h>

#include <algorithm>

#include "crypto/ber_items.h"
#include "crypto/wipe.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace {

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

unsigned int Rotate16(unsigned int word, int count) {
  return (word << count | (word & 0xffff) >> (16 - count)) & 0xffff;
}

// The four words of a block.
struct SWords {
  unsigned int r0, r1, r2, r3;

  explicit SWords(const unsigned char* block) {
    const unsigned int low = KEST::LoadLittleEndian(block),
                       high = KEST::LoadLittleEndian(block + 4);
    r0 = low & 0xffff;
    r1 = low >> 16;
    r2 = high & 0xffff;
    r3 = high >> 16;
  }

  void Store(unsigned char* block) const {
    KEST::StoreLittleEndian(block, r0 | r1 << 16);
    KEST::StoreLittleEndian(block + 4, r2 | r3 << 16);
  }

  // What is added to a word in a mixing round, from the three words before it, nearest first.
  static unsigned int Term(unsigned int key, unsigned int a, unsigned int b, unsigned int c) {
    return key + (a & b) + (~a & c);
  }

  void Mix(const unsigned short* key) {
    r0 = Rotate16(r0 + Term(key[0], r3, r2, r1), 1);
    r1 = Rotate16(r1 + Term(key[1], r0, r3, r2), 2);
    r2 = Rotate16(r2 + Term(key[2], r1, r0, r3), 3);
    r3 = Rotate16(r3 + Term(key[3], r2, r1, r0), 5);
  }

  void Unmix(const unsigned short* key) {
    r3 = (Rotate16(r3, 11) - Term(key[3], r2, r1, r0)) & 0xffff;
    r2 = (Rotate16(r2, 13) - Term(key[2], r1, r0, r3)) & 0xffff;
    r1 = (Rotate16(r1, 14) - Term(key[1], r0, r3, r2)) & 0xffff;
    r0 = (Rotate16(r0, 15) - Term(key[0], r3, r2, r1)) & 0xffff;
  }

  void Mash(const unsigned short (&key)[64]) {
    r0 = (r0 + key[r3 & 63]) & 0xffff;
    r1 = (r1 + key[r0 & 63]) & 0xffff;
    r2 = (r2 + key[r1 & 63]) & 0xffff;
    r3 = (r3 + key[r2 & 63]) & 0xffff;
  }

  void Unmash(const unsigned short (&key)[64]) {
    r3 = (r3 - key[r2 & 63]) & 0xffff;
    r2 = (r2 - key[r1 & 63]) & 0xffff;
    r1 = (r1 - key[r0 & 63]) & 0xffff;
    r0 = (r0 - key[r3 & 63]) & 0xffff;
  }
};

// Sections 3 and 4: mashing comes after the fifth and the eleventh mixing round.
bool IsMashedAfter(int round) { return round == 4 || round == 10; }

void Encrypt(SWords& words, const unsigned short (&key)[64]) {
  for (int round = 0; round < kRounds; ++round) {
    words.Mix(key + 4 * round);
    if (IsMashedAfter(round)) words.Mash(key);
  }
}

void Decrypt(SWords& words, const unsigned short (&key)[64]) {
  for (int round = kRounds - 1; round >= 0; --round) {
    if (IsMashedAfter(round)) words.Unmash(key);
    words.Unmix(key + 4 * round);
  }
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TRc2Cipher, 160, 168);

TRc2Cipher::TRc2Cipher(TCipher::ECipherOp direction, const unsigned char* key, int keyLength,
                       int bits)
    : TBlockCipher(direction), effectiveBits(bits) {
  KEST_FIELD_AT(TRc2Cipher, expandedKey, 28, 32);
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
  SWords words(block);
  if (op == kOpEncrypt) {
    Encrypt(words, expandedKey);
  } else {
    Decrypt(words, expandedKey);
  }
  words.Store(block);
}

int TRc2Cipher::GetBlockSize() const { return kBlockSize; }

}  // namespace KEST
