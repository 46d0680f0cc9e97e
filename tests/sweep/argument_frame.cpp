// kest/frame.h at the edges of its arguments.

#include <dlfcn.h>
#include <string.h>

#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

// What a block of that size holds is the caller's, to the last byte.
void ExpectBlock(void* block, unsigned int size) {
  EXPECT_EQ(size <= kLargestBlock, block != nullptr);
  ExpectRequested(size);
  if (block != nullptr) memset(block, 0xEE, size);
  KestMemFree(block);
}

// One of the library's operators: this program's own are those of the standard library. Null where
// the library was built without them.
template <typename Function>
Function Operator(const char* in32Bit, const char* in64Bit) {
  void* library = dlopen("libKest.so.1", RTLD_LAZY | RTLD_NOLOAD);
  void* found = dlsym(library, sizeof(size_t) == 4 ? in32Bit : in64Bit);
  Dl_info owner = {}, own = {};
  dladdr(found, &owner);
  dladdr(dlsym(library, "KestGetVersion"), &own);
  dlclose(library);
  return owner.dli_fbase == own.dli_fbase ? reinterpret_cast<Function>(found) : nullptr;
}

Sweep News(const char* in32Bit, const char* in64Bit) {
  return Over(Around(kLargestBlock), [=](size_t size) {
    const auto allocate = Operator<void* (*)(size_t)>(in32Bit, in64Bit);
    if (allocate == nullptr) return LeaveOut();
    void* block = allocate(size);
    EXPECT_EQ(size <= kLargestBlock, block != nullptr);
    if (size <= UINT_MAX) {
      ExpectRequested(size);
    }
    KestMemFree(block);
  });
}

// The size is not looked at, and null is ignored.
Sweep Deletes(const char* in32Bit, const char* in64Bit) {
  return Over([=](bool given, size_t size) {
    const auto release = Operator<void (*)(void*, size_t)>(in32Bit, in64Bit);
    if (release == nullptr) return LeaveOut();
    release(given ? KestMemAlloc(5) : nullptr, size);
  });
}

void* Alloc(unsigned int size) { return malloc(size); }
void* Realloc(void* block, unsigned int size) { return realloc(block, size); }
void Free(void* block) { free(block); }

void UseSweepHooks() {
  SAllocator hooks = Current::Allocator()->Hooks();
  MemInit(&hooks);
}

// A record with a null hook is ignored as a whole: the sweep's own hooks stay.
template <typename Install, typename Remove>
Sweep Hooks(Install install, Remove remove) {
  return Over([=](bool given, bool alloc, bool reallocate, bool release) {
    UseSweepHooks();
    SAllocator hooks = {alloc ? Alloc : nullptr, reallocate ? Realloc : nullptr,
                        release ? Free : nullptr};
    const int requests = Current::Allocator()->Requests();
    EXPECT_TRUE(install(given ? &hooks : nullptr));
    void* block = KestMemAlloc(8);
    EXPECT_NE(nullptr, block);
    const bool replaced = given && alloc && reallocate && release;
    EXPECT_EQ(replaced, requests == Current::Allocator()->Requests());
    KestMemFree(block);
    remove();
    UseSweepHooks();
  });
}

void AddFrameRows(Table& table) {
  table.Row("KestInitialize", [] {
    // The start that looks at the hooks is the first one. In the end the library runs as before.
    KestUninitialize();
    Hooks([](SAllocator* hooks) { return KestInitialize(hooks) == 1; }, KestUninitialize)();
    EXPECT_EQ(1, KestInitialize(nullptr));
  });
  table.Row("KEST::MemInit(KEST::SAllocator*)", Hooks(MemInit, MemTerm));
  table.Row("KEST::ModuleInit(void*)", [](bool given) {
    EXPECT_TRUE(ModuleInit(given ? &given : nullptr));
    EXPECT_EQ(nullptr, ModuleGetInstance());
  });
  table.Row("SharedLibInit", [](bool given) {
    EXPECT_TRUE(SharedLibInit(AbcBytes(given)));
    EXPECT_EQ(Given(given), TextOf(ModuleGetFileSpec()));
    SharedLibTerm();
  });
  table.Row("KestMemAlloc", Around(kLargestBlock),
            [](unsigned int size) { ExpectBlock(KestMemAlloc(size), size); });
  table.Row("KestMemDebugAlloc", Around(kLargestBlock), [](unsigned int size, int line) {
    ExpectBlock(KestMemDebugAlloc(size, "file", line), size);
  });
  table.Row("KestMemRealloc", Around(8, kLargestBlock), [](bool given, unsigned int size) {
    // realloc to 0 is the C library's own affair.
    if (size == 0) return LeaveOut();
    void* block = given ? KestMemAlloc(8) : nullptr;
    void* moved = KestMemRealloc(block, size);
    if (moved == nullptr) KestMemFree(block);
    ExpectBlock(moved, size);
  });
  table.Row("KestMemDebugRealloc", Around(8, kLargestBlock),
            [](bool given, unsigned int size, int line) {
              if (size == 0) return LeaveOut();  // as above
              void* block = given ? KestMemAlloc(8) : nullptr;
              void* moved = KestMemDebugRealloc(block, size, "file", line);
              if (moved == nullptr) KestMemFree(block);
              ExpectBlock(moved, size);
            });
  table.Row("KestMemFree", [] { KestMemFree(nullptr); });
  table.Row("operator new(unsigned int)", News("_Znwj", "_Znwm"));
  table.Row("operator new[](unsigned int)", News("_Znaj", "_Znam"));
  table.Row("operator delete(void*)", Deletes("_ZdlPv", "_ZdlPv"));
  table.Row("operator delete[](void*)", Deletes("_ZdaPv", "_ZdaPv"));
  table.Row("operator delete(void*, unsigned int)", Deletes("_ZdlPvj", "_ZdlPvm"));
  table.Row("operator delete[](void*, unsigned int)", Deletes("_ZdaPvj", "_ZdaPvm"));

  // The debugging entry points read no argument.
  table.Row("KestSetAssertProc", [] { KestSetAssertProc(nullptr); });
  table.Row("KestSetDebugStringProc", [] { KestSetDebugStringProc(nullptr); });
  table.Row("KestAssert", [](bool expression, bool file, int line) {
    KestAssert(AbcBytes(expression), AbcBytes(file), line);
  });
  table.Row("KestTrace", [](bool format, int value) { KestTrace(AbcBytes(format), value); });
  table.Row("KestTraceEx",
            [](unsigned int category, bool format) { KestTraceEx(category, AbcBytes(format)); });
  table.Row("KestDumpMem", Around(kLength + 1),
            [](bool given, unsigned int size) { KestDumpMem(AbcBytes(given), size); });
  table.Row("KestIsValidAddress",
            [](bool given) { EXPECT_EQ(1, KestIsValidAddress(AbcBytes(given))); });
  table.Row("KestGetDebugSetting", [](bool given, int defaultValue) {
    EXPECT_EQ(defaultValue, KestGetDebugSetting(AbcBytes(given), defaultValue));
  });
}

const Table kFrame(AddFrameRows);

TEST(ArgumentSweep, Frame) { kFrame.Run(); }

}  // namespace

}  // namespace kest_test
