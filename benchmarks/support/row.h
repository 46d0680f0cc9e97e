// How a benchmark program says what it compares.
//
// A program holds the rows of one subject. In each row Kest and its peers do the same work:
//
//   void RegisterRows() {
//     Row("ucslen 16,384 units", "kest", [](benchmark::State& state) {
//       for (auto _ : state) benchmark::DoNotOptimize(KEST::ucslen(text));
//     });
//     Row("ucslen 16,384 units", "qt", ...);
//   }
//
// The row's ratio is Kest's median time over the smallest median of the others, so a loop body must
// be the same amount of work for each. Goals are in SUBJECT.goals, a line a row, with tabs between:
// row, goal, stretch goal or -, remark or nothing.

#ifndef KEST_BENCHMARKS_SUPPORT_ROW_H
#define KEST_BENCHMARKS_SUPPORT_ROW_H

#include <benchmark/benchmark.h>

#include <string>
#include <utility>

// Defined by each program; called once.
void RegisterRows();

// who is "kest" or a peer's name; neither name holds a slash. Returns what further settings are
// made on: ->UseRealTime() for work that waits or runs on several threads.
template <typename Function>
benchmark::internal::Benchmark* Row(const std::string& row, const std::string& who,
                                    Function&& function) {
  return benchmark::RegisterBenchmark((row + "/" + who).c_str(), std::forward<Function>(function));
}

#endif  // KEST_BENCHMARKS_SUPPORT_ROW_H
