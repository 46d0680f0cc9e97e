#include <immintrin.h>

#include "crypto/des_levels.h"

#define KEST_FOR_BLOCKS KEST_FOR_AVX512
#define KEST_BLOCK_VECTOR_SIZE 64
#include "crypto/des_slices.h"

namespace {

struct STernaryLogic {
  template <int kBox>
  static constexpr const auto& Circuit() {
    return KEST::kTernaryCircuit<kBox>;
  }

  template <int kBox, int kGate>
  KEST_IN_BLOCKS static void RunGate(Vector* wire) {
    constexpr KEST::STernaryGate gate = Circuit<kBox>().gates[kGate];
    constexpr int kTable = gate.table;  // an immediate operand, in unoptimised builds too
    const __m512i a = reinterpret_cast<__m512i>(wire[gate.a]);
    const __m512i b = reinterpret_cast<__m512i>(wire[gate.b]);
    const __m512i c = reinterpret_cast<__m512i>(wire[gate.c]);
    wire[KEST::STernaryGate::kFirst + kGate] =
        reinterpret_cast<Vector>(_mm512_ternarylogic_epi64(a, b, c, kTable));
  }
};

}  // namespace

namespace KEST {

// Fewer blocks are faster one by one.
constexpr size_t kFewest = 36;

KEST_FOR_AVX512 KEST_REALIGN size_t DesSlicesAvx512(const unsigned int* schedule,
                                                    unsigned char* data, size_t count,
                                                    unsigned char* chain) {
  return CryptSlices<STernaryLogic>(schedule, data, count, chain, kFewest);
}

}  // namespace KEST
