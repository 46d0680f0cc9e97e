// Random numbers for differential tests: the same in every run and on every target, unless the
// environment variable KEST_TEST_SEED asks for another sequence.

#ifndef KEST_TESTS_SUPPORT_RANDOM_H
#define KEST_TESTS_SUPPORT_RANDOM_H

#include <stdlib.h>

#include <string>
#include <vector>

namespace kest_test {

class Random {
 public:
  Random() {
    const char* seed = getenv("KEST_TEST_SEED");
    m_seed = m_state = seed != nullptr ? strtoull(seed, nullptr, 0) : 1;
  }

  // For SCOPED_TRACE, so that a failure says how to repeat it.
  std::string Seed() const { return "KEST_TEST_SEED=" + std::to_string(m_seed); }

  // SplitMix64.
  unsigned int Next() {
    m_state += 0x9e3779b97f4a7c15;
    unsigned long long z = m_state;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9;
    z = (z ^ (z >> 27)) * 0x94d049bb133111eb;
    return static_cast<unsigned int>((z ^ (z >> 31)) >> 32);
  }

  // low to high, both included.
  int Between(int low, int high) {
    const unsigned int span = static_cast<unsigned int>(high) - static_cast<unsigned int>(low) + 1;
    return static_cast<int>(static_cast<unsigned int>(low) + (span != 0 ? Next() % span : Next()));
  }

  // How many random cases a differential test runs: usual, or what the environment variable
  // KEST_TEST_CASES asks for in a longer run.
  static int Cases(int usual = 10000) {
    const char* cases = getenv("KEST_TEST_CASES");
    return cases != nullptr ? atoi(cases) : usual;
  }

  std::vector<unsigned char> Bytes(int count) {
    std::vector<unsigned char> bytes(static_cast<size_t>(count));
    for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(Next());
    return bytes;
  }

 private:
  unsigned long long m_seed, m_state;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SUPPORT_RANDOM_H
