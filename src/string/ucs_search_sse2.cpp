#include "string/ucs_search_levels.h"
#include "string/vector_sse2.h"
// Written in the vectors above.
#include "string/scan_kernel.h"

namespace KEST {

KEST_FOR_SSE2 KEST_REALIGN const unsigned short* UcsFindSse2(const unsigned short* s,
                                                             unsigned short ch) {
  return KEST_KERNELS::FirstUnit(s, ch);
}

KEST_FOR_SSE2 KEST_REALIGN const unsigned short* UcsFindLastSse2(const unsigned short* s,
                                                                 size_t count, unsigned short ch) {
  return KEST_KERNELS::LastUnit(s, count, ch);
}

KEST_FOR_SSE2 KEST_REALIGN const unsigned short* UcsFindOneOfSse2(const unsigned short* s,
                                                                  const unsigned short* set) {
  return KEST_KERNELS::FirstMarked(s, KEST_KERNELS::SUnitOfSet(set));
}

}  // namespace KEST
