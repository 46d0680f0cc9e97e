// Asks CPUID what the processor has, and XGETBV which registers the system saves.

#include "cpu/level.h"

#include <cpuid.h>
#include <stddef.h>

#include <atomic>

// The tests build the library once more for each level below the best.
#ifndef KEST_CPU_LEVEL_LIMIT
#define KEST_CPU_LEVEL_LIMIT KEST::kCpuAvx512
#endif

namespace {

struct SLeaf {
  unsigned int a, b, c, d;
};

// All zero when the processor does not know the leaf.
SLeaf Leaf(unsigned int number) {
  SLeaf leaf = {};
  __get_cpuid_count(number, 0, &leaf.a, &leaf.b, &leaf.c, &leaf.d);
  return leaf;
}

// The register sets that the system saves. Only where CPUID says OSXSAVE.
unsigned int SavedStates() {
  unsigned int low, high;
  __asm__("xgetbv" : "=a"(low), "=d"(high) : "c"(0));
  return low;
}

constexpr bool Has(unsigned int word, unsigned int bits) { return (word & bits) == bits; }

constexpr unsigned int kSavesYmm = 0x06;  // XMM and YMM
constexpr unsigned int kSavesZmm = 0xe6;  // and masks, the upper halves of ZMM, ZMM 16 to 31
constexpr unsigned int kLzcnt = 1u << 5;

KEST::ECpuLevel Detect(const SLeaf& basic, const SLeaf& extended, unsigned int more) {
  if (!Has(basic.d, bit_SSE2)) return KEST::kCpuPlain;
  if (!Has(basic.c, bit_SSSE3)) return KEST::kCpuSse2;
  if (!Has(basic.c, bit_OSXSAVE | bit_AVX | bit_POPCNT) || !Has(more, kLzcnt) ||
      !Has(extended.b, bit_AVX2 | bit_BMI | bit_BMI2) || !Has(SavedStates(), kSavesYmm)) {
    return KEST::kCpuSsse3;
  }
  if (!Has(extended.b, bit_AVX512F | bit_AVX512BW | bit_AVX512DQ | bit_AVX512VL | bit_AVX512IFMA) ||
      !Has(extended.c, bit_AVX512VBMI | bit_AVX512VBMI2) || !Has(SavedStates(), kSavesZmm)) {
    return KEST::kCpuAvx2;
  }
  return KEST::kCpuAvx512;
}

// Whether Valgrind runs the program: it answers this request, made by rotating a register once
// round and exchanging another with itself, which changes nothing elsewhere.
bool IsUnderValgrind() {
  constexpr size_t kIsRunning = 0x1001;
  const size_t request[6] = {kIsRunning, 0, 0, 0, 0, 0};
  size_t answer = 0;
#ifdef __x86_64__
  __asm__ volatile(
      "rolq $3, %%rdi; rolq $13, %%rdi; rolq $61, %%rdi; rolq $51, %%rdi; xchgq %%rbx, %%rbx"
      : "+d"(answer)
      : "a"(request)
      : "cc", "memory");
#else
  __asm__ volatile(
      "roll $3, %%edi; roll $13, %%edi; roll $29, %%edi; roll $19, %%edi; xchgl %%ebx, %%ebx"
      : "+d"(answer)
      : "a"(request)
      : "cc", "memory");
#endif
  return answer != 0;
}

// Level + 1, and kSha beside it; 0 before the first call. Threads that come first find the same.
constexpr unsigned int kSha = 0x100;
std::atomic<unsigned int> s_found{0};

unsigned int Find() {
  const SLeaf basic = Leaf(1);
  const SLeaf extended = Leaf(7);
  // Memcheck reports what the vector routines read past the end of a text.
  const KEST::ECpuLevel limit =
      IsUnderValgrind() ? KEST::kCpuPlain : static_cast<KEST::ECpuLevel>(KEST_CPU_LEVEL_LIMIT);
  const KEST::ECpuLevel best = Detect(basic, extended, Leaf(0x80000001).c);
  unsigned int found = (best < limit ? best : limit) + 1u;
  // With the levels that test builds stop at, these go from AVX2 on.
  if (Has(extended.b, bit_SHA) && Has(basic.c, bit_SSSE3 | bit_SSE4_1) && limit >= KEST::kCpuAvx2) {
    found |= kSha;
  }
  s_found.store(found, std::memory_order_relaxed);
  return found;
}

unsigned int Found() {
  const unsigned int found = s_found.load(std::memory_order_relaxed);
  return found != 0 ? found : Find();
}

}  // namespace

namespace KEST {

ECpuLevel CpuLevel() { return static_cast<ECpuLevel>((Found() & (kSha - 1)) - 1); }

bool CpuHasSha() { return (Found() & kSha) != 0; }

}  // namespace KEST
