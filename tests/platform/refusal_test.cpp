// Every operation of the library that calls the system, with every such call failing once: the
// result is the documented one, nothing is lost, and what was refused can be done afterwards.

#include <dlfcn.h>
#include <fnmatch.h>
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <filesystem>
#include <iterator>
#include <set>

#include "file/temp_tree.h"
#include "kest/thread.h"
#include "platform/scenario.h"
#include "support/test_allocator.h"

namespace {

using namespace kest_test;

// Starts the program again with the preload library in front of all others, the sanitizers' too.
__attribute__((constructor)) void StartPreloaded(int, char** arguments, char**) {
  if (dlsym(RTLD_DEFAULT, "kest_test_refusals") != nullptr) {
    unsetenv("LD_PRELOAD");  // programs that this one starts go without
    return;
  }
  const auto prepend = [](const char* variable, const char* what) {
    const char* const rest = getenv(variable);
    setenv(variable, rest != nullptr ? (what + std::string(":") + rest).c_str() : what, 1);
  };
  const char* const preloaded = getenv("LD_PRELOAD");
  if (preloaded != nullptr && strstr(preloaded, KEST_TEST_PRELOAD) != nullptr) {
    fputs("cannot preload " KEST_TEST_PRELOAD "\n", stderr);
    _exit(1);
  }
  prepend("LD_PRELOAD", KEST_TEST_PRELOAD);
  prepend("ASAN_OPTIONS", "verify_asan_link_order=0");
  execv(std::filesystem::read_symlink("/proc/self/exe").c_str(), arguments);
  perror("cannot start again");
  _exit(1);
}

std::vector<Scenario> AllScenarios() {
  std::vector<Scenario> all;
  for (const auto& some :
       {FileScenarios(), ModuleScenarios(), ThreadScenarios(), SystemScenarios()}) {
    all.insert(all.end(), some.begin(), some.end());
  }
  return all;
}

const Way& WayAt(int way) { return TheRefusals().ways[way]; }

std::string NameOf(int way) {
  return *WayAt(way).how != '\0' ? Say(WayAt(way).function, WayAt(way).how) : WayAt(way).function;
}

// Null when nothing is documented.
const std::string* FindDocumented(const Scenario& scenario, int way, int call) {
  const std::string number = " #" + std::to_string(call), function = WayAt(way).function;
  for (const std::string& key : {NameOf(way) + number, function + number, NameOf(way), function}) {
    for (const Documented& row : scenario.refused) {
      if (row.refusal == key) return &row.result;
    }
  }
  return nullptr;
}

// Whether the scenario leaves the way out, and says so.
bool IsLeftOut(const Scenario& scenario, int way) {
  const std::string* const documented = FindDocumented(scenario, way, 0);
  return documented != nullptr && *documented == kPlainMutex;
}

// What the system has given out, descriptors at the end.
std::vector<int> Holdings() {
  const auto& held = TheRefusals().held;
  std::vector<int> holdings(std::begin(held), std::end(held));
  holdings.push_back(OpenDescriptors());
  return holdings;
}

// Runs the scenario with that call refused, and checks that nothing is lost.
std::string RunScenario(const Scenario& scenario, int way, int call, bool allFromThere = false) {
  TestAllocator allocator;
  const std::vector<int> before = Holdings();
  Aim(way, call, allFromThere);
  std::string result = scenario.run();
  EXPECT_EQ(before, Holdings()) << "something is lost";
  EXPECT_EQ(0, allocator.Live()) << "memory is lost";
  return result;
}

// Refuses call 1, 2, ... until the scenario completes. The number of runs in which one was refused.
int SweepOne(const Scenario& scenario, int way) {
  for (int call = 1;; ++call) {
    SCOPED_TRACE(Say(scenario.name, "with call", call, "of", NameOf(way), "refused"));
    const std::string result = RunScenario(scenario, way, call);
    if (TheRefusals().refused == 0) {
      EXPECT_EQ(scenario.completes, result);
      return call - 1;
    }
    const std::string* const documented = FindDocumented(scenario, way, call);
    if (documented == nullptr) {
      ADD_FAILURE() << "nothing is documented; the result is " << result;
      return call;
    }
    EXPECT_EQ(*documented, result);
  }
}

// The same with all later calls refused as well. What comes of two refusals together is not
// documented, but nothing is lost by them either, and the scenario's own checks hold.
int SweepAllFromThere(const Scenario& scenario, int way) {
  if (std::string("sem_wait") == WayAt(way).function) return 0;  // no signal interrupts for ever
  for (int call = 1;; ++call) {
    SCOPED_TRACE(Say(scenario.name, "with", NameOf(way), "refused from call", call, "on"));
    RunScenario(scenario, way, call, true);
    if (TheRefusals().refused == 0) return call - 1;
  }
}

// The ways that the scenario calls the functions of, without those that it leaves out.
std::vector<int> WaysIn(const Scenario& scenario) {
  EXPECT_EQ(scenario.completes, scenario.run()) << "what is set up once in a process is, now";
  EXPECT_EQ(scenario.completes, RunScenario(scenario, kNone, 0));
  std::vector<int> ways;
  for (int way = 0; way < TheRefusals().wayCount; ++way) {
    if (TheRefusals().calls[way] > 0 && !IsLeftOut(scenario, way)) ways.push_back(way);
  }
  return ways;
}

std::set<std::string> RefusableFunctions() {
  std::set<std::string> functions;
  for (int i = 0; i < TheRefusals().wayCount; ++i) {
    functions.insert(TheRefusals().ways[i].function);
  }
  return functions;
}

class Refusal : public testing::TestWithParam<Scenario> {
 protected:
  // The figures of the whole program.
  static void TearDownTestSuite() {
    printf("%zu functions refused in %d ways, %d scenarios, %d runs with a refusal\n",
           RefusableFunctions().size(), TheRefusals().wayCount, s_scenarios, s_runs);
  }
  static inline int s_scenarios, s_runs;
};

TEST_P(Refusal, GivesTheDocumentedResultAndLosesNothing) {
  Aim(kNone, 0);
  for (int way : WaysIn(GetParam())) {
    s_runs += SweepOne(GetParam(), way) + SweepAllFromThere(GetParam(), way);
  }
  ++s_scenarios;
}

std::string NameOfScenario(const testing::TestParamInfo<Scenario>& info) { return info.param.name; }

INSTANTIATE_TEST_SUITE_P(Of, Refusal, testing::ValuesIn(AllScenarios()), NameOfScenario);

// ---- What the table has to hold

// Imports that cannot fail, as shell patterns.
const struct {
  const char* reason;
  std::vector<const char*> names;
} kNeverFail[] = {
    {"the compiler's and the runtime's own",
     {"_ITM_*", "_ZTV*", "__cxa_*", "__gmon_start__", "__stack_chk_fail*", "__udiv*", "__div*",
      "__umod*", "__mod*", "__asan_*", "__ubsan_*", "__ctype_*", "__errno_location"}},
    {"it works on memory that it is given",
     {"abs",    "memchr",  "memcmp",  "memcpy",  "memmove", "memset",  "strcat",  "strchr",
      "strcmp", "strcpy",  "strlen",  "strncmp", "strncpy", "strpbrk", "strrchr", "strstr",
      "strtol", "strtoul", "tolower", "toupper", "rand",    "srand",   "tzset"}},
    {"the library takes its address and does not call it", {"snprintf", "sprintf"}},
    {"the allocator's hooks stand before it, and other tests refuse there",
     {"malloc", "realloc", "free"}},
    {"it has no result", {"globfree"}},
    {"it tells of a block that is there", {"malloc_usable_size"}},
    {"it refuses only a key, thread, semaphore or type that does not exist",
     {"pthread_getspecific", "pthread_key_delete", "pthread_detach", "pthread_setcanceltype",
      "sem_init", "sem_post", "sem_destroy"}},
};

bool NeverFails(const std::string& import) {
  for (const auto& group : kNeverFail) {
    for (const char* name : group.names) {
      if (fnmatch(name, import.c_str(), 0) == 0) return true;
    }
  }
  return false;
}

// The compiler may call "__NAME_chk" for NAME.
std::string WithoutCheck(const std::string& import) {
  const bool checked = fnmatch("__*_chk", import.c_str(), 0) == 0;
  return checked ? import.substr(2, import.size() - 6) : import;
}

// What the built library takes from others.
std::set<std::string> Imports() {
  std::set<std::string> imports;
  FILE* const names = popen("nm --dynamic --undefined-only --just-symbols " KEST_TEST_LIBRARY, "r");
  if (names == nullptr) return imports;
  char line[512];
  while (fgets(line, sizeof(line), names) != nullptr) {
    imports.insert(WithoutCheck(std::string(line, strcspn(line, "@\n"))));
  }
  EXPECT_EQ(0, pclose(names));
  return imports;
}

TEST(RefusalTable, EveryImportIsRefusedOrNeverFails) {
  const std::set<std::string> imports = Imports(), refusable = RefusableFunctions();
  EXPECT_EQ(1u, imports.count("fopen")) << "the list cannot be right";
  for (const std::string& import : imports) {
    EXPECT_NE(refusable.count(import) != 0, NeverFails(import))
        << import << ": it needs a way to fail in refusals.cpp, or a reason why it never does here";
  }
  for (const std::string& function : refusable) {
    EXPECT_EQ(1u, imports.count(function)) << function << " is no import";
  }
}

TEST(RefusalTable, EveryWayIsTakenInSomeScenario) {
  std::set<int> taken;
  for (const Scenario& scenario : AllScenarios()) {
    for (int way : WaysIn(scenario)) taken.insert(way);
  }
  for (int way = 0; way < TheRefusals().wayCount; ++way) {
    EXPECT_EQ(1u, taken.count(way)) << NameOf(way);
  }
}

TEST(RefusalTable, EveryRowOfAScenarioIsOfACallThatItMakes) {
  for (const Scenario& scenario : AllScenarios()) {
    RunScenario(scenario, kNone, 0);
    std::set<std::string> made;
    for (int way = 0; way < TheRefusals().wayCount; ++way) {
      for (int call = TheRefusals().calls[way]; call > 0; --call) {
        for (const std::string& name : {std::string(WayAt(way).function), NameOf(way)}) {
          made.insert({name, name + " #" + std::to_string(call)});
        }
      }
    }
    for (const Documented& row : scenario.refused) {
      EXPECT_EQ(1u, made.count(row.refusal)) << scenario.name << ": " << row.refusal;
    }
  }
}

// ---- What has state for the life of the process

size_t CountFreeKeys() {
  std::vector<pthread_key_t> keys(1);
  while (pthread_key_create(&keys.back(), nullptr) == 0) keys.emplace_back();
  keys.pop_back();
  for (pthread_key_t key : keys) pthread_key_delete(key);
  return keys.size();
}

TEST(RefusedStart, UsesNothingUpHoweverOftenItFails) {
  TestAllocator allocator;
  const size_t freeKeys = CountFreeKeys();
  const std::vector<int> before = Holdings();
  for (const char* step : {"pthread_key_create", "pthread_mutex_init", "pthread_cond_init"}) {
    for (int i = 0; i < 2000; ++i) {
      Aim(WayOf(step), 1);
      ASSERT_EQ(0, Refusing([] { return KestInitialize(nullptr); })) << step;
    }
  }
  EXPECT_EQ(1, KestInitialize(nullptr));
  EXPECT_NE(nullptr, KestTlsAddData(5, 16));
  KestUninitialize();
  EXPECT_EQ(freeKeys, CountFreeKeys());
  EXPECT_EQ(before, Holdings());
  EXPECT_EQ(0, allocator.Live());
}

TEST(RefusedSystemInfo, IsAskedForAgain) {
  for (int i = 0; i < 3; ++i) {
    Aim(WayOf("uname"), 1);
    const KEST::SSystemInfo* const info = Refusing([] { return KestGetSystemInfo(); });
    EXPECT_EQ(0, info->name[0]);
    EXPECT_EQ(0, info->majorVersion);
  }
  EXPECT_NE(0, KestGetSystemInfo()->majorVersion);
}

}  // namespace
