#include "string/ucs_length_levels.h"
#include "string/vector_avx512.h"
// Written in the vectors above.
#include "string/scan_kernel.h"

namespace KEST {

KEST_FOR_AVX512 KEST_REALIGN size_t UcsLengthAvx512(const unsigned short* s) {
  return KEST_KERNELS::Length(s);
}

}  // namespace KEST
