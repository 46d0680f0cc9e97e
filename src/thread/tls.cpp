// The thread-local data registry: one map a thread, from the client's key to a block.

#include <stdint.h>
#include <string.h>

#include "frame/object.h"
#include "kest/collections.h"
#include "kest/thread.h"

namespace {

using KEST::TPtrFromPtrMap;

constexpr int kEntriesPerBlock = 10;

// The map that this thread's last stop released. The thread's slot still holds its address, on
// purpose; this is what tells that value from a live map.
//
// In the static thread block, because the general model may allocate on first use and has no result
// for a failure.
thread_local void* t_releasedMap __attribute__((tls_model("initial-exec"))) = nullptr;

void* ToMapKey(int key) { return reinterpret_cast<void*>(static_cast<intptr_t>(key)); }

// The calling thread's map, or null.
TPtrFromPtrMap* GetMap() {
  void* const value = KEST::InternalTlsGetValue();
  return value != t_releasedMap ? static_cast<TPtrFromPtrMap*>(value) : nullptr;
}

TPtrFromPtrMap* CreateMap() {
  TPtrFromPtrMap* const map = KEST::CreateObject<TPtrFromPtrMap>(kEntriesPerBlock);
  if (map == nullptr) return nullptr;
  if (!KEST::InternalTlsSetValue(map)) {
    KEST::DestroyObject(map);
    return nullptr;
  }
  t_releasedMap = nullptr;  // the new map may lie where the released one was
  return map;
}

}  // namespace

extern "C" {

void* KestTlsAddData(int key, unsigned int size) {
  TPtrFromPtrMap* map = GetMap();
  if (map == nullptr) map = CreateMap();
  if (map == nullptr) return nullptr;
  void* const block = KestMemAlloc(size);
  if (block == nullptr) return nullptr;
  memset(block, 0, size);
  if (map->SetAt(ToMapKey(key), block)) return block;
  KestMemFree(block);
  return nullptr;
}

void* KestTlsGetData(int key) {
  const TPtrFromPtrMap* const map = GetMap();
  void* block = nullptr;
  return map != nullptr && map->Lookup(ToMapKey(key), block) ? block : nullptr;
}

void* KestTlsGetAddData(int key, unsigned int size) {
  void* const block = KestTlsGetData(key);
  return block != nullptr ? block : KestTlsAddData(key, size);
}

bool KestTlsRemoveData(int key) {
  TPtrFromPtrMap* const map = GetMap();
  if (map == nullptr) return false;
  KestMemFree(KestTlsGetData(key));
  return map->RemoveKey(ToMapKey(key));
}

}  // extern "C"

namespace KEST {

bool TlsInit() { return InternalTlsInit(); }

void TlsTerm() { InternalTlsTerm(); }

bool TlsThreadInit() { return true; }

void TlsThreadTerm() {
  TPtrFromPtrMap* const map = GetMap();
  if (map == nullptr) return;
  __POSITION* position = map->GetStartPosition();
  while (position != nullptr) {
    void* key;
    void* block;
    map->GetNextAssoc(position, key, block);
    KestMemFree(block);
  }
  DestroyObject(map);
  t_releasedMap = map;
}

}  // namespace KEST
