// The callback registry: one callback an identifier, on whichever thread gives the message.

#include <stdint.h>

#include "frame/object.h"
#include "kest/collections.h"
#include "kest/message.h"

namespace {

using KEST::TPtrFromPtrMap;

constexpr int kEntriesPerBlock = 10;

// Exists while it has entries. Start and stop of the library leave it alone.
TPtrFromPtrMap* s_registry = nullptr;

void* ToMapKey(unsigned int id) { return reinterpret_cast<void*>(static_cast<uintptr_t>(id)); }

void DropRegistryIfEmpty() {
  if (!s_registry->IsEmpty()) return;
  KEST::DestroyObject(s_registry);
  s_registry = nullptr;
}

}  // namespace

extern "C" {

bool KestRegisterMessageCallback(unsigned int id, KEST::TMessageCallback callback) {
  if (KestLookupMessageCallback(id) != nullptr) return false;
  if (callback == nullptr) return true;  // counts as none: nothing to keep
  if (s_registry == nullptr) s_registry = KEST::CreateObject<TPtrFromPtrMap>(kEntriesPerBlock);
  if (s_registry == nullptr) return false;
  if (s_registry->SetAt(ToMapKey(id), reinterpret_cast<void*>(callback))) return true;
  DropRegistryIfEmpty();
  return false;
}

bool KestUnregisterMessageCallback(unsigned int id) {
  if (KestLookupMessageCallback(id) == nullptr) return false;
  const bool removed = s_registry->RemoveKey(ToMapKey(id));
  DropRegistryIfEmpty();
  return removed;
}

KEST::TMessageCallback KestLookupMessageCallback(unsigned int id) {
  void* callback = nullptr;
  if (s_registry == nullptr || !s_registry->Lookup(ToMapKey(id), callback)) return nullptr;
  return reinterpret_cast<KEST::TMessageCallback>(callback);
}

bool KestGiveMessage(unsigned int id, void* param1, void* param2) {
  const KEST::TMessageCallback callback = KestLookupMessageCallback(id);
  if (callback == nullptr) return false;
  callback(id, param1, param2);
  return true;
}

}  // extern "C"
