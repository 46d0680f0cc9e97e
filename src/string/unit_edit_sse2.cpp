#include "string/unit_edit_levels.h"
#include "string/vector_sse2.h"
// Written in the vectors above.
#include "string/unit_edit_kernel.h"

namespace KEST {

KEST_FOR_SSE2 KEST_REALIGN size_t ReplaceUnitSse2(unsigned short* text, size_t count,
                                                  unsigned short from, unsigned short to) {
  return KEST_KERNELS::ReplaceUnit(text, count, from, to);
}

KEST_FOR_SSE2 KEST_REALIGN unsigned short* RemoveUnitSse2(unsigned short* dest,
                                                          const unsigned short* text, size_t count,
                                                          unsigned short ch) {
  return KEST_KERNELS::RemoveUnit(dest, text, count, ch);
}

}  // namespace KEST
