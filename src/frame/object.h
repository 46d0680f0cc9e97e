// Objects and arrays in memory from the allocator hooks. The library takes bytes, tests them and
// constructs in place; it never uses plain new, whose meaning the host decides.

#ifndef KEST_SRC_FRAME_OBJECT_H
#define KEST_SRC_FRAME_OBJECT_H

#include <limits.h>

#include <new>
#include <utility>

#include "kest/frame.h"

namespace KEST {

// A new T made from args, or null when there is no memory.
template <typename T, typename... Args>
T* CreateObject(Args&&... args) {
  void* block = KestMemAlloc(sizeof(T));
  return block != nullptr ? ::new (block) T(std::forward<Args>(args)...) : nullptr;
}

// Undoes CreateObject. Null is ignored.
template <typename T>
void DestroyObject(T* object) {
  if (object == nullptr) return;
  object->~T();
  KestMemFree(object);
}

// header + count * size bytes, uninitialised; null when that does not fit 32 bits or there is no
// memory. Freed with KestMemFree.
inline void* AllocateArray(unsigned int count, unsigned int size, unsigned int header = 0) {
  if (size != 0 && count > (UINT_MAX - header) / size) return nullptr;
  return KestMemAlloc(header + count * size);
}

}  // namespace KEST

#endif  // KEST_SRC_FRAME_OBJECT_H
