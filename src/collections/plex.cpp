#include "frame/layout.h"
#include "frame/object.h"
#include "kest/collections.h"

namespace KEST {

KEST_SIZE_IS(SPlex, 4, 8);
KEST_FIELD_AT(SPlex, next, 0, 0);

SPlex* SPlex::Create(SPlex*& head, unsigned int count, unsigned int elementSize) {
  void* memory = AllocateArray(count, elementSize, sizeof(SPlex));
  if (memory == nullptr) return nullptr;
  head = ::new (memory) SPlex{head};
  return head;
}

void SPlex::FreeDataChain() {
  // Null when called through a null head, which is allowed.
  SPlex* block = this;
  while (block != nullptr) {
    SPlex* following = block->next;
    KestMemFree(block);
    block = following;
  }
}

}  // namespace KEST
