#include "crypto/big_int_vector_avx2.h"
// After what it is written in.
#include "crypto/big_int_residues_28.h"

namespace KEST {

const SResidueLevel* ResiduesAvx2() { return &KEST_KERNELS::kLevel; }

}  // namespace KEST
