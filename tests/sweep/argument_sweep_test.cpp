// Runs the tables, and compares their rows with what the library exports.

#include "sweep/argument_sweep.h"

#include <cxxabi.h>
#include <dlfcn.h>
#include <link.h>
#include <signal.h>
#include <stdlib.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <regex>
#include <set>

namespace kest_test {

namespace {

const char* s_function = "";
std::string s_call;
int s_calls = 0;
TestAllocator* s_allocator = nullptr;

// What a call may die of, and who handled it before: the sanitizers do.
constexpr int kDeaths[] = {SIGSEGV, SIGBUS, SIGFPE, SIGABRT};
struct sigaction s_before[NSIG];

// Says which call it was, and leaves the rest to the handler before.
void NameTheCall(int signal) {
  const ssize_t written = write(STDERR_FILENO, s_call.data(), s_call.size());
  sigaction(signal, written < 0 ? nullptr : &s_before[signal], nullptr);
}

}  // namespace

void Current::Start(const char* function) { s_function = function; }

void Current::Called(const Values& arguments) {
  s_call = s_function;
  s_call += " at";
  for (long long argument : arguments) s_call += " " + std::to_string(argument);
  s_call += "\n";
  ++s_calls;
}

void Current::LeftOut() { --s_calls; }
const char* Current::Call() { return s_call.c_str(); }
TestAllocator*& Current::Allocator() { return s_allocator; }

std::vector<const Table*>& Table::All() {
  static std::vector<const Table*> tables;
  return tables;
}

void Table::Run() const {
  struct sigaction action = {};
  action.sa_handler = NameTheCall;
  for (int death : kDeaths) sigaction(death, &action, &s_before[death]);
  const int callsBefore = s_calls;
  for (const SRow& row : rows) {
    Current::Start(row.function);
    TestAllocator allocator;
    allocator.RefuseAbove(kLargestBlock);
    s_allocator = &allocator;
    ASSERT_EQ(1, KestInitialize(nullptr));
    row.sweep();
    KestUninitialize();
    EXPECT_EQ(0, allocator.Live()) << row.function << " leaves blocks behind";
  }
  testing::Test::RecordProperty("rows", static_cast<int>(rows.size()));
  testing::Test::RecordProperty("calls", s_calls - callsBefore);
}

namespace {

// C functions, whose names do not say that they take nothing, and functions that take nothing but
// handles and places for results, which must not be null.
const std::set<std::string> kExempt = {
    "KestDebugBreak",
    "KestDispatchMessages",
    "KestGetMessage",
    "KestGetMicroseconds",
    "KestGetMicroseconds64",
    "KestGetMilliseconds",
    "KestGetSystemInfo",
    "KestGetVersion",
    "KestMemGetTotalSize",
    "KestMessageLoop",
    "KestRequestMessageId",
    "KestUninitialize",
    "SharedLibTerm",

    "KEST::TFile::FileClose(void*)",
    "KEST::TFile::FileFlush(void*)",
    "KEST::TFile::FileGetLength(void*)",
    "KEST::TFile::FileGetPosition(void*)",
    "KEST::TFileFinder::FileFinderFindNext(void*, KEST::TFileInfo&)",
    "KEST::TLibrary::LibraryFree(void*)",
    "KEST::TLibrary::LibraryGetProcAddress(void*, KEST::TBstr const&)",
    "KEST::TThread::ThreadCancel(void*)",
    "KEST::TThread::ThreadClose(void*)",
    "KEST::TThread::ThreadProc(void*)",
    "KEST::TThread::ThreadResume(void*)",
    "KEST::TThread::ThreadSuspend(void*)",
    "KEST::TThread::ThreadWaitForExit(void*, int*)",
    "KEST::_ThreadProc(void*)",
    "KEST::InternalMessageLoop(void*)",
    "KEST::TPtrFromBstrMap::FreeAssoc(KEST::TPtrFromBstrMap::SAssoc*)",
    "KEST::TPtrFromGuidMap::FreeAssoc(KEST::TPtrFromGuidMap::SAssoc*)",
    "KEST::TPtrFromPtrMap::FreeAssoc(KEST::TPtrFromPtrMap::SAssoc*)",
    // Private.
    "KEST::TPtrList::FreeNode(KEST::TPtrList::SNode*)",
    "KEST::TPtrList::NewNode(KEST::TPtrList::SNode*, KEST::TPtrList::SNode*)",
};

// Variables, tables of virtual functions, type information.
bool IsData(const std::string& symbol) {
  static void* const library = dlopen("libKest.so.1", RTLD_LAZY | RTLD_NOLOAD);
  const ElfW(Sym)* entry = nullptr;
  Dl_info info;
  return dladdr1(dlsym(library, symbol.c_str()), &info,
                 const_cast<void**>(reinterpret_cast<const void**>(&entry)), RTLD_DL_SYMENT) != 0 &&
         entry != nullptr && ELF32_ST_TYPE(entry->st_info) == STT_OBJECT;
}

// A function with a number, a bool or a pointer among its parameters, as far as its name tells:
// that of a C function does not.
bool MayNeedSweep(const std::string& name) {
  static const std::regex kSwept(
      ".*\\(.*(\\*|\\b(char|short|int|long|bool|EC[a-zA-Z]+)\\b).*\\).*");
  return name.find('(') == std::string::npos || std::regex_match(name, kSwept);
}

std::string Demangled(const std::string& symbol) {
  int status = 0;
  const std::unique_ptr<char, decltype(&free)> name(
      abi::__cxa_demangle(symbol.c_str(), nullptr, nullptr, &status), free);
  return status == 0 ? name.get() : symbol;
}

TEST(ArgumentSweep, EveryExportedFunctionHasARow) {
  std::set<std::string> rows;
  for (const Table* table : Table::All()) {
    for (const Table::SRow& row : table->Rows()) {
      EXPECT_TRUE(rows.insert(row.function).second) << row.function << " has two rows";
    }
  }
  std::ifstream symbols(KEST_SYMBOLS);
  std::string symbol;
  std::set<std::string> exported;
  while (std::getline(symbols, symbol)) {
    if (symbol.empty() || symbol[0] == '#') continue;
    const std::string name = Demangled(symbol);
    exported.insert(name);
    if (!IsData(symbol) && MayNeedSweep(name) && kExempt.count(name) == 0) {
      EXPECT_EQ(1u, rows.count(name)) << "no row for " << name;
    }
  }
  EXPECT_LT(500u, exported.size());
  for (const std::string& row : rows) {
    if (row.rfind("inline ", 0) == 0) continue;
    EXPECT_EQ(1u, exported.count(row)) << row << " is not exported";
  }
  for (const std::string& name : kExempt) EXPECT_EQ(1u, exported.count(name)) << name;
}

}  // namespace

}  // namespace kest_test
