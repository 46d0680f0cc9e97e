// Zeroes memory that held a secret, with stores that the compiler must keep although nothing reads
// them any more.

#ifndef KEST_SRC_CRYPTO_WIPE_H
#define KEST_SRC_CRYPTO_WIPE_H

#include <stddef.h>
#include <string.h>

namespace KEST {

inline void Wipe(void* memory, size_t size) {
  memset(memory, 0, size);
  // Says that the zeros may be read here.
  __asm__ __volatile__("" : : "r"(memory) : "memory");
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_WIPE_H
