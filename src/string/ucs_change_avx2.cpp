#include "string/ucs_change_levels.h"
#include "string/vector_avx2.h"
// Written in the vectors above.
#include "string/change_kernel.h"

namespace KEST {

KEST_FOR_AVX2 KEST_REALIGN void UcsChangeCaseAvx2(unsigned short* s, size_t count,
                                                  unsigned short first) {
  KEST_KERNELS::ChangeCase(s, count, first);
}

}  // namespace KEST
