#include "string/ucs_search_levels.h"
#include "string/vector_avx512.h"
// Written in the vectors above.
#include "string/scan_kernel.h"

namespace KEST {

KEST_FOR_AVX512 KEST_REALIGN const unsigned short* UcsFindAvx512(const unsigned short* s,
                                                                 unsigned short ch) {
  return KEST_KERNELS::FirstUnit(s, ch);
}

KEST_FOR_AVX512 KEST_REALIGN const unsigned short* UcsFindLastAvx512(const unsigned short* s,
                                                                     size_t count,
                                                                     unsigned short ch) {
  return KEST_KERNELS::LastUnit(s, count, ch);
}

KEST_FOR_AVX512 KEST_REALIGN const unsigned short* UcsFindOneOfAvx512(const unsigned short* s,
                                                                      const unsigned short* set) {
  return KEST_KERNELS::FirstMarked(s, KEST_KERNELS::SUnitOfSet(set));
}

}  // namespace KEST
