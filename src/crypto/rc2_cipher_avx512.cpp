#include <immintrin.h>

#include "crypto/rc2_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_AVX512
#define KEST_BLOCK_VECTOR_SIZE 64
#include "crypto/rc2_lanes.h"

namespace {

struct SPermutingLogic {
  template <int kCount>
  KEST_IN_BLOCKS static Words Rotate(Words words) {
    const __m512i vector = reinterpret_cast<__m512i>(words);
    return reinterpret_cast<Words>(_mm512_shldi_epi16(vector, vector, kCount));
  }

  KEST_IN_BLOCKS static Words Select(Words a, Words b, Words c) {
    return reinterpret_cast<Words>(_mm512_ternarylogic_epi64(reinterpret_cast<__m512i>(a),
                                                             reinterpret_cast<__m512i>(b),
                                                             reinterpret_cast<__m512i>(c), 0xca));
  }
  KEST_IN_BLOCKS static Words Add(Words words, Words a, Words b, Words c) {
    return words + Select(a, b, c);
  }
  KEST_IN_BLOCKS static Words Subtract(Words words, Words a, Words b, Words c) {
    return words - Select(a, b, c);
  }

  struct STable {
    __m512i low, high;

    KEST_IN_BLOCKS void Set(const unsigned short* key) {
      low = _mm512_loadu_si512(key);
      high = _mm512_loadu_si512(key + 32);
    }

    KEST_IN_BLOCKS Words LookUp(Words words) const {
      return reinterpret_cast<Words>(
          _mm512_permutex2var_epi16(low, reinterpret_cast<__m512i>(words), high));
    }
  };
};

}  // namespace

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 4;

KEST_FOR_AVX512 KEST_REALIGN size_t Rc2LanesAvx512(const unsigned short* key, bool encrypts,
                                                   unsigned char* data, size_t count,
                                                   unsigned char* chain) {
  return CryptLanes<SPermutingLogic>(key, encrypts, data, count, chain, kFewest);
}

}  // namespace KEST
