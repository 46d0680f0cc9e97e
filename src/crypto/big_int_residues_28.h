// Limbs of 28 bits, whose products have 56 and so can be added to a lane many times before carries
// have to be looked at. Included by the file of each level, which says what a vector is.

#ifndef KEST_SRC_CRYPTO_BIG_INT_RESIDUES_28_H
#define KEST_SRC_CRYPTO_BIG_INT_RESIDUES_28_H

#include "crypto/big_int_residues.h"

namespace KEST::KEST_KERNELS {

constexpr int kLimbBits = 28;
constexpr Word kLimbMask = (1u << kLimbBits) - 1;
constexpr int kLimbs = sizeof(Vector) / sizeof(DoubleWord);  // in a column
// Each step adds four products of 56 bits to a lane of 64.
constexpr int kStepsBetweenCarries = 32;

// Each limb is held twice, for a lane takes part in a product with its lower half alone: as it is,
// and above the limb one lane up, which is where it is multiplied by the second limb of a step.
struct SPlace {
  Word limb, below;
};

struct SColumn {
  DoubleWord sum[kLimbs];  // first, for there is one after the last column
  SPlace number[kLimbs];
  SPlace factor[kLimbs];
};

inline SColumn* Columns(const SResidue& r) { return static_cast<SColumn*>(r.columns); }

// The limb at index of a packed number.
inline Word LimbAt(const Word* packed, int words, int index) {
  const int bit = index * kLimbBits, word = bit / kWordBits;
  if (word >= words) return 0;
  const DoubleWord above = word + 1 < words ? packed[word + 1] : 0;
  return static_cast<Word>((above << kWordBits | packed[word]) >> (bit % kWordBits)) & kLimbMask;
}

inline void SetFactor(const SResidue& r, const Word* f, int count) {
  Word below = 0;
  for (int i = 0; i < r.columnCount * kLimbs; ++i) {
    const Word limb = LimbAt(f, count, i);
    Columns(r)[i / kLimbs].factor[i % kLimbs] = {limb, below};
    below = limb;
  }
}

inline void Unpack(const SResidue& r, const Word* packed) {
  Word below = 0;
  for (int i = 0; i < r.columnCount * kLimbs; ++i) {
    const Word limb = LimbAt(packed, r.words, i);
    Columns(r)[i / kLimbs].number[i % kLimbs] = {limb, below};
    below = limb;
  }
}

// Limbs may be a little too large, so they are added up.
inline void Pack(Word* packed, const SResidue& r) {
  DoubleWord bits = 0;
  int count = 0, word = 0;
  for (int i = 0; word < r.words; ++i) {
    const Word limb = Columns(r)[i / kLimbs].number[i % kLimbs].limb;
    bits += static_cast<DoubleWord>(limb) << count;
    count += kLimbBits;
    if (count < kWordBits) continue;
    packed[word++] = static_cast<Word>(bits);
    bits >>= kWordBits;
    count -= kWordBits;
  }
}

// What is above the limbs' bits goes one lane up, once.
KEST_FOR_KERNEL inline Vector Carry(Vector lanes, Vector& carried) {
  const Vector above = ShiftRight<kLimbBits>(lanes);
  const Vector r = Add(And(lanes, Broadcast(kLimbMask)), MoveUp(above, carried));
  carried = above;
  return r;
}

KEST_FOR_KERNEL inline void CarrySums(SColumn* columns, int count) {
  Vector carried = Zero();
  for (int j = 0; j < count; ++j) Store(columns[j].sum, Carry(Load(columns[j].sum), carried));
}

// The number becomes the sum. After two carries its limbs are below 2^28 + 2^9, which will do.
KEST_FOR_KERNEL inline void TakeSum(SColumn* columns, int count) {
  Vector first = Zero(), second = first, before = first;
  for (int j = 0; j < count; ++j) {
    const Vector limbs = Carry(Carry(Load(columns[j].sum), first), second);
    Store(columns[j].number, Or(limbs, ShiftLeft<kWordBits>(MoveUp(limbs, before))));
    before = limbs;
  }
}

// sum += places * low + places one lane down * high. A load at the second half of a place brings
// what is below to the lower half of each lane, and something that takes no part to the upper.
KEST_FOR_KERNEL inline Vector AddProducts(Vector sum, const SPlace* places, Vector low,
                                          Vector high) {
  sum = Add(sum, Multiply(Load(places), low));
  return Add(sum, Multiply(LoadUnaligned(&places->below), high));
}

// The columns' sum = sum / 2^56 + number * (low, high), modulo m.
KEST_FOR_KERNEL inline void Step(SColumn* columns, int count, Vector low, Vector high) {
  const Vector first = Load(columns->sum);
  // The lowest two limbs.
  const Vector lane = BroadcastLane<0>(first);
  const Vector above = Add(BroadcastLane<1>(first), ShiftRight<kLimbBits>(lane));
  const Vector q0 = And(lane, Broadcast(kLimbMask)), q1 = And(above, Broadcast(kLimbMask));
  Vector next = Load(columns[1].sum);
  Vector sum = Add(MoveDownTwo(first, next), LowestLane(ShiftRight<kLimbBits>(above)));
  SColumn* const end = columns + count;
  for (SColumn* column = columns;;) {
    sum = AddProducts(sum, column->number, low, high);
    Store(column->sum, AddProducts(sum, column->factor, q0, q1));
    if (++column == end) return;
    sum = next;
    next = Load(column[1].sum);
    sum = MoveDownTwo(sum, next);
  }
}

KEST_FOR_KERNEL KEST_REALIGN inline void MultiplyResidue(const SResidue& r, const Word* packed) {
  SColumn* columns = Columns(r);
  const int count = r.columnCount;
  for (int j = 0; j <= count; ++j) Store(columns[j].sum, Zero());
  // One step more than there are limbs: a limb is multiplied in one and reduced in the next.
  for (int step = 0; step <= r.steps; ++step) {
    if (step % kStepsBetweenCarries == kStepsBetweenCarries - 1) CarrySums(columns, count);
    const int at = 2 * step;
    const SPlace* own = &columns[at / kLimbs].number[at % kLimbs];
    const Word low = packed == nullptr ? own[0].limb : LimbAt(packed, r.words, at);
    const Word high = packed == nullptr ? own[1].limb : LimbAt(packed, r.words, at + 1);
    Step(columns, count, Broadcast(low), Broadcast(high));
  }
  TakeSum(columns, count);
}

constexpr SResidueLevel kLevel = {kLimbBits, kLimbs, sizeof(SColumn), SetFactor,
                                  Unpack,    Pack,   MultiplyResidue};

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_CRYPTO_BIG_INT_RESIDUES_28_H
