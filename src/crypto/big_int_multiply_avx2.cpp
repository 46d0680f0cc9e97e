#include "crypto/big_int_vector_avx2.h"
// After what it is written in.
#include "crypto/big_int_multiply_32.h"

namespace KEST {

KEST_FOR_AVX2 KEST_REALIGN void MultiplyWordsAvx2(Word* r, const Word* a, int aCount, const Word* b,
                                                  int bCount) {
  KEST_KERNELS::MultiplyInBlocks(r, a, aCount, b, bCount);
}

}  // namespace KEST
