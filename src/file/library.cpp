// TLibrary's object layer: keeps the module and its specification, refuses calls on an empty
// object.

#include "kest/file.h"

#include <utility>

#include "frame/layout.h"

namespace KEST {

const unsigned short TLibrary::kLibraryExtension[] = {'s', 'o', 0};

TLibrary::TLibrary() : handle(nullptr) {
  KEST_SIZE_IS(TLibrary, 12, 24);
  KEST_FIELD_AT(TLibrary, handle, 0, 0);
  KEST_FIELD_AT(TLibrary, spec, 4, 8);
}

TLibrary::~TLibrary() {
  if (IsLoaded()) Free();
}

bool TLibrary::Load(const TBstr& moduleSpec) {
  if (IsLoaded() || moduleSpec.IsEmpty()) return false;
  // Copied first: no module is started that could not be kept.
  TBstr copy(moduleSpec);
  if (copy.IsEmpty()) return false;
  handle = LibraryLoad(moduleSpec);
  if (!IsLoaded()) return false;
  spec = std::move(copy);
  return true;
}

bool TLibrary::Free() {
  if (!IsLoaded() || !LibraryFree(handle)) return false;
  spec.Empty();
  handle = nullptr;
  return true;
}

bool TLibrary::IsLoaded() const { return handle != nullptr; }

void* TLibrary::GetProcAddress(const TBstr& name) const {
  return IsLoaded() ? LibraryGetProcAddress(handle, name) : nullptr;
}

const TBstr& TLibrary::GetFileSpec() const { return spec; }

}  // namespace KEST
