// DES, FIPS 46-3. Each half of the block is rotated left by one through the rounds; the expansion E
// then comes down to picking six bits at a time out of the half and out of the half rotated by
// four.

#include "kest/crypto.h"

#include <string.h>

#include <utility>

#include "cpu/dispatch.h"
#include "crypto/ber_items.h"
#include "crypto/block_runs.h"
#include "crypto/des_levels.h"
#include "crypto/des_tables.h"
#include "crypto/wipe.h"
#include "crypto/words.h"
#include "frame/layout.h"

namespace {

using KEST::kDesChoice2;
using KEST::LoadBigEndian;
using KEST::RotateLeft;
using KEST::StoreBigEndian;
using KEST::TBlockCipher;
using KEST::TCipher;
using KEST::XorEight;

constexpr int kBlockSize = 8;
constexpr int kRounds = 16;
constexpr int kIdentifierSize = 21;
constexpr unsigned char kDesCbc[] = {0x2b, 0x0e, 0x03, 0x02, 0x07};  // 1.3.14.3.2.7

constexpr KEST::SDesLookup kLookup = KEST::MakeDesLookup();
static_assert(kLookup.word[0][0] == 0x01010400);

// C or D. The lowest bit of each key byte, its parity, is in neither.
unsigned int ChooseFromKey(const unsigned char* key, const unsigned char (&choice)[28]) {
  unsigned int half = 0;
  for (int number : choice) half = half << 1 | (key[(number - 1) / 8] >> ((64 - number) % 8) & 1u);
  return half;
}

unsigned int RotateHalf(unsigned int half, int count) {
  return (half << count | half >> (28 - count)) & 0x0fffffff;
}

// The six bits of the round key that S-box box works on, box counted from 0.
unsigned int RoundKeyBits(const unsigned int (&halves)[2], int box) {
  unsigned int bits = 0;
  for (int number : kDesChoice2[box]) {
    bits = bits << 1 | (halves[box / 4] >> ((56 - number) % 28) & 1);
  }
  return bits;
}

// Exchanges the bits of y under mask with those of x that lie shift places higher.
void Exchange(unsigned int& x, unsigned int& y, int shift, unsigned int mask) {
  const unsigned int different = ((x >> shift) ^ y) & mask;
  y ^= different;
  x ^= different << shift;
}

// The halves of a block as the rounds work on them: behind the initial permutation, each rotated.
struct SHalves {
  unsigned int left, right;
};

SHalves Enter(const unsigned char* block) {
  unsigned int left = LoadBigEndian(block), right = LoadBigEndian(block + 4);
  Exchange(left, right, 4, 0x0f0f0f0f);
  Exchange(left, right, 16, 0x0000ffff);
  Exchange(right, left, 2, 0x33333333);
  Exchange(right, left, 8, 0x00ff00ff);
  right = RotateLeft(right, 1);
  Exchange(left, right, 0, 0xaaaaaaaa);
  return {RotateLeft(left, 1), right};
}

// Undoes Enter, with the halves in each other's place as they leave the last round.
void Leave(const SHalves& halves, unsigned char* block) {
  unsigned int left = halves.left, right = RotateLeft(halves.right, 31);
  Exchange(left, right, 0, 0xaaaaaaaa);
  left = RotateLeft(left, 31);
  Exchange(left, right, 8, 0x00ff00ff);
  Exchange(left, right, 2, 0x33333333);
  Exchange(right, left, 16, 0x0000ffff);
  Exchange(right, left, 4, 0x0f0f0f0f);
  StoreBigEndian(block, right);
  StoreBigEndian(block + 4, left);
}

// The schedule's first word of a round is for the boxes that look up in this, the second one for
// those that look up in the half itself.
unsigned int Odd(unsigned int half) { return RotateLeft(half, 28); }

// The cipher function f of a half that the words of the round have been mixed into. The operators
// alternate, where any would do, because compilers would make one chain of all the same ones.
[[gnu::always_inline]] inline unsigned int F(unsigned int odd, unsigned int even) {
  const auto& box = kLookup.word;
  return ((box[0][odd >> 24] | box[2][odd >> 16 & 255]) ^
          (box[4][odd >> 8 & 255] | box[6][odd & 255])) +
         ((box[1][even >> 24] | box[3][even >> 16 & 255]) ^
          (box[5][even >> 8 & 255] | box[7][even & 255]));
}

// A block by itself takes as long as each step waits for the one before. So the words of a round
// are mixed into the other half early, and all that is left behind f is an XOR. Inlined, so that
// the halves stay in registers.
[[gnu::always_inline]] inline void RunRounds(SHalves (&block)[1], const unsigned int* schedule) {
  auto& [left, right] = block[0];
  unsigned int odd = Odd(right) ^ schedule[0], even = right ^ schedule[1];
  for (int word = 2; word < 2 * kRounds; word += 2) {
    const unsigned int f = F(odd, even);
    odd = (Odd(left) ^ schedule[word]) ^ Odd(f);
    even = (left ^ schedule[word + 1]) ^ f;
    left ^= f;
    std::swap(left, right);
  }
  left ^= F(odd, even);
  std::swap(left, right);
}

// Of two blocks each is looked up while the other one waits.
void RunRounds(SHalves (&block)[2], const unsigned int* schedule) {
  for (int word = 0; word < 2 * kRounds; word += 4) {
    const unsigned int* const key = schedule + word;
    for (auto& [left, right] : block) left ^= F(Odd(right) ^ key[0], right ^ key[1]);
    for (auto& [left, right] : block) right ^= F(Odd(left) ^ key[2], left ^ key[3]);
  }
}

template <int kBlocks>
void CryptBlocks(const unsigned int* schedule, unsigned char* data) {
  SHalves block[kBlocks];
  for (int n = 0; n < kBlocks; ++n) block[n] = Enter(data + kBlockSize * n);
  RunRounds(block, schedule);
  for (int n = 0; n < kBlocks; ++n) Leave(block[n], data + kBlockSize * n);
}

template <int kBlocks>
void DecryptChained(const unsigned int* schedule, unsigned char* data, unsigned char* chain) {
  unsigned char before[kBlockSize * (kBlocks + 1)];  // and behind it the new chain
  memcpy(before, chain, kBlockSize);
  memcpy(before + kBlockSize, data, kBlockSize * kBlocks);
  CryptBlocks<kBlocks>(schedule, data);
  for (int n = 0; n < kBlocks; ++n) XorEight(data + kBlockSize * n, before + kBlockSize * n);
  memcpy(chain, before + kBlockSize * kBlocks, kBlockSize);
}

size_t SlicesPlain(const unsigned int*, unsigned char*, size_t, unsigned char*) { return 0; }

constexpr KEST::SVersions<KEST::DesSlices> kSlices = {SlicesPlain, KEST::DesSlicesSse2, nullptr,
                                                      KEST::DesSlicesAvx2, KEST::DesSlicesAvx512};
constexpr KEST::TDispatch<kSlices> CryptSlices;

// The schedule of a TDesCipher: private, but its place is settled and checked below.
const unsigned int* ScheduleOf(const TBlockCipher& cipher) {
  const auto* const object = reinterpret_cast<const unsigned char*>(&cipher);
  return reinterpret_cast<const unsigned int*>(object + sizeof(TBlockCipher));
}

void RunEcb(const TBlockCipher& cipher, TCipher::ECipherOp, unsigned char* data, size_t count) {
  const unsigned int* schedule = ScheduleOf(cipher);
  size_t done = CryptSlices(schedule, data, count, nullptr);
  for (; count - done >= 2; done += 2) CryptBlocks<2>(schedule, data + kBlockSize * done);
  if (done < count) CryptBlocks<1>(schedule, data + kBlockSize * done);
}

// The chain stays behind the initial permutation, so that no block waits for it.
void EncryptCbc(const TBlockCipher& cipher, TCipher::ECipherOp, unsigned char* data, size_t count,
                unsigned char* chain) {
  if (count == 0) return;
  const unsigned int* schedule = ScheduleOf(cipher);
  SHalves block[1] = {Enter(chain)};
  std::swap(block[0].left, block[0].right);
  for (size_t n = 0; n < count; ++n) {
    const SHalves next = Enter(data + kBlockSize * n);
    // A ciphertext has its halves in each other's place.
    block[0] = {block[0].right ^ next.left, block[0].left ^ next.right};
    RunRounds(block, schedule);
    Leave(block[0], data + kBlockSize * n);
  }
  memcpy(chain, data + kBlockSize * (count - 1), kBlockSize);
}

void DecryptCbc(const TBlockCipher& cipher, TCipher::ECipherOp, unsigned char* data, size_t count,
                unsigned char* chain) {
  const unsigned int* schedule = ScheduleOf(cipher);
  size_t done = CryptSlices(schedule, data, count, chain);
  for (; count - done >= 2; done += 2) {
    DecryptChained<2>(schedule, data + kBlockSize * done, chain);
  }
  if (done < count) DecryptChained<1>(schedule, data + kBlockSize * done, chain);
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TDesCipher, 156, 160);

TDesCipher::TDesCipher(TCipher::ECipherOp direction, const unsigned char* key, int)
    : TBlockCipher(direction) {
  KEST_FIELD_AT(TDesCipher, schedule, 28, 32);
  static_assert(offsetof(TDesCipher, schedule) == sizeof(TBlockCipher));
  unsigned int halves[2] = {ChooseFromKey(key, kDesChoiceC), ChooseFromKey(key, kDesChoiceD)};
  for (int round = 0; round < kRounds; ++round) {
    for (unsigned int& half : halves) half = RotateHalf(half, kDesShifts[round]);
    // Only kOpDecrypt itself reverses the rounds, on purpose.
    unsigned int* words = schedule + 2 * (direction == kOpDecrypt ? kRounds - 1 - round : round);
    words[0] = words[1] = 0;
    for (int box = 0; box < 8; ++box) {
      words[box % 2] = words[box % 2] << 8 | RoundKeyBits(halves, box);
    }
  }
  Wipe(halves, sizeof(halves));
}

TDesCipher::~TDesCipher() { Wipe(schedule, sizeof(schedule)); }

int TDesCipher::BerInit(const unsigned char*, int) { return 0; }

int TDesCipher::BerDump(unsigned char* buf, int size) {
  if (size < kIdentifierSize) return 0;
  const SBerItem items[] = {
      {kBerSequence, kIdentifierSize - 2, nullptr},
      {kBerObjectIdentifier, sizeof(kDesCbc), kDesCbc},
      {kBerSequence, 2 + kBlockSize, nullptr},  // where the format has the bare string, on purpose
      {kBerOctetString, kBlockSize, iv},
  };
  return WriteBerItems(buf, size, items);
}

void TDesCipher::ProcessBlock(unsigned char* block) const { CryptBlocks<1>(schedule, block); }

int TDesCipher::GetBlockSize() const { return kBlockSize; }

const SBlockRuns kDesRuns = {RunEcb, EncryptCbc, DecryptCbc};

}  // namespace KEST
