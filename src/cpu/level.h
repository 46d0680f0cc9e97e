// What vector instructions the processor and the system offer, in levels that each include the ones
// before. Every routine with vector versions has a plain one too, which is what the others must
// equal.

#ifndef KEST_SRC_CPU_LEVEL_H
#define KEST_SRC_CPU_LEVEL_H

// What a vector routine is compiled for. The default 32-bit target has no vector instructions at
// all, so each function names its own, helpers included; a lambda would not inherit them.
#define KEST_FOR_SSE2 __attribute__((target("sse2")))
#define KEST_FOR_SSSE3 __attribute__((target("ssse3")))
#define KEST_FOR_AVX2 __attribute__((target("avx2,bmi,bmi2,lzcnt,popcnt")))
#define KEST_FOR_AVX512                                                                  \
  __attribute__((                                                                        \
      target("avx2,bmi,bmi2,lzcnt,popcnt,avx512f,avx512bw,avx512dq,avx512vl,avx512vbmi," \
             "avx512vbmi2,avx512ifma")))
#define KEST_FOR_SHA __attribute__((target("sha,sse4.1")))

// On each vector routine that other files call: 32-bit callers may align the stack to 4 bytes only,
// and vectors are spilled to 16 and more.
#define KEST_REALIGN __attribute__((force_align_arg_pointer))

// On each routine that reads whole aligned vectors: the bytes beyond the text share a page with it,
// so that they can be read, but a sanitizer sees bytes that are not the text's, and that another
// thread may write.
#define KEST_READS_PAST_END __attribute__((no_sanitize("address"), no_sanitize("thread")))

namespace KEST {

// kAvx2 comes with BMI 1 and 2, LZCNT and POPCNT; kAvx512 with F, BW, DQ, VL, VBMI, VBMI2 and IFMA.
enum ECpuLevel { kCpuPlain, kCpuSse2, kCpuSsse3, kCpuAvx2, kCpuAvx512 };

// The best level of this machine. From any thread.
ECpuLevel CpuLevel();

// Whether the SHA instructions can be used too. From any thread.
bool CpuHasSha();

}  // namespace KEST

#endif  // KEST_SRC_CPU_LEVEL_H
