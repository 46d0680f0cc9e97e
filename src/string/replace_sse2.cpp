#include "string/replace_levels.h"
#include "string/vector_sse2.h"
// Written in the vectors above.
#include "string/replace_kernel.h"

namespace KEST {

KEST_FOR_SSE2 KEST_REALIGN size_t CollectMatchesSse2(const SMatchSearch& search, size_t start,
                                                     unsigned int* places, size_t room) {
  return KEST_KERNELS::CollectMatches(search, start, places, room);
}

KEST_FOR_SSE2 KEST_REALIGN void CopyReplacingSse2(SReplacing& state, const unsigned short* text,
                                                  const unsigned int* places, size_t count) {
  KEST_KERNELS::CopyReplacing(state, text, places, count);
}

}  // namespace KEST
