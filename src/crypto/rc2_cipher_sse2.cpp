#include "crypto/rc2_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_SSE2
#define KEST_BLOCK_VECTOR_SIZE 16
#include "crypto/rc2_lanes.h"

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 5;

KEST_FOR_SSE2 KEST_REALIGN size_t Rc2LanesSse2(const unsigned short* key, bool encrypts,
                                               unsigned char* data, size_t count,
                                               unsigned char* chain) {
  return CryptLanes<SPlainLogic>(key, encrypts, data, count, chain, kFewest);
}

}  // namespace KEST
