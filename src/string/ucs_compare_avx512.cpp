#include "string/ucs_compare_levels.h"
#include "string/vector_avx512.h"
// Written in the vectors above.
#include "string/compare_kernel.h"

namespace KEST {

using namespace KEST_KERNELS;

KEST_FOR_AVX512 KEST_REALIGN int UcsCompareAvx512(const unsigned short* a,
                                                  const unsigned short* b) {
  return Difference<SAsItIs>(a, b, kWholeText);
}

KEST_FOR_AVX512 KEST_REALIGN int UcsCompareFoldedAvx512(const unsigned short* a,
                                                        const unsigned short* b) {
  return Difference<SUpper>(a, b, kWholeText);
}

KEST_FOR_AVX512 KEST_REALIGN int UcsCompareSomeAvx512(const unsigned short* a,
                                                      const unsigned short* b, unsigned int limit) {
  return Difference<SAsItIs>(a, b, limit);
}

KEST_FOR_AVX512 KEST_REALIGN int UcsCompareSomeFoldedAvx512(const unsigned short* a,
                                                            const unsigned short* b,
                                                            unsigned int limit) {
  return Difference<SUpper>(a, b, limit);
}

KEST_FOR_AVX512 KEST_REALIGN size_t UcsCommonAvx512(const unsigned short* a,
                                                    const unsigned short* b, size_t limit) {
  return FirstStop<SAsItIs>(a, b, limit);
}

}  // namespace KEST
