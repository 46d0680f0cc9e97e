// The operators that the library exports, fetched from the library itself: this program's own are
// those of the standard library.

#include <dlfcn.h>
#include <stdint.h>

#include "support/test_allocator.h"

namespace {

// The mangled names differ in the letter of size_t.
#define KEST_SIZE_LETTER(in32Bit, in64Bit) (sizeof(size_t) == 4 ? in32Bit : in64Bit)

class OperatorNew : public testing::Test {
 protected:
  void SetUp() override {
    library = dlopen("libKest.so.1", RTLD_LAZY | RTLD_NOLOAD);
    ASSERT_NE(nullptr, library);
    if (!Exports("_ZdlPv")) GTEST_SKIP() << "built with KEST_EXPORT_NEW off";
  }
  void TearDown() override {
    if (library != nullptr) dlclose(library);
  }

  // dlsym searches the library's dependencies too, so the owner is compared.
  bool Exports(const char* name) {
    void* symbol = dlsym(library, name);
    Dl_info symbolOwner = {}, libraryOwner = {};
    return symbol != nullptr && dladdr(symbol, &symbolOwner) != 0 &&
           dladdr(reinterpret_cast<void*>(dlsym(library, "KestGetVersion")), &libraryOwner) != 0 &&
           symbolOwner.dli_fbase == libraryOwner.dli_fbase;
  }
  template <typename Function>
  Function Get(const char* name) {
    EXPECT_TRUE(Exports(name)) << name;
    return reinterpret_cast<Function>(dlsym(library, name));
  }

  using New = void* (*)(size_t);
  using Delete = void (*)(void*);
  using SizedDelete = void (*)(void*, size_t);
  void* library = nullptr;
};

TEST_F(OperatorNew, TakesFromTheHooksAndGivesBackToThem) {
  const New news[] = {Get<New>(KEST_SIZE_LETTER("_Znwj", "_Znwm")),
                      Get<New>(KEST_SIZE_LETTER("_Znaj", "_Znam"))};
  const Delete deletes[] = {Get<Delete>("_ZdlPv"), Get<Delete>("_ZdaPv")};
  const SizedDelete sized[] = {Get<SizedDelete>(KEST_SIZE_LETTER("_ZdlPvj", "_ZdlPvm")),
                               Get<SizedDelete>(KEST_SIZE_LETTER("_ZdaPvj", "_ZdaPvm"))};
  kest_test::TestAllocator allocator;
  for (int i = 0; i < 2; ++i) {
    SCOPED_TRACE(i == 0 ? "plain" : "array");
    void* block = news[i](40);
    EXPECT_EQ(40u, allocator.LastSize());
    EXPECT_EQ(1, allocator.Live());
    deletes[i](block);
    EXPECT_EQ(0, allocator.Live());
    block = news[i](0);
    EXPECT_EQ(0u, allocator.LastSize()) << "the size is passed on as it is";
    sized[i](block, 0);
    deletes[i](nullptr);
    EXPECT_EQ(0, allocator.Live());
  }
}

TEST_F(OperatorNew, AFailedAllocationIsNullAndThrowsNothing) {
  const New plain = Get<New>(KEST_SIZE_LETTER("_Znwj", "_Znwm"));
  const New array = Get<New>(KEST_SIZE_LETTER("_Znaj", "_Znam"));
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  EXPECT_NO_THROW(EXPECT_EQ(nullptr, plain(40)));
  EXPECT_NO_THROW(EXPECT_EQ(nullptr, array(40)));
}

TEST_F(OperatorNew, OnlyASizeThatFits32BitsBecomesARequest) {
  const New plain = Get<New>(KEST_SIZE_LETTER("_Znwj", "_Znwm"));
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  EXPECT_EQ(nullptr, plain(0xFFFFFFFFu));
  EXPECT_EQ(0xFFFFFFFFu, allocator.LastSize());
  EXPECT_EQ(nullptr, plain(SIZE_MAX));
  EXPECT_EQ(sizeof(size_t) == 4 ? 2 : 1, allocator.Requests());
}

}  // namespace
