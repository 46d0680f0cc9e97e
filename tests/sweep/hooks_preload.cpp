// Preloaded into a test program: the library's memory then comes from replacement hooks that watch
// their blocks. The program has to be linked to the shared library, as it is delivered.
//
//   KEST_TEST_HOOKS      page        a block ends where an inaccessible page begins, save for up to
//                                    3 bytes (7 in the 64-bit target) that keep it aligned as
//                                    a pointer is; these are checked when it is freed.
//                        exact       the same without those bytes: text and bytes may lie at any
//                                    address, which this processor allows.
//                        quarantine  a new block is filled with one pattern and a freed one with
//                                    another; it is held back, and checked before its place is used
//                                    again or when the program ends, as is what surrounds it.
//                        tags        each block carries the number of the hooks that made it. A
//                                    stop of the library changes to other hooks of the two sets.
//   KEST_TEST_HOOKS_LOG  one line is added to this file when the program ends: blocks made; blocks
//                        crossed, that is made under one set of hooks and freed under another;
//                        blocks live; blocks of malloc's, for want of room.
//
// Misuse ends the program: a block freed twice or that never was one, a write before, behind or
// after its life, and a block freed by other hooks where the program has installed none itself.
//
// Tests install hooks of their own, over malloc and free, while blocks of these hooks are live, and
// release them under either. So the preload answers MemTerm, after which its own hooks are
// installed again instead of the defaults; and free, realloc and malloc_usable_size, so that a
// test's hooks can release a block of these. Both ways are counted as crossed.

#include <dlfcn.h>
#include <malloc.h>
#include <pthread.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include "kest/frame.h"

extern "C" {
void __libc_free(void* block);
void* __libc_malloc(size_t size);
void* __libc_realloc(void* block, size_t size);
}

namespace {

constexpr size_t kPage = 4096, kPages = 0x8000, kArena = kPage * kPages;
constexpr size_t kMargin = 16;            // watched bytes on either side, except next to a page
constexpr size_t kHeldBack = kPages / 8;  // pages
constexpr unsigned char kNew = 0xA5, kFreed = 0xDF, kAround = 0xC7;

enum Mode { kNone, kPageEnd, kQuarantine, kTags } s_mode = kNone;
size_t s_alignment = sizeof(void*);

// What a page of the arena is. A block is known by its first one.
enum State : unsigned char { kFree, kLive, kHeld, kPart };
struct Page {
  State state;
  bool accessible;
  unsigned char tag;
  unsigned int size, pages;
  unsigned char* block;
};

char* s_arena;
Page* s_pages;
size_t s_next;           // where the search for free pages goes on
size_t s_full = kPages;  // no run of so many pages was free when it was last looked for
unsigned int s_made, s_crossed, s_live, s_plain, s_plainLive;
bool s_otherHooks;  // the program has installed hooks of its own
pthread_mutex_t s_mutex = PTHREAD_MUTEX_INITIALIZER;

struct Lock {
  Lock() { pthread_mutex_lock(&s_mutex); }
  ~Lock() { pthread_mutex_unlock(&s_mutex); }
};

[[noreturn]] void Report(const char* what, const void* block) {
  char line[128];
  const int length = snprintf(line, sizeof line, "hooks: %s: %p\n", what, block);
  if (write(2, line, static_cast<size_t>(length)) < 0) _exit(98);
  abort();
}

bool IsInArena(const void* block) {
  const char* at = static_cast<const char*>(block);
  return s_arena != nullptr && at >= s_arena && at < s_arena + kArena;
}

Page& PageOf(const void* block) {
  return s_pages[static_cast<size_t>(static_cast<const char*>(block) - s_arena) / kPage];
}

char* AddressOf(const Page& page) { return s_arena + static_cast<size_t>(&page - s_pages) * kPage; }

void ExpectFilled(const unsigned char* from, const unsigned char* end, unsigned char with,
                  const char* what, const void* block) {
  for (; from < end; ++from) {
    if (*from != with) Report(what, block);
  }
}

// The bytes of the block's pages that are not its own, as far as they are watched.
void ForMargins(const Page& page,
                void (*each)(unsigned char* from, unsigned char* end, const void* block)) {
  auto* const first = reinterpret_cast<unsigned char*>(AddressOf(page));
  unsigned char* const last = first + page.pages * kPage - (s_mode == kPageEnd ? kPage : 0);
  unsigned char* const end = page.block + page.size;
  each(page.block - first < static_cast<ptrdiff_t>(kMargin) ? first : page.block - kMargin,
       page.block, page.block);
  each(end, last - end < static_cast<ptrdiff_t>(kMargin) ? last : end + kMargin, page.block);
}

// Pages change seldom from one to the other: it is a system call.
bool MakeAccessible(Page& page, bool accessible) {
  if (page.accessible == accessible) return true;
  if (mprotect(AddressOf(page), kPage, accessible ? PROT_READ | PROT_WRITE : PROT_NONE) != 0) {
    return false;
  }
  page.accessible = accessible;
  return true;
}

void Drop(Page& page) {
  for (Page* p = &page + page.pages; p-- > &page;) p->state = kFree;
  s_full = kPages;
}

// The blocks held back, oldest first.
Page* s_held[kHeldBack];
size_t s_heldFirst, s_heldCount, s_heldPages;

void LetGo() {
  Page& page = *s_held[s_heldFirst++ % kHeldBack];
  --s_heldCount;
  s_heldPages -= page.pages;
  ExpectFilled(page.block, page.block + page.size, kFreed, "written after it was freed",
               page.block);
  Drop(page);
}

void HoldBack(Page& page) {
  memset(page.block, kFreed, page.size);
  page.state = kHeld;
  s_held[(s_heldFirst + s_heldCount++) % kHeldBack] = &page;
  s_heldPages += page.pages;
  while (s_heldPages > kHeldBack - 1) LetGo();
}

// The first of count free pages in a row, or null.
Page* FindPages(size_t count) {
  if (count >= s_full) return nullptr;
  size_t run = 0;
  for (size_t looked = 0; looked < kPages + count; ++looked) {
    if (s_next == kPages) s_next = run = 0;
    run = s_pages[s_next++].state == kFree ? run + 1 : 0;
    if (run == count) return &s_pages[s_next - count];
  }
  s_full = count;
  return nullptr;
}

void* Take(unsigned int size, unsigned char tag) {
  const Lock lock;
  ++s_made;
  const size_t guard = s_mode == kPageEnd ? 1 : 0;
  const size_t padded = (size + s_alignment - 1) / s_alignment * s_alignment;
  const size_t bytes = guard != 0 ? (padded != 0 ? padded : s_alignment) : size + 2 * kMargin;
  const size_t count = (bytes + kPage - 1) / kPage + guard;
  Page* const page = size < kArena / 4 ? FindPages(count) : nullptr;
  bool ready = page != nullptr;
  for (size_t i = 0; ready && i < count; ++i) ready = MakeAccessible(page[i], i < count - guard);
  if (!ready) {
    ++s_plain;
    ++s_plainLive;
    return __libc_malloc(size);
  }
  for (Page* p = page; p < page + count; ++p) p->state = kPart;
  page->state = kLive;
  page->tag = tag;
  page->size = size;
  page->pages = static_cast<unsigned int>(count);
  page->block = reinterpret_cast<unsigned char*>(AddressOf(*page)) +
                (guard != 0 ? (count - 1) * kPage - bytes : kMargin);
  ++s_live;
  ForMargins(*page, [](unsigned char* from, unsigned char* end, const void*) {
    memset(from, kAround, static_cast<size_t>(end - from));
  });
  memset(page->block, kNew, size);
  return page->block;
}

// tag is that of the hook that was called, or 0 for free.
void Release(void* block, unsigned char tag) {
  const Lock lock;
  Page& page = PageOf(block);
  if (page.state == kHeld) Report("freed twice", block);
  if (page.state != kLive || page.block != block) Report("freed, but no block", block);
  ForMargins(page, [](unsigned char* from, unsigned char* end, const void* of) {
    ExpectFilled(from, end, kAround, "written outside", of);
  });
  if (page.tag != tag) {
    if (!s_otherHooks && tag == 0) Report("freed past its hooks", block);
    ++s_crossed;
  }
  --s_live;
  if (s_mode == kPageEnd) {
    memset(page.block, kFreed, page.size);
    Drop(page);
    s_next = static_cast<size_t>(&page - s_pages);  // its pages are as the next block needs them
  } else {
    HoldBack(page);  // the tags too: a second release is then seen
  }
}

// A block that is not of these hooks.
void ReleaseOther(void* block) {
  if (block == nullptr) return;
  {
    const Lock lock;
    if (s_plainLive != 0) {
      --s_plainLive;
    } else if (s_otherHooks) {
      ++s_crossed;
    } else {
      Report("freed, but made by other hooks", block);
    }
  }
  __libc_free(block);
}

template <unsigned char tag>
struct Hooks {
  static void* Alloc(unsigned int size) { return Take(size, tag); }
  static void Free(void* block) {
    if (IsInArena(block)) {
      Release(block, tag);
    } else {
      ReleaseOther(block);
    }
  }
  // Always to another place.
  static void* Realloc(void* block, unsigned int size) {
    void* const moved = Take(size, tag);
    if (block == nullptr || moved == nullptr) return moved;
    const size_t old = IsInArena(block) ? PageOf(block).size : malloc_usable_size(block);
    memcpy(moved, block, old < size ? old : size);
    Free(block);
    return moved;
  }
  static constexpr KEST::SAllocator kRecord = {Alloc, Realloc, Free};
};

using MemInitCall = bool (*)(KEST::SAllocator*);
using MemTermCall = void (*)();
using UsableSizeCall = size_t (*)(void*);
MemInitCall s_memInit;
MemTermCall s_memTerm;

void Install() {
  static bool second = false;
  KEST::SAllocator hooks = second ? Hooks<2>::kRecord : Hooks<1>::kRecord;
  if (s_mode == kTags) second = !second;
  s_memInit(&hooks);
}

// By version, because there are tests that answer dlsym themselves.
template <typename Call>
Call NextOfKest(const char* name) {
  return reinterpret_cast<Call>(dlvsym(RTLD_NEXT, name, "KEST_1"));
}

__attribute__((constructor)) void Start() {
  const char* mode = getenv("KEST_TEST_HOOKS");
  s_memInit = NextOfKest<MemInitCall>("_ZN4KEST7MemInitEPNS_10SAllocatorE");
  s_memTerm = NextOfKest<MemTermCall>("_ZN4KEST7MemTermEv");
  if (mode == nullptr || s_memInit == nullptr) return;
  if (strcmp(mode, "page") == 0 || strcmp(mode, "exact") == 0) s_mode = kPageEnd;
  if (strcmp(mode, "exact") == 0) s_alignment = 1;
  if (strcmp(mode, "quarantine") == 0) s_mode = kQuarantine;
  if (strcmp(mode, "tags") == 0) s_mode = kTags;
  if (s_mode == kNone) return;
  unsetenv("LD_PRELOAD");  // not for what the test starts
  constexpr int kReserve = MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE;
  void* const arena = mmap(nullptr, kArena, PROT_NONE, kReserve, -1, 0);
  void* const pages = mmap(nullptr, kPages * sizeof(Page), PROT_READ | PROT_WRITE, kReserve, -1, 0);
  if (arena == MAP_FAILED || pages == MAP_FAILED) _exit(97);
  s_arena = static_cast<char*>(arena);
  s_pages = static_cast<Page*>(pages);
  Install();
}

__attribute__((destructor)) void End() {
  if (s_arena == nullptr) return;
  const Lock lock;
  while (s_heldCount != 0) LetGo();
  const char* log = getenv("KEST_TEST_HOOKS_LOG");
  FILE* const file = log != nullptr ? fopen(log, "a") : nullptr;
  if (file == nullptr) return;
  fprintf(file, "%u %u %u %u\n", s_made, s_crossed, s_live, s_plain);
  fclose(file);
}

}  // namespace

// In place of the library's own.
namespace KEST {

bool MemInit(SAllocator* allocator) {
  if (allocator != nullptr && allocator->alloc != nullptr && allocator->realloc != nullptr &&
      allocator->free != nullptr) {
    s_otherHooks = true;
  }
  return s_memInit(allocator);
}

void MemTerm() {
  s_memTerm();
  if (s_arena != nullptr) Install();
}

}  // namespace KEST

// In place of the C library's.
extern "C" {

__attribute__((visibility("default"))) void free(void* block) noexcept {
  if (IsInArena(block)) {
    Release(block, 0);
  } else {
    __libc_free(block);
  }
}

__attribute__((visibility("default"))) void* realloc(void* block, size_t size) noexcept {
  if (!IsInArena(block)) return __libc_realloc(block, size);
  void* const moved = __libc_malloc(size);
  if (moved == nullptr) return nullptr;
  const size_t old = PageOf(block).size;
  memcpy(moved, block, old < size ? old : size);
  Release(block, 0);
  return moved;
}

__attribute__((visibility("default"))) size_t malloc_usable_size(void* block) noexcept {
  if (IsInArena(block)) return PageOf(block).size;
  return reinterpret_cast<UsableSizeCall>(dlsym(RTLD_NEXT, "malloc_usable_size"))(block);
}

}  // extern "C"
