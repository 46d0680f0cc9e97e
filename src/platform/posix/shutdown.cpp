// POSIX side of the last stop step.

#include "kest/frame.h"

namespace KEST {

// Everything was released by the steps before.
void PSTerm() {}

}  // namespace KEST
