// Every operation that asks for memory, with each of its requests refused: the result is the one
// that the headers promise, nothing leaks, and the same objects work afterwards.

#include "sweep/refused_memory.h"

#include <cxxabi.h>

#include <fstream>
#include <set>

using namespace kest_test;

namespace {

using Rows = std::vector<RefusedMemoryRow>;

// The text for mode: the part before "|" when later requests are granted, else the one behind it.
std::string Part(const std::string& said, TestAllocator::Mode mode) {
  const size_t bar = said.find('|');
  if (bar == std::string::npos) return said;
  return mode == TestAllocator::kOnlyOne ? said.substr(0, bar) : said.substr(bar + 1);
}

// The first of the requests to be refused is n. False when there were not that many.
bool Try(const RefusedMemoryRow& row, int n, TestAllocator::Mode mode) {
  SCOPED_TRACE(n);
  TestAllocator allocator;
  Attempts attempts(allocator, n, mode);
  row.run(attempts);
  EXPECT_EQ(0, allocator.Live()) << "leak";
  EXPECT_EQ(row.whole, attempts.second) << "when tried again";
  EXPECT_EQ(row.refused.empty(), attempts.requests == 0) << attempts.requests << " requests";
  if (!attempts.refused) {
    EXPECT_EQ(row.whole, attempts.first);
    return false;
  }
  if (row.refused.empty()) return false;
  const size_t at = std::min(static_cast<size_t>(n), row.refused.size()) - 1;
  EXPECT_EQ(Part(row.refused[at], mode), attempts.first);
  return true;
}

int Sweep(const Rows& rows) {
  int tries = 0;
  for (const RefusedMemoryRow& row : rows) {
    SCOPED_TRACE(row.symbols[0]);
    for (TestAllocator::Mode mode : {TestAllocator::kOnlyOne, TestAllocator::kFromThereOn}) {
      SCOPED_TRACE(mode == TestAllocator::kOnlyOne ? "only one" : "from there on");
      int n = 1;
      while (n < 1000 && Try(row, n, mode)) ++n;
      EXPECT_LT(n, 1000) << "the operation never completes";
      tries += n;
    }
  }
  return tries;
}

// What the deep run counts.
void SweepAndRecord(const Rows& rows) {
  testing::Test::RecordProperty("operations", static_cast<int>(rows.size()));
  testing::Test::RecordProperty("tries", Sweep(rows));
}

TEST(RefusedMemory, Frame) { SweepAndRecord(FrameRows()); }
TEST(RefusedMemory, String) { SweepAndRecord(StringRows()); }
TEST(RefusedMemory, Text) { SweepAndRecord(TextRows()); }
TEST(RefusedMemory, Collections) { SweepAndRecord(CollectionRows()); }
TEST(RefusedMemory, Crypto) { SweepAndRecord(CryptoRows()); }
TEST(RefusedMemory, File) { SweepAndRecord(FileRows()); }
TEST(RefusedMemory, Thread) { SweepAndRecord(ThreadRows()); }
TEST(RefusedMemory, Message) { SweepAndRecord(MessageRows()); }

std::string Readable(const std::string& symbol) {
  char* name = abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, nullptr);
  const std::string readable = name != nullptr ? name : symbol;
  free(name);
  return readable;
}

std::set<std::string> Lines(const char* path) {
  std::ifstream file(path);
  EXPECT_TRUE(file.is_open()) << path;
  std::set<std::string> lines;
  for (std::string line; std::getline(file, line);) {
    if (!line.empty() && line[0] != '#') lines.insert(line);
  }
  return lines;
}

// A new export is in one of the two lists, or this fails. The names are those of the 32-bit target
// in every build.
TEST(RefusedMemory, EveryExportHasARowOrIsListedAsNeverAsking) {
  std::set<std::string> exported;
  for (const std::string& symbol : Lines(KEST_TEST_SYMBOLS)) {
    // Vtables and type information are no operations.
    if (symbol.compare(0, 3, "_ZT") != 0) exported.insert(Readable(symbol));
  }
  const std::set<std::string> neverAsking = Lines(KEST_TEST_NEVER_ASKING);
  std::set<std::string> covered = neverAsking;
  for (const Rows& rows : {FrameRows(), StringRows(), TextRows(), CollectionRows(), CryptoRows(),
                           FileRows(), ThreadRows(), MessageRows()}) {
    for (const RefusedMemoryRow& row : rows) {
      for (const std::string& symbol : row.symbols) {
        EXPECT_EQ(0u, neverAsking.count(symbol)) << symbol << " is in both";
        if (symbol.compare(0, 7, "inline ") != 0) covered.insert(symbol);
      }
    }
  }
  for (const std::string& name : exported) EXPECT_EQ(1u, covered.count(name)) << name << " is new";
  for (const std::string& name : covered) EXPECT_EQ(1u, exported.count(name)) << name << " is gone";
}

}  // namespace
