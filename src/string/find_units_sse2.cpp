#include "string/find_units_levels.h"
#include "string/vector_sse2.h"
// Written in the vectors above.
#include "string/search_kernel.h"

namespace KEST {

KEST_FOR_SSE2 KEST_REALIGN SFound FindUnitsSse2(const unsigned short* haystack,
                                                const unsigned short* needle, size_t length) {
  if (KEST_KERNELS::IsOdd(haystack)) return FindUnitsPlain(haystack, needle, length);
  return KEST_KERNELS::TSearch(haystack, needle, length).Run();
}

}  // namespace KEST
