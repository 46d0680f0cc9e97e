#include "collections/hash_map.h"

namespace KEST {

void*& ScratchValue() {
  // In the static thread block, because the general model may allocate on first use, and this is
  // used when there is no memory.
  static thread_local void* value __attribute__((tls_model("initial-exec"))) = nullptr;
  value = nullptr;
  return value;
}

}  // namespace KEST
