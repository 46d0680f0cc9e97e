#include "collections/node_pool.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace KEST {

KEST_SIZE_IS(SPlex, 4, 8);
KEST_FIELD_AT(SPlex, next, 0, 0);

SPlex* SPlex::Create(SPlex*& head, unsigned int count, unsigned int elementSize) {
  return CreatePlex(head, count, elementSize);
}

// Called through a null head too, which is allowed.
void SPlex::FreeDataChain() { FreePlexes(this); }

}  // namespace KEST
