#include "string/find_units_levels.h"
#include "string/vector_avx2.h"
// Written in the vectors above.
#include "string/search_kernel.h"

namespace KEST {

KEST_FOR_AVX2 KEST_REALIGN SFound FindUnitsAvx2(const unsigned short* haystack,
                                                const unsigned short* needle, size_t length) {
  if (KEST_KERNELS::IsOdd(haystack)) return FindUnitsPlain(haystack, needle, length);
  return KEST_KERNELS::TSearch(haystack, needle, length).Run();
}

}  // namespace KEST
