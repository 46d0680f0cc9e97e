#include "string/ucs_change_levels.h"
#include "string/vector_avx512.h"
// Written in the vectors above.
#include "string/change_kernel.h"

namespace KEST {

KEST_FOR_AVX512 KEST_REALIGN void UcsChangeCaseAvx512(unsigned short* s, size_t count,
                                                      unsigned short first) {
  KEST_KERNELS::ChangeCase(s, count, first);
}

}  // namespace KEST
