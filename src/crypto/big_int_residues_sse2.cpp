#include "crypto/big_int_vector_sse2.h"
// After what it is written in.
#include "crypto/big_int_residues_28.h"

namespace KEST {

const SResidueLevel* ResiduesSse2() { return &KEST_KERNELS::kLevel; }

}  // namespace KEST
