#include <immintrin.h>

#include "crypto/rc2_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_AVX2
#define KEST_BLOCK_VECTOR_SIZE 32
#include "crypto/rc2_lanes.h"

namespace {

struct SShufflingLogic : SPlainLogic {
  // The low and the high bytes of the key's words, in four quarters, each twice.
  struct STable {
    __m256i low[4], high[4];

    KEST_IN_BLOCKS void Set(const unsigned short* key) {
      const __m256i byte = _mm256_set1_epi16(255);
      for (int quarter = 0; quarter < 4; ++quarter) {
        const __m128i* const half = reinterpret_cast<const __m128i*>(key + 16 * quarter);
        const __m256i one = _mm256_broadcastsi128_si256(_mm_loadu_si128(half));
        const __m256i other = _mm256_broadcastsi128_si256(_mm_loadu_si128(half + 1));
        low[quarter] =
            _mm256_packus_epi16(_mm256_and_si256(one, byte), _mm256_and_si256(other, byte));
        high[quarter] = _mm256_packus_epi16(_mm256_srli_epi16(one, 8), _mm256_srli_epi16(other, 8));
      }
    }

    KEST_IN_BLOCKS Words LookUp(Words words) const {
      const Words at = words & 63;
      const __m256i index = reinterpret_cast<__m256i>(at | at << 8);
      __m256i lows = {}, highs = {};
      for (int quarter = 0; quarter < 4; ++quarter) {
        // The top bit, with which a shuffle gives zero, comes up in the other quarters.
        const __m256i place = _mm256_adds_epu8(
            _mm256_xor_si256(index, _mm256_set1_epi8(static_cast<char>(16 * quarter))),
            _mm256_set1_epi8(0x70));
        lows = _mm256_or_si256(lows, _mm256_shuffle_epi8(low[quarter], place));
        highs = _mm256_or_si256(highs, _mm256_shuffle_epi8(high[quarter], place));
      }
      return reinterpret_cast<Words>(_mm256_blendv_epi8(lows, highs, _mm256_set1_epi16(-256)));
    }
  };
};

}  // namespace

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 6;

KEST_FOR_AVX2 KEST_REALIGN size_t Rc2LanesAvx2(const unsigned short* key, bool encrypts,
                                               unsigned char* data, size_t count,
                                               unsigned char* chain) {
  return CryptLanes<SShufflingLogic>(key, encrypts, data, count, chain, kFewest);
}

}  // namespace KEST
