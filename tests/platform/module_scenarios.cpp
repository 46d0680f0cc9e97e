// Modules while the system refuses.

#include <dlfcn.h>

#include <optional>

#include "file/module_log.h"
#include "kest/file.h"
#include "platform/scenario.h"

namespace {

using namespace kest_test;
using KEST::TBstr;
using KEST::TLibrary;

// A module that the system refused to unload is still there; nobody holds it any more.
void UnloadKeptModule() {
  void* const module = TheRefusals().keptModule;
  EXPECT_TRUE(module == nullptr || dlclose(module) == 0);
}

std::string Join(const Log& log) {
  std::string text;
  for (const std::string& entry : log) text += (text.empty() ? "" : ", ") + entry;
  return text;
}

// Whether there is a module, then what it says when it is unloaded.
std::string LoadModule() {
  const TBstr spec = Bstr(BuiltModule("pair"));
  TLibrary library;
  const bool loaded = Refusing([&] { return library.Load(spec); });
  EXPECT_EQ(loaded, library.IsLoaded());
  TakeLog();
  EXPECT_EQ(!loaded, library.Load(spec));
  EXPECT_NE(nullptr, library.GetProcAddress("ModuleName"));
  EXPECT_TRUE(library.Free());
  EXPECT_EQ("pair is unloaded", TakeLog().back());
  return Say(loaded);
}

// It says no when it is started. Then it is stopped and unloaded.
std::string LoadModuleThatIsNotReady() {
  const TBstr spec = Bstr(BuiltModule("pair"));
  TLibrary library;
  s_moduleResult = 0;
  const bool loaded = Refusing([&] { return library.Load(spec); });
  s_moduleResult = 1;
  EXPECT_FALSE(library.IsLoaded());
  Log log = TakeLog();
  if (!log.empty() && log.front().find("starts") != std::string::npos) log.erase(log.begin());
  UnloadKeptModule();
  EXPECT_TRUE(library.Load(spec));
  EXPECT_TRUE(library.Free());
  TakeLog();
  return Say(loaded, Join(log));
}

std::string FreeModule() {
  TLibrary library;
  EXPECT_TRUE(library.Load(Bstr(BuiltModule("pair"))));
  TakeLog();
  const bool freed = Refusing([&] { return library.Free(); });
  const std::string log = Join(TakeLog());
  EXPECT_EQ(freed, !library.IsLoaded());
  EXPECT_EQ(!freed, library.Free());
  TakeLog();
  return Say(freed, log);
}

std::string DestroyLibrary() {
  std::optional<TLibrary> library(std::in_place);
  EXPECT_TRUE(library->Load(Bstr(BuiltModule("pair"))));
  TakeLog();
  Refusing([&] { library.reset(); });
  const std::string log = Join(TakeLog());
  UnloadKeptModule();
  TakeLog();
  return log;
}

std::string GetProcAddress() {
  TLibrary library;
  EXPECT_TRUE(library.Load(Bstr(BuiltModule("pair"))));
  const TBstr name("ModuleName");
  void* const found = Refusing([&] { return library.GetProcAddress(name); });
  EXPECT_NE(nullptr, library.GetProcAddress(name));
  EXPECT_TRUE(library.Free());
  TakeLog();
  return Say(found != nullptr);
}

}  // namespace

namespace kest_test {

std::vector<Scenario> ModuleScenarios() {
  return {
      {"LoadModule",
       LoadModule,
       "true",
       {{"realpath", "false"},
        {"dlopen", "false"},
        {"dlsym", "false"},
        {"dlinfo", "false"},
        {"dladdr1", "false"}}},
      // The second look-up is that of SharedLibTerm. A module that is not unloaded has been
      // stopped.
      {"LoadModuleThatIsNotReady",
       LoadModuleThatIsNotReady,
       "false pair stops, pair is unloaded",
       {{"realpath", "false "},
        {"dlopen", "false "},
        {"dlsym #1", "false pair stops, pair is unloaded"},
        {"dlinfo #1", "false pair stops, pair is unloaded"},
        {"dladdr1 #1", "false pair stops, pair is unloaded"},
        {"dlsym #2", "false pair is unloaded"},
        {"dlinfo #2", "false pair is unloaded"},
        {"dladdr1 #2", "false pair is unloaded"},
        {"dlclose", "false pair stops"}}},
      {"FreeModule",
       FreeModule,
       "true pair stops, pair is unloaded",
       {{"dlsym", "true pair is unloaded"},
        {"dlinfo", "true pair is unloaded"},
        {"dladdr1", "true pair is unloaded"},
        {"dlclose", "false pair stops"}}},
      {"DestroyLibrary",
       DestroyLibrary,
       "pair stops, pair is unloaded",
       {{"dlsym", "pair is unloaded"},
        {"dlinfo", "pair is unloaded"},
        {"dladdr1", "pair is unloaded"},
        {"dlclose", "pair stops"}}},
      {"GetProcAddress", GetProcAddress, "true", {{"dlsym", "false"}}},
  };
}

}  // namespace kest_test
