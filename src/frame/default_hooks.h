// Whether blocks come from the C library's heap. Only then may a block grow in place through
// KestMemRealloc where an allocation, a copy and a release are described, or be kept for reuse
// where a release is: with hooks of its own a client sees every call that is described.

#ifndef KEST_SRC_FRAME_DEFAULT_HOOKS_H
#define KEST_SRC_FRAME_DEFAULT_HOOKS_H

#include <stddef.h>

#include <atomic>

namespace KEST {

// Not locked, as the hooks are not: they are set before threads start and after they have ended.
extern bool usesDefaultHooks;
inline bool UsesDefaultHooks() { return usesDefaultHooks; }

// Whether a client has ever set hooks. As long as none has, the library has made every block
// itself, and may know more of it than its size.
extern bool hadClientHooks;

// Releases a block that came from the default hooks, whichever are in force now.
void FreeByDefault(void* block);

// Tells the bytes that may be used of a block, which are those asked for or more.
using RoomFunction = size_t(void* block);
extern std::atomic<RoomFunction*> roomFunction;

// The bytes that may be used of a block; 0 when that cannot be told, as with hooks of the client's.
inline size_t BlockRoom(void* block) { return roomFunction.load(std::memory_order_relaxed)(block); }

// The heap's own such function, where it is of one piece with the function that releases: a program
// may bring a malloc and free of its own. Otherwise one that cannot tell.
RoomFunction* InternalRoomFunction(void (*release)(void* block));

}  // namespace KEST

#endif  // KEST_SRC_FRAME_DEFAULT_HOOKS_H
