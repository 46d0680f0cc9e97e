// The string subsystem's steps of start and stop.

#include "kest/frame.h"

namespace KEST {

// String buffers come straight from the allocator: nothing to start.
bool BstrInit() { return true; }
void BstrTerm() {}

}  // namespace KEST
