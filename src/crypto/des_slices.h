// DES on as many blocks at once as a vector has bits. A plane is a vector with the same bit of each
// block; the permutations then cost nothing, and the S-boxes are circuits. Compiled for each level
// of the processor, see block_vectors.h.

#ifndef KEST_SRC_CRYPTO_DES_SLICES_H
#define KEST_SRC_CRYPTO_DES_SLICES_H

#include <stddef.h>
#include <string.h>

#include <utility>

#include "crypto/block_vectors.h"
#include "crypto/des_circuits.h"
#include "crypto/des_tables.h"
#include "crypto/wipe.h"

namespace {

constexpr int kSlices = 8 * kVectorSize;
constexpr int kRounds = 16;

using WordVector = int __attribute__((vector_size(kVectorSize)));

// The bits of a round's two words of the schedule, spread out to whole words.
struct SSpreadKey {
  alignas(kVectorSize) int word[2][32];
};

// The blocks as they come, or their planes: plane n holds the bits n of the blocks, which are
// counted from the lowest bit of the first byte.
struct SSlices {
  Vector vector[64];
};

KEST_IN_BLOCKS void SpreadKey(SSpreadKey& spread, const unsigned int* words) {
  constexpr int kWords = kVectorSize / 4;
  for (int first = 0; first < 32; first += kWords) {
    WordVector bits = {};
    for (int n = 0; n < kWords; ++n) bits[n] = static_cast<int>(1u << (first + n));
    for (int n = 0; n < 2; ++n) {
      const WordVector masks = ((WordVector{} + static_cast<int>(words[n])) & bits) == bits;
      memcpy(&spread.word[n][first], &masks, sizeof(masks));
    }
  }
}

// Two steps of the transposition, on rows that lie kStride apart: four at a time, which leaves
// registers for the work, so that nothing of the blocks is spilled to where it is not wiped.
template <int kStride>
KEST_FOR_BLOCKS inline void TransposeFours(Vector* row) {
  for (int first = 0; first < 64; first += 4 * kStride) {
    for (Vector* r = row + first; r < row + first + kStride; ++r) {
      ExchangeBits<2 * kStride>(r[0], r[2 * kStride]);
      ExchangeBits<2 * kStride>(r[kStride], r[3 * kStride]);
      ExchangeBits<kStride>(r[0], r[kStride]);
      ExchangeBits<kStride>(r[2 * kStride], r[3 * kStride]);
    }
  }
}

// Makes planes of blocks, and blocks of planes: in each of the vectors' 64-bit elements apart, the
// 64 by 64 bits are transposed.
KEST_FOR_BLOCKS inline void Transpose(SSlices& slices) {
  TransposeFours<16>(slices.vector);
  TransposeFours<4>(slices.vector);
  TransposeFours<1>(slices.vector);
}

// The plane with bit n of the left half behind the initial permutation, both counted from 0. Bit n
// of the right half is in the plane after it.
constexpr int PlaneOf(int n) { return 8 * (7 - n % 8) + 6 - 2 * (n / 8); }

// Which bit of f output n of the box is, counted from 0.
constexpr int BitOfOutput(int box, int n) {
  int bit = 0;
  while (KEST::kDesP[bit] != 4 * box + n + 1) ++bit;
  return bit;
}

// Gates of two wires.
struct SBinaryLogic {
  template <int kBox>
  static constexpr const auto& Circuit() {
    return KEST::kBinaryCircuit<kBox>;
  }

  template <int kBox, int kGate>
  KEST_IN_BLOCKS static void RunGate(Vector* wire) {
    constexpr KEST::SBinaryGate gate = Circuit<kBox>().gates[kGate];
    const Vector a = wire[gate.a], b = wire[gate.b];
    Vector& to = wire[KEST::SBinaryGate::kFirst + kGate];
    if constexpr (gate.function == KEST::kAnd) to = a & b;
    if constexpr (gate.function == KEST::kOr) to = a | b;
    if constexpr (gate.function == KEST::kXor) to = a ^ b;
    if constexpr (gate.function == KEST::kAndNot) to = a & ~b;
  }
};

template <typename Logic, int kBox, int... kGate>
KEST_IN_BLOCKS void RunGates(Vector* wire, std::integer_sequence<int, kGate...>) {
  (Logic::template RunGate<kBox, kGate>(wire), ...);
}

// The wires of a box's inputs: bits of the half at from, with those of the round key.
template <int kBox, int... kInput>
KEST_IN_BLOCKS void LoadInputs(Vector* wire, const Vector* from, const int (&key)[2][32],
                               std::integer_sequence<int, kInput...>) {
  ((wire[kInput] =
        from[PlaneOf((4 * kBox + kInput + 31) % 32)] ^
        reinterpret_cast<Vector>(WordVector{} + key[kBox % 2][8 * (3 - kBox / 2) + 5 - kInput])),
   ...);
}

// XORs the outputs of a box into their bits of the half at to.
template <typename Logic, int kBox, int... kOutput>
KEST_IN_BLOCKS void AddOutputs(Vector* to, const Vector* wire,
                               std::integer_sequence<int, kOutput...>) {
  constexpr const auto& kCircuit = Logic::template Circuit<kBox>();
  ((to[PlaneOf(BitOfOutput(kBox, kOutput))] ^= wire[kCircuit.outputs[kOutput]]), ...);
}

// XORs what one box makes of the half at from into the half at to.
template <typename Logic, int kBox>
KEST_IN_BLOCKS void RunBox(Vector* to, const Vector* from, const int (&key)[2][32]) {
  constexpr const auto& kCircuit = Logic::template Circuit<kBox>();
  Vector wire[kCircuit.kFirst + kCircuit.kGates];
  LoadInputs<kBox>(wire, from, key, std::make_integer_sequence<int, 6>());
  wire[6] = ~Vector{};
  RunGates<Logic, kBox>(wire, std::make_integer_sequence<int, kCircuit.kGates>());
  AddOutputs<Logic, kBox>(to, wire, std::make_integer_sequence<int, 4>());
}

template <typename Logic, int... kBox>
KEST_IN_BLOCKS void RunBoxes(Vector* to, const Vector* from, const int (&key)[2][32],
                             std::integer_sequence<int, kBox...>) {
  (RunBox<Logic, kBox>(to, from, key), ...);
}

// A round, of which to is the half that changes. Not inlined, because code for either half by
// itself is more than processors keep at hand.
template <typename Logic>
[[gnu::noinline]] KEST_FOR_BLOCKS void RunRound(Vector* to, const Vector* from,
                                                const SSpreadKey& key) {
  RunBoxes<Logic>(to, from, key.word, std::make_integer_sequence<int, 8>());
}

template <typename Logic>
struct TSlicesBatch : SSlices {
  const unsigned int* schedule;
  SSpreadKey key;

  KEST_FOR_BLOCKS inline void Crypt() {
    Transpose(*this);
    for (int round = 0; round < kRounds; round += 2) {
      SpreadKey(key, schedule + 2 * round);
      RunRound<Logic>(vector, vector + 1, key);
      SpreadKey(key, schedule + 2 * round + 2);
      RunRound<Logic>(vector + 1, vector, key);
    }
    // The halves leave the last round in each other's place.
    for (int n = 0; n < 64; n += 2) std::swap(vector[n], vector[n + 1]);
    Transpose(*this);
  }
};

// See des_levels.h.
template <typename Logic>
KEST_IN_BLOCKS size_t CryptSlices(const unsigned int* schedule, unsigned char* data, size_t count,
                                  unsigned char* chain, size_t fewest) {
  if (count < fewest) return 0;
  TSlicesBatch<Logic> batch = {};
  batch.schedule = schedule;
  const size_t done = RunBatches(batch, data, count, chain, fewest);
  KEST::Wipe(&batch, sizeof(batch));
  return done;
}

}  // namespace

#endif  // KEST_SRC_CRYPTO_DES_SLICES_H
