#include "crypto/des_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_SSE2
#define KEST_BLOCK_VECTOR_SIZE 16
#include "crypto/des_slices.h"

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 44;

KEST_FOR_SSE2 KEST_REALIGN size_t DesSlicesSse2(const unsigned int* schedule, unsigned char* data,
                                                size_t count, unsigned char* chain) {
  return CryptSlices<SBinaryLogic>(schedule, data, count, chain, kFewest);
}

}  // namespace KEST
