// The table of every operation that asks for memory, and how one of them is tried: with its n-th
// request refused, and once more without.

#ifndef KEST_TESTS_SWEEP_REFUSED_MEMORY_H
#define KEST_TESTS_SWEEP_REFUSED_MEMORY_H

#include <functional>
#include <string>
#include <type_traits>
#include <vector>

#include "support/test_allocator.h"
#include "support/text.h"

namespace kest_test {

// What an operation came to, as text: Said(true, text) is "true abc".
inline std::string Said(const char* text) { return text; }
inline std::string Said(bool value) { return value ? "true" : "false"; }
inline std::string Said(int value) { return std::to_string(value); }
inline std::string Said(const void* pointer) { return pointer != nullptr ? "there" : "null"; }
inline std::string Said(const unsigned short* text) {
  std::string bytes;
  for (; *text != 0; ++text) bytes += static_cast<char>(*text);
  return bytes;
}
inline std::string Said(const KEST::TBstr& text) { return Said(text.GetString()); }
template <typename First, typename Second, typename... Rest>
std::string Said(const First& first, const Second& second, const Rest&... rest) {
  return Said(first) + " " + Said(second, rest...);
}

// One try: which of the operation's requests is refused, and what came of it.
class Attempts {
 public:
  Attempts(TestAllocator& a, int number, TestAllocator::Mode how)
      : allocator(a), n(number), mode(how) {}

  // prepare brings the objects to the state from which operate starts, whatever an earlier attempt
  // left. Both run twice: what was refused once has to work afterwards, on the same objects.
  template <typename Prepare, typename Operate>
  void operator()(Prepare prepare, Operate operate) {
    prepare();
    const int before = allocator.Requests();
    allocator.Refuse(n, mode);
    first = operate();
    allocator.RefuseNone();
    requests = allocator.Requests() - before;
    refused = allocator.Refused() != 0;
    prepare();
    second = operate();
  }
  template <typename Operate>
  void operator()(Operate operate) {
    (*this)([] {}, operate);
  }

  TestAllocator& allocator;
  const int n;
  const TestAllocator::Mode mode;
  std::string first, second;
  int requests = 0;
  bool refused = false;
};

// For a row's run: an operation on a string that holds before. Says its result, if it has one, and
// the string.
template <typename Operation>
auto OnString(const unsigned short* before, Operation operation) {
  return [before, operation](Attempts& attempts) {
    KEST::TBstr text;
    attempts([&] { text.Assign(before); },
             [&] {
               if constexpr (std::is_void_v<decltype(operation(text))>) {
                 operation(text);
                 return Said(text);
               } else {
                 const auto result = operation(text);
                 return Said(result, text);
               }
             });
  };
}

// One operation. The first symbol names it, as it stands in the list of exports but readable; the
// others are what it goes through. "inline ..." is what the headers define and nothing exports.
struct RefusedMemoryRow {
  std::vector<std::string> symbols;

  // What it says when it gets its memory, and when request 1, 2, ... is refused; the last one
  // stands for all further requests. An operation that must ask for nothing has none. Where a later
  // request changes the result again, "|" separates what is said when that one is granted and when
  // it is refused as well.
  std::string whole;
  std::vector<std::string> refused;

  std::function<void(Attempts&)> run;
};

// In files of their own, by header.
std::vector<RefusedMemoryRow> FrameRows();
std::vector<RefusedMemoryRow> StringRows();
std::vector<RefusedMemoryRow> TextRows();
std::vector<RefusedMemoryRow> CollectionRows();
std::vector<RefusedMemoryRow> CryptoRows();
std::vector<RefusedMemoryRow> FileRows();
std::vector<RefusedMemoryRow> ThreadRows();
std::vector<RefusedMemoryRow> MessageRows();

}  // namespace kest_test

#endif  // KEST_TESTS_SWEEP_REFUSED_MEMORY_H
