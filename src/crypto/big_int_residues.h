// Residues modulo an odd number, in limbs of fewer bits than a lane has, for vector units.
//
// With X = 2^limbBits and F = X^-2 mod m, a number T = H * X^2 + Q is H + Q * F times X^2, modulo
// m: the lowest two limbs go without a quotient having to be computed (after Montgomery, Modular
// Multiplication Without Trial Division, 1985). A product makes `steps` such steps, so the residue
// of x is x * X^(2 * steps) mod m. It is below 2^(bits of m + 2 * limbBits + 1), as the products
// are: for X^(2 * steps) is at least four times that.

#ifndef KEST_SRC_CRYPTO_BIG_INT_RESIDUES_H
#define KEST_SRC_CRYPTO_BIG_INT_RESIDUES_H

#include <stddef.h>

#include "cpu/dispatch.h"
#include "crypto/big_int_words.h"

namespace KEST {

// One residue, its modulus, and what a product needs, in columns: each is a few vectors that hold
// the same lanes of everything.
struct SResidue {
  void* columns;  // aligned to kResidueAlignment, and as many bytes more than the columns take
  int columnCount;
  int steps;
  int words;  // of a residue that is packed: an array of words like any number
};

constexpr size_t kResidueAlignment = 64;

// How a level of the processor keeps residues.
struct SResidueLevel {
  int limbBits;
  int columnLimbs;
  int columnBytes;
  // Stores F, of count words; the residue is undefined.
  void (*setFactor)(const SResidue& r, const Word* f, int count);
  // r = packed.
  void (*unpack)(const SResidue& r, const Word* packed);
  void (*pack)(Word* packed, const SResidue& r);
  // r = r * packed, or r * r when packed is null.
  void (*multiply)(const SResidue& r, const Word* packed);
};

const SResidueLevel* ResiduesSse2();
const SResidueLevel* ResiduesAvx2();
const SResidueLevel* ResiduesAvx512();

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BIG_INT_RESIDUES_H
