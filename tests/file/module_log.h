// The test program's side of the modules: a log of what they report.

#ifndef KEST_TESTS_FILE_MODULE_LOG_H
#define KEST_TESTS_FILE_MODULE_LOG_H

#include <filesystem>
#include <string>
#include <vector>

#include "file/temp_tree.h"
#include "kest/file.h"

namespace kest_test {

// One entry a call: "pair starts as /path/pair.so", "pair stops", "pair is unloaded".
inline std::vector<std::string> s_moduleLog;

// What SharedLibInit returns in every module.
inline int s_moduleResult = 1;

// Called before SharedLibInit returns, if set.
inline void (*s_moduleHook)() = nullptr;

using Log = std::vector<std::string>;

// The log so far, which starts anew.
inline Log TakeLog() {
  Log log;
  log.swap(s_moduleLog);
  return log;
}

// The file that the build made.
inline std::string BuiltModule(const std::string& name) {
  return std::string(KEST_TEST_MODULES) + "/" + name + ".so";
}

// Puts a copy of a built module into the tree. The system takes every copy for a module of its own.
inline void CopyModule(const TempTree& tree, const std::string& module, const std::string& name) {
  std::filesystem::copy_file(BuiltModule(module), tree.Path(name));
}

// The tree's folder as the loader reports it, with a name in it.
inline std::string Canonical(const TempTree& tree, const std::string& name) {
  return std::filesystem::canonical(tree.Path()).string() + "/" + name;
}

}  // namespace kest_test

extern "C" {

inline __attribute__((used)) int ModuleStarts(const char* module, const char* path) {
  kest_test::s_moduleLog.push_back(module + std::string(" starts as ") + path);
  if (kest_test::s_moduleHook != nullptr) kest_test::s_moduleHook();
  return kest_test::s_moduleResult;
}

inline __attribute__((used)) void ModuleStops(const char* module) {
  kest_test::s_moduleLog.push_back(module + std::string(" stops"));
}

inline __attribute__((used)) void ModuleIsUnloaded(const char* module) {
  kest_test::s_moduleLog.push_back(module + std::string(" is unloaded"));
}

}  // extern "C"

#endif  // KEST_TESTS_FILE_MODULE_LOG_H
