#include "crypto/des_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_AVX2
#define KEST_BLOCK_VECTOR_SIZE 32
#include "crypto/des_slices.h"

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 38;

KEST_FOR_AVX2 KEST_REALIGN size_t DesSlicesAvx2(const unsigned int* schedule, unsigned char* data,
                                                size_t count, unsigned char* chain) {
  return CryptSlices<SBinaryLogic>(schedule, data, count, chain, kFewest);
}

}  // namespace KEST
