// Sizes and offsets that clients are compiled against, stated for both targets beside each class.

#ifndef KEST_SRC_FRAME_LAYOUT_H
#define KEST_SRC_FRAME_LAYOUT_H

#include <stddef.h>

namespace KEST {

// The value that holds in this target.
constexpr size_t ByTarget(size_t in32Bit, size_t in64Bit) {
  return sizeof(void*) == 4 ? in32Bit : in64Bit;
}

}  // namespace KEST

// Pins a field's offset. Used inside a member function where the field is not public.
#define KEST_FIELD_AT(type, field, in32Bit, in64Bit)                       \
  static_assert(offsetof(type, field) == KEST::ByTarget(in32Bit, in64Bit), \
                #type "::" #field " has moved")

#define KEST_SIZE_IS(type, in32Bit, in64Bit) \
  static_assert(sizeof(type) == KEST::ByTarget(in32Bit, in64Bit), #type " has another size")

#endif  // KEST_SRC_FRAME_LAYOUT_H
