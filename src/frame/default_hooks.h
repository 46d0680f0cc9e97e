// Whether blocks come from the C library's heap. Only then may a block grow in place through
// KestMemRealloc where an allocation, a copy and a release are described, or be kept for reuse
// where a release is: with hooks of its own a client sees every call that is described.

#ifndef KEST_SRC_FRAME_DEFAULT_HOOKS_H
#define KEST_SRC_FRAME_DEFAULT_HOOKS_H

namespace KEST {

// Not locked, as the hooks are not: they are set before threads start and after they have ended.
bool UsesDefaultHooks();

}  // namespace KEST

#endif  // KEST_SRC_FRAME_DEFAULT_HOOKS_H
