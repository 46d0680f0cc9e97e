// POSIX side of TLibrary: a handle is what dlopen gave, never null. The entry points of a module
// are looked up by their plain names, because a module has to be stopped without memory too.

#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <string.h>

#include "kest/file.h"

namespace {

// The result is looked at as a byte: a module in another language may return any number for true.
using InitProc = unsigned char (*)(const char* path);
using TermProc = void (*)();

// The symbol that the module itself defines, or null. dlsym also finds those of the libraries that
// the module depends on, and a module built on this library depends on its entry points.
void* OwnSymbol(void* module, const char* name) {
  void* const symbol = dlsym(module, name);
  if (symbol == nullptr) return nullptr;
  link_map* self = nullptr;
  void* owner = nullptr;
  Dl_info info;
  if (dlinfo(module, RTLD_DI_LINKMAP, &self) != 0) return nullptr;
  if (dladdr1(symbol, &info, &owner, RTLD_DL_LINKMAP) == 0) return nullptr;
  return owner == self ? symbol : nullptr;
}

// Writes the absolute form of spec to path, PATH_MAX bytes. False when the directory does not exist
// or a path is too long. Only the directory is resolved: a link in place of the module stays.
bool MakeAbsolute(const char* spec, char* path) {
  char directory[PATH_MAX];
  const size_t length = strlen(spec);
  if (length >= sizeof(directory)) return false;
  memcpy(directory, spec, length + 1);
  const char* name = spec;
  char* const separator = strrchr(directory, '/');
  if (separator != nullptr) {
    *separator = '\0';
    name = spec + (separator - directory) + 1;
  }
  if (realpath(separator != nullptr ? directory : "./", path) == nullptr) return false;
  const size_t end = strlen(path);
  const size_t nameSize = strlen(name) + 1;
  if (end + 1 + nameSize > PATH_MAX) return false;
  path[end] = '/';
  memcpy(path + end + 1, name, nameSize);
  return true;
}

bool Start(void* module, const char* path) {
  const InitProc init = reinterpret_cast<InitProc>(OwnSymbol(module, "SharedLibInit"));
  return init != nullptr && init(path) != 0;
}

void Stop(void* module) {
  const TermProc term = reinterpret_cast<TermProc>(OwnSymbol(module, "SharedLibTerm"));
  if (term != nullptr) term();
}

}  // namespace

namespace KEST {

void* TLibrary::LibraryLoad(const TBstr& spec) {
  char path[PATH_MAX];
  if (!MakeAbsolute(spec.GetMultibyteString(), path)) return nullptr;
  void* const module = dlopen(path, RTLD_LAZY);
  if (module == nullptr) return nullptr;
  if (Start(module, path)) return module;
  LibraryFree(module);
  return nullptr;
}

bool TLibrary::LibraryFree(void* handle) {
  Stop(handle);
  return dlclose(handle) != -1;
}

void* TLibrary::LibraryGetProcAddress(void* handle, const TBstr& name) {
  return dlsym(handle, name.GetMultibyteString());
}

}  // namespace KEST
