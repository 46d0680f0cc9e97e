#include "string/ucs_compare_levels.h"
#include "string/vector_avx2.h"
// Written in the vectors above.
#include "string/compare_kernel.h"

namespace KEST {

KEST_FOR_AVX2 KEST_REALIGN size_t UcsCompareAvx2(const unsigned short* a, const unsigned short* b,
                                                 size_t limit) {
  return KEST_KERNELS::FirstStop<KEST_KERNELS::SAsItIs>(a, b, limit);
}

KEST_FOR_AVX2 KEST_REALIGN size_t UcsCompareFoldedAvx2(const unsigned short* a,
                                                       const unsigned short* b, size_t limit) {
  return KEST_KERNELS::FirstStop<KEST_KERNELS::SUpper>(a, b, limit);
}

}  // namespace KEST
