// What the scenarios are made of: an operation of the library with a call of the system refused in
// the middle, and what is documented to come of it.

#ifndef KEST_TESTS_PLATFORM_SCENARIO_H
#define KEST_TESTS_PLATFORM_SCENARIO_H

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <ostream>
#include <sstream>
#include <string>
#include <vector>

#include "platform/refusals.h"

namespace kest_test {

// The preload library's, which this program is never linked to.
inline Refusals& TheRefusals() {
  static Refusals* const found = static_cast<Refusals*>(dlsym(RTLD_DEFAULT, "kest_test_refusals"));
  return *found;
}

// No way: nothing is refused.
constexpr int kNone = -1;

// The call-th call of the way's function is to fail, alone or with all that follow.
inline void Aim(int way, int call, bool allFromThere = false) {
  Refusals& refusals = TheRefusals();
  refusals.way = way;
  refusals.call = call;
  refusals.allFromThere = allFromThere;
  refusals.refused = 0;
  for (std::atomic<int>& calls : refusals.calls) calls = 0;
}

// The first way of a function.
inline int WayOf(const std::string& function) {
  int way = 0;
  while (function != TheRefusals().ways[way].function) ++way;
  return way;
}

// How often the function has been called since.
inline int CallsOf(const std::string& function) { return TheRefusals().calls[WayOf(function)]; }

// Runs operation, in which calls are refused. Before and afterwards they are not.
template <typename Operation>
auto Refusing(Operation operation) {
  struct Switch {
    Switch() { TheRefusals().on = true; }
    ~Switch() { TheRefusals().on = false; }
  } on;
  return operation();
}

// The values with spaces between.
template <typename... Values>
std::string Say(const Values&... values) {
  std::ostringstream text;
  const char* separator = "";
  ((text << std::boolalpha << separator << values, separator = " "), ...);
  return text.str();
}

// What a scenario gives when calls of a function are refused: "fread" means all its ways and
// calls, "fread short" one way, "ftell #2" the second call alone. The most exact one counts.
struct Documented {
  std::string refusal;
  std::string result;
};

// Instead of a result: these calls are not refused here, because they go to a plain mutex or
// condition of the library's own, and none of those refuses anything.
inline const char kPlainMutex[] = "(a plain mutex)";

struct Scenario {
  const char* name;
  std::string (*run)();   // leaves nothing behind, and tries the same once more before it ends
  std::string completes;  // its result when nothing is refused
  std::vector<Documented> refused;
};

inline void PrintTo(const Scenario& scenario, std::ostream* out) { *out << scenario.name; }

// The tables.
std::vector<Scenario> FileScenarios();
std::vector<Scenario> ModuleScenarios();
std::vector<Scenario> ThreadScenarios();
std::vector<Scenario> SystemScenarios();

}  // namespace kest_test

#endif  // KEST_TESTS_PLATFORM_SCENARIO_H
