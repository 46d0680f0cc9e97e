// Room for a text that is being rewritten and comes out no longer than it was.

#ifndef KEST_SRC_TEXT_SCRATCH_H
#define KEST_SRC_TEXT_SCRATCH_H

#include "frame/object.h"
#include "kest/frame.h"

namespace KEST {

// length units and a terminator: on the stack up to 127 units, in one block from there on.
class TScratch {
 public:
  explicit TScratch(int length)
      : units(length < kLocalUnits ? local
                                   : static_cast<unsigned short*>(AllocateArray(
                                         static_cast<unsigned int>(length) + 1, sizeof(*units)))) {}
  TScratch(const TScratch&) = delete;
  TScratch& operator=(const TScratch&) = delete;
  ~TScratch() {
    if (units != local && units != nullptr) KestMemFree(units);
  }

  // Null without memory.
  unsigned short* Get() { return units; }

 private:
  static constexpr int kLocalUnits = 128;

  unsigned short* units;
  unsigned short local[kLocalUnits];
};

}  // namespace KEST

#endif  // KEST_SRC_TEXT_SCRATCH_H
