// Whether a virtual function of an object is still the library's own. A run of calls can then be
// done at once, by the function that knows how; an object whose class overrides the function, here
// or in the host, gets its calls one by one, as described.

#ifndef KEST_SRC_FRAME_OWN_SLOT_H
#define KEST_SRC_FRAME_OWN_SLOT_H

#include <stddef.h>
#include <string.h>

#include <atomic>

namespace KEST {

// Where a call of object's virtual function kMember, a pointer to member, would go. By the Itanium
// C++ ABI, as both compilers follow it on x86, an object begins with the address of its slots, and
// a pointer to a virtual member with the slot's offset in bytes, and 1 added.
template <auto kMember, typename Object>
const void* FunctionInSlot(const Object& object) {
  auto member = kMember;
  ptrdiff_t offset;
  memcpy(&offset, &member, sizeof(offset));
  const char* slots;
  memcpy(&slots, static_cast<const void*>(&object), sizeof(slots));
  const void* function;
  memcpy(&function, slots + (offset - 1), sizeof(function));
  return function;
}

// Whether that is where a call on a plain Owner goes:
//   IsOwn<&TMessageDigest::Transform, TMd5Digest>(*this)
// The first call makes an Owner, of the arguments, to look at. From any thread.
//
// An override that only passes the call on is an override all the same. False for a function of
// Owner's that the host's linker has given a second address; what follows is slower, not wrong.
template <auto kMember, typename Owner, typename Object, typename... Arguments>
bool IsOwn(const Object& object, const Arguments&... arguments) {
  static std::atomic<const void*> s_own{nullptr};
  const void* own = s_own.load(std::memory_order_relaxed);
  if (own == nullptr) {
    const Owner owner(arguments...);
    own = FunctionInSlot<kMember>(owner);
    s_own.store(own, std::memory_order_relaxed);
  }
  return FunctionInSlot<kMember>(object) == own;
}

}  // namespace KEST

#endif  // KEST_SRC_FRAME_OWN_SLOT_H
