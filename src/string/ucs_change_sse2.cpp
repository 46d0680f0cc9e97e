#include "string/ucs_change_levels.h"
#include "string/vector_sse2.h"
// Written in the vectors above.
#include "string/change_kernel.h"

namespace KEST {

KEST_FOR_SSE2 KEST_REALIGN void UcsChangeCaseSse2(unsigned short* s, size_t count,
                                                  unsigned short first) {
  KEST_KERNELS::ChangeCase(s, count, first);
}

}  // namespace KEST
