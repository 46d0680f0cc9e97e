#include <limits.h>

#include "kest/frame.h"
#include "kest/string.h"
#include "support/test_allocator.h"

namespace {

// The path's bytes as units, followed by nothing else.
void ExpectSpec(const char* path) {
  const KEST::TBstr spec = KEST::ModuleGetFileSpec();
  EXPECT_EQ(static_cast<int>(strlen(path)), spec.GetLength());
  for (int i = 0; path[i] != '\0'; ++i) {
    EXPECT_EQ(static_cast<unsigned char>(path[i]), spec.GetAt(i)) << i;
  }
}

TEST(Module, HasNoSpecBeforeItIsInitialised) { EXPECT_TRUE(KEST::ModuleGetFileSpec().IsEmpty()); }

TEST(Module, FileSpecIsThePathOneUnitAByte) {
  for (const char* path : {"/opt/app/lib/module.so", "", "/h\xC3\xA9/\xFF.so"}) {
    SCOPED_TRACE(path);
    EXPECT_TRUE(SharedLibInit(path));
    ExpectSpec(path);
    SharedLibTerm();
  }
}

TEST(Module, KeepsACopyOfThePathInOneExactBlock) {
  kest_test::TestAllocator allocator;
  char path[] = "/a/b.so";
  EXPECT_TRUE(SharedLibInit(path));
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(sizeof(path), allocator.LastSize());
  path[1] = 'x';
  ExpectSpec("/a/b.so");
  SharedLibTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST(Module, InitSucceedsWithoutMemoryForThePath) {
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kFromThereOn);
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  EXPECT_TRUE(KEST::ModuleGetFileSpec().IsEmpty());
  SharedLibTerm();
}

// Kept on purpose: what SharedLibTerm frees it does not forget, so each call takes an init before.
TEST(Module, TermFreesThePathAndKeepsThePointer) {
  static char block[16];
  static void* freed;
  freed = nullptr;
  KEST::SAllocator hooks = {[](unsigned int) -> void* { return block; },
                            [](void*, unsigned int) -> void* { return nullptr; },
                            [](void* memory) { freed = memory; }};
  KEST::MemInit(&hooks);
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  EXPECT_STREQ("/a/b.so", block);
  SharedLibTerm();
  EXPECT_EQ(block, freed);
  freed = nullptr;
  SharedLibTerm();
  EXPECT_EQ(block, freed);
  KEST::MemTerm();
  ExpectSpec("/a/b.so");
  EXPECT_TRUE(SharedLibInit(nullptr));
}

TEST(Module, ANullPathIsNoPath) {
  kest_test::TestAllocator allocator;
  EXPECT_TRUE(SharedLibInit(nullptr));
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_TRUE(KEST::ModuleGetFileSpec().IsEmpty());
  SharedLibTerm();
}

size_t s_measured;
size_t MeasureOneLess(const char* s) { return s_measured = strlen(s) - 1; }
char* CopyShouting(char* dest, const char* src) {
  for (size_t i = 0; i < s_measured; ++i) dest[i] = static_cast<char>(toupper(src[i]));
  dest[s_measured] = '\0';
  return nullptr;
}

TEST(Module, MeasuresAndCopiesThroughTheSlots) {
  kest_strlen = MeasureOneLess;
  kest_strcpy = CopyShouting;
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  kest_strlen = strlen;
  kest_strcpy = strcpy;
  ExpectSpec("/A/B.S");
  SharedLibTerm();
}

// One byte more would not fit the 32 bits of a request.
TEST(Module, APathThatIsTooLongIsNoPath) {
  kest_test::TestAllocator allocator;
  kest_strlen = [](const char*) -> size_t { return UINT_MAX; };
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  kest_strlen = strlen;
  EXPECT_EQ(0, allocator.Requests());
  EXPECT_TRUE(KEST::ModuleGetFileSpec().IsEmpty());
  SharedLibTerm();
}

TEST(Module, InstanceStaysNull) {
  EXPECT_EQ(nullptr, KEST::ModuleGetInstance());
  int handle = 0;
  EXPECT_TRUE(KEST::ModuleInit(&handle));
  EXPECT_TRUE(KEST::ModuleInit(nullptr));
  EXPECT_EQ(nullptr, KEST::ModuleGetInstance());
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  EXPECT_EQ(nullptr, KEST::ModuleGetInstance());
  SharedLibTerm();
  KEST::ModuleTerm();
}

TEST(Module, TheEntryPairLeavesTheLibrarysCountAlone) {
  kest_test::TestAllocator allocator;
  EXPECT_TRUE(SharedLibInit("/a/b.so"));
  EXPECT_EQ(1, KestInitialize(nullptr));
  SharedLibTerm();
  KestUninitialize();
  EXPECT_EQ(0, allocator.Live()) << "one KestUninitialize was the last";
}

}  // namespace
