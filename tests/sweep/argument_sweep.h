// Every function of the library at the edges of its arguments.
//
// A table has a row for each function: its name as the demangler writes it, and its sweep, which is
// a lambda of the swept arguments, called once for every combination of their edges. It makes the
// call, and checks the result that is documented for these values and that the object still works.
// Buffers are GuardedBlocks of exactly the size that the contract asks for; where a size is only a
// limit, they have no more than what the call may touch. A combination that no caller could
// honestly pass is left out, with a comment.
//
// Each row runs with the library started, on an allocator that refuses single blocks above
// kLargestBlock, and gives back all that it took.

#ifndef KEST_TESTS_SWEEP_ARGUMENT_SWEEP_H
#define KEST_TESTS_SWEEP_ARGUMENT_SWEEP_H

#include <gtest/gtest.h>
#include <limits.h>

#include <algorithm>
#include <functional>
#include <limits>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "kest/kest.h"
#include "support/guarded_block.h"
#include "support/test_allocator.h"
#include "support/text.h"

namespace kest_test {

using Values = std::vector<long long>;

constexpr unsigned int kLargestBlock = 1u << 20;

// Where an argument of type T may go wrong: the edges of 32 bits as T takes them, those of T, and
// around every capacity. Both values of a bool.
template <typename T>
std::vector<T> Edges(const Values& capacities) {
  Values edges = {0,
                  1,
                  -1,
                  INT_MIN,
                  INT_MAX,
                  1ll << 30,
                  1ll << 31,
                  UINT_MAX,
                  std::numeric_limits<T>::min(),
                  static_cast<long long>(std::numeric_limits<T>::max())};
  for (long long capacity : capacities) {
    edges.insert(edges.end(), {capacity - 1, capacity, capacity + 1});
  }
  std::vector<T> values;
  for (long long edge : edges) {
    const T value = static_cast<T>(edge);
    if (std::find(values.begin(), values.end(), value) == values.end()) values.push_back(value);
  }
  return values;
}

// The row that is running, and its call: for messages and figures.
class Current {
 public:
  static void Start(const char* function);
  static void Called(const Values& arguments);
  // Says that the call was not made.
  static void LeftOut();
  static const char* Call();
  static TestAllocator*& Allocator();
};

// For a combination that no caller could honestly pass.
inline void LeaveOut() { Current::LeftOut(); }

// The latest request to the allocator was for this number of bytes.
inline void ExpectRequested(unsigned long long bytes) {
  EXPECT_EQ(bytes, Current::Allocator()->LastSize());
}

// Calls a lambda with parameters of the types A.
template <typename F, typename... A>
class TCaller {
 public:
  explicit TCaller(F function) : call(std::move(function)) {}

  // Every combination of the edges of all arguments.
  void All(const Values& capacities) const {
    Each({Edges<A>(capacities)...}, std::index_sequence_for<A...>());
  }

  // Every combination of the edges of two arguments, each of the others at its honest value.
  void Pairs(const Values& honest) const { Pairs(honest, std::index_sequence_for<A...>()); }

 private:
  template <size_t... I>
  void Pairs(const Values& honest, std::index_sequence<I...> all) const {
    for (size_t one = 0; one < honest.size(); ++one) {
      for (size_t other = 0; other < one; ++other) {
        Each({(I == one || I == other ? Edges<A>({honest[I]})
                                      : std::vector<A>{static_cast<A>(honest[I])})...},
             all);
      }
    }
  }
  template <size_t... I>
  void Each(const std::tuple<std::vector<A>...>& values, std::index_sequence<I...>) const {
    const size_t counts[] = {std::get<I>(values).size()..., 1};
    size_t steps[sizeof...(A) + 1] = {1};
    for (size_t i = 0; i < sizeof...(A); ++i) steps[i + 1] = steps[i] * counts[i];
    for (size_t n = 0; n < steps[sizeof...(A)]; ++n) {
      Once(std::get<I>(values)[n / steps[I] % counts[I]]...);
    }
  }
  void Once(A... arguments) const {
    Current::Called({static_cast<long long>(arguments)...});
    SCOPED_TRACE(Current::Call());
    call(arguments...);
  }

  F call;
};

template <typename F, typename... A>
TCaller<F, A...> CallerOf(F call, void (F::*)(A...) const) {
  return TCaller<F, A...>(std::move(call));
}

using Sweep = std::function<void()>;

// Capacities, and the honest values of all arguments.
template <typename... N>
Values Around(N... capacities) {
  return {static_cast<long long>(capacities)...};
}
template <typename... N>
Values Honest(N... arguments) {
  return {static_cast<long long>(arguments)...};
}

// Sweeps all arguments of a lambda together, with the capacities of a buffer or object among them.
template <typename F>
Sweep Over(const Values& capacities, F call) {
  return [=] { CallerOf(call, &F::operator()).All(capacities); };
}
template <typename F>
Sweep Over(F call) {
  return Over(Around(), call);
}

// The rows of one header.
class Table {
 public:
  struct SRow {
    const char* function;
    Sweep sweep;
  };

  explicit Table(void (*addRows)(Table&)) {
    addRows(*this);
    All().push_back(this);
  }
  Table(const Table&) = delete;
  Table& operator=(const Table&) = delete;

  void Row(const char* function, Sweep sweep) { rows.push_back({function, std::move(sweep)}); }
  template <typename F>
  void Row(const char* function, F call) {
    Row(function, Over(call));
  }
  template <typename F>
  void Row(const char* function, const Values& capacities, F call) {
    Row(function, Over(capacities, call));
  }

  // A row whose arguments are swept by two: for functions of many.
  template <typename F>
  void Pairs(const char* function, const Values& honest, F call) {
    Row(function, Sweep([=] { CallerOf(call, &F::operator()).Pairs(honest); }));
  }

  void Run() const;
  const std::vector<SRow>& Rows() const { return rows; }

  static std::vector<const Table*>& All();

 private:
  std::vector<SRow> rows;
};

}  // namespace kest_test

#endif  // KEST_TESTS_SWEEP_ARGUMENT_SWEEP_H
