// RC2 on as many blocks at once as a vector has words of 16 bits. Compiled for each level of the
// processor, see block_vectors.h.

#ifndef KEST_SRC_CRYPTO_RC2_LANES_H
#define KEST_SRC_CRYPTO_RC2_LANES_H

#include <stddef.h>
#include <string.h>

#include "crypto/block_vectors.h"
#include "crypto/wipe.h"

namespace {

constexpr int kLanes = kVectorSize / 2;
constexpr int kRounds = 16;

using Words = unsigned short __attribute__((vector_size(kVectorSize)));

// What levels may have better.
struct SPlainLogic {
  template <int kCount>
  KEST_IN_BLOCKS static Words Rotate(Words words) {
    return words << kCount | words >> (16 - kCount);
  }

  // What of b has a bit set in a, with what of c has none, is added to words or taken away. The
  // operands that are known last come last.
  KEST_IN_BLOCKS static Words Add(Words words, Words a, Words b, Words c) {
    return words + (a & b) + (c & ~a);
  }
  KEST_IN_BLOCKS static Words Subtract(Words words, Words a, Words b, Words c) {
    return words - (a & b) - (c & ~a);
  }

  // The key, in which the lower six bits of words tell the words.
  struct STable {
    const unsigned short* key;

    KEST_IN_BLOCKS void Set(const unsigned short* words) { key = words; }

    KEST_IN_BLOCKS Words LookUp(Words words) const {
      const Words at = words & 63;
      Words result = {};
      for (int n = 0; n < kLanes; ++n) result[n] = key[at[n]];
      return result;
    }
  };
};

// The first words of the blocks, the second, and so on. RFC 2268, sections 3 and 4, as in the
// version for single blocks.
template <typename Logic>
struct TLanes {
  using Table = typename Logic::STable;

  Words r0, r1, r2, r3;

  KEST_IN_BLOCKS void Mix(const unsigned short* key) {
    r0 = Logic::template Rotate<1>(Logic::Add(r0 + key[0], r3, r2, r1));
    r1 = Logic::template Rotate<2>(Logic::Add(r1 + key[1], r0, r3, r2));
    r2 = Logic::template Rotate<3>(Logic::Add(r2 + key[2], r1, r0, r3));
    r3 = Logic::template Rotate<5>(Logic::Add(r3 + key[3], r2, r1, r0));
  }

  KEST_IN_BLOCKS void Unmix(const unsigned short* key) {
    r3 = Logic::Subtract(Logic::template Rotate<11>(r3) - key[3], r2, r1, r0);
    r2 = Logic::Subtract(Logic::template Rotate<13>(r2) - key[2], r1, r0, r3);
    r1 = Logic::Subtract(Logic::template Rotate<14>(r1) - key[1], r0, r3, r2);
    r0 = Logic::Subtract(Logic::template Rotate<15>(r0) - key[0], r3, r2, r1);
  }

  KEST_IN_BLOCKS void Mash(const Table& table) {
    r0 += table.LookUp(r3);
    r1 += table.LookUp(r0);
    r2 += table.LookUp(r1);
    r3 += table.LookUp(r2);
  }

  KEST_IN_BLOCKS void Unmash(const Table& table) {
    r3 -= table.LookUp(r2);
    r2 -= table.LookUp(r1);
    r1 -= table.LookUp(r0);
    r0 -= table.LookUp(r3);
  }
};

// Makes words of blocks, and blocks of words: in each of the vectors' 64-bit elements apart, the
// four by four words are transposed. By itself it has registers enough, and spills nothing of the
// blocks to where it is not wiped.
[[gnu::noinline]] KEST_FOR_BLOCKS void Transpose(Vector* vector) {
  ExchangeBits<32>(vector[0], vector[2]);
  ExchangeBits<32>(vector[1], vector[3]);
  ExchangeBits<16>(vector[0], vector[1]);
  ExchangeBits<16>(vector[2], vector[3]);
}

// What the blocks of a run have in common.
template <typename Logic>
struct TLanesKey {
  const unsigned short* words;
  bool encrypts;
  typename Logic::STable table;
};

// Several groups of blocks, each of which is worked on while the others wait.
template <typename Logic, int kGroups>
struct TLanesBatch {
  using Lanes = TLanes<Logic>;

  const TLanesKey<Logic>& key;
  Vector vector[4 * kGroups];

  KEST_IN_BLOCKS void Crypt() {
    Lanes groups[kGroups];
    for (int n = 0; n < kGroups; ++n) {
      Transpose(vector + 4 * n);
      memcpy(&groups[n], vector + 4 * n, sizeof(groups[n]));
    }
    if (key.encrypts) {
      Encrypt(groups);
    } else {
      Decrypt(groups);
    }
    for (int n = 0; n < kGroups; ++n) {
      memcpy(vector + 4 * n, &groups[n], sizeof(groups[n]));
      Transpose(vector + 4 * n);
    }
  }

  KEST_IN_BLOCKS void Encrypt(Lanes (&groups)[kGroups]) const {
    int round = 0;
    for (int end : {5, 11, kRounds}) {
      for (; round < end; ++round) {
        for (Lanes& lanes : groups) lanes.Mix(key.words + 4 * round);
      }
      if (round == kRounds) return;
      for (Lanes& lanes : groups) lanes.Mash(key.table);
    }
  }

  KEST_IN_BLOCKS void Decrypt(Lanes (&groups)[kGroups]) const {
    int round = kRounds;
    for (int end : {11, 5, 0}) {
      while (round > end) {
        --round;
        for (Lanes& lanes : groups) lanes.Unmix(key.words + 4 * round);
      }
      if (round == 0) return;
      for (Lanes& lanes : groups) lanes.Unmash(key.table);
    }
  }
};

// One batch after the other, see RunBatches.
template <typename Logic, int kGroups>
KEST_FOR_BLOCKS size_t RunLanes(const TLanesKey<Logic>& key, unsigned char* data, size_t count,
                                unsigned char* chain, size_t fewest) {
  if (count < fewest) return 0;
  TLanesBatch<Logic, kGroups> batch = {key, {}};
  const size_t done = RunBatches(batch, data, count, chain, fewest);
  KEST::Wipe(batch.vector, sizeof(batch.vector));
  return done;
}

// See rc2_levels.h. A batch of four groups takes as long as two or three of one.
template <typename Logic>
KEST_IN_BLOCKS size_t CryptLanes(const unsigned short* words, bool encrypts, unsigned char* data,
                                 size_t count, unsigned char* chain, size_t fewest) {
  if (count < fewest) return 0;
  TLanesKey<Logic> key = {words, encrypts, {}};
  key.table.Set(words);
  size_t done = RunLanes<Logic, 4>(key, data, count, chain, 2 * kLanes + 1);
  done += RunLanes<Logic, 1>(key, data + 8 * done, count - done, chain, fewest);
  KEST::Wipe(&key, sizeof(key));
  return done;
}

}  // namespace

#endif  // KEST_SRC_CRYPTO_RC2_LANES_H
