// What the library believes of the processor, beside what the kernel says of it.

#include "cpu/level.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "cpu/dispatch.h"

namespace {

// The flags of the first processor.
std::set<std::string> KernelFlags() {
  std::ifstream file("/proc/cpuinfo");
  std::string line;
  while (std::getline(file, line) && line.compare(0, 5, "flags") != 0) {
  }
  std::istringstream words(line);
  return {std::istream_iterator<std::string>(words), std::istream_iterator<std::string>()};
}

bool HasAll(const std::set<std::string>& flags, const std::vector<std::string>& names) {
  for (const std::string& name : names) {
    if (flags.count(name) == 0) return false;
  }
  return true;
}

TEST(CpuLevel, IsWhatTheKernelSays) {
  const std::set<std::string> flags = KernelFlags();
  ASSERT_TRUE(HasAll(flags, {"fpu"})) << "no flags in /proc/cpuinfo";
  const std::vector<std::vector<std::string>> needed = {
      {"sse2"},
      {"ssse3"},
      {"avx", "avx2", "bmi1", "bmi2", "abm", "popcnt"},
      {"avx512f", "avx512bw", "avx512dq", "avx512vl", "avx512vbmi", "avx512_vbmi2", "avx512ifma"}};
  size_t level = 0;
  while (level < needed.size() && HasAll(flags, needed[level])) ++level;
  EXPECT_EQ(level, static_cast<size_t>(KEST::CpuLevel()));
  EXPECT_EQ(HasAll(flags, {"sha_ni", "ssse3", "sse4_1"}), KEST::CpuHasSha());
}

int Plain(int number) { return number; }
int Better(int number) { return number + 1; }
int WithSha(int number) { return number + 2; }

constexpr KEST::SVersions<int(int)> kPlainOnly = {Plain};
constexpr KEST::SVersions<int(int)> kEachBetter = {Plain, Better, Better, Better, Better};
constexpr KEST::SVersions<int(int)> kSha = {Plain, nullptr, nullptr, nullptr, nullptr, WithSha};

TEST(Dispatch, TakesTheNearestVersionBelow) {
  constexpr KEST::TDispatch<kPlainOnly> plainOnly;
  EXPECT_EQ(5, plainOnly(5));
  EXPECT_EQ(6, plainOnly(6));
}

TEST(Dispatch, TakesTheVersionOfTheMachinesLevel) {
  constexpr KEST::TDispatch<kEachBetter> eachBetter;
  const int best = KEST::CpuLevel() == KEST::kCpuPlain ? 5 : 6;
  EXPECT_EQ(best, eachBetter(5));
  EXPECT_EQ(best, eachBetter(5));
}

TEST(Dispatch, TakesAVersionForTheShaInstructionsBeforeAllOthers) {
  constexpr KEST::TDispatch<kSha> sha;
  EXPECT_EQ(KEST::CpuHasSha() ? 7 : 5, sha(5));
}

}  // namespace
