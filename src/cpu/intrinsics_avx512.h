// The vector instructions up to AVX-512. g++ 12 warns of operands that its own header leaves
// undefined on purpose.

#ifndef KEST_SRC_CPU_INTRINSICS_AVX512_H
#define KEST_SRC_CPU_INTRINSICS_AVX512_H

#if defined(__GNUC__) && !defined(__clang__)
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wmaybe-uninitialized"
#pragma GCC diagnostic ignored "-Wuninitialized"
#include <immintrin.h>
#pragma GCC diagnostic pop
#else
#include <immintrin.h>
#endif

#endif  // KEST_SRC_CPU_INTRINSICS_AVX512_H
