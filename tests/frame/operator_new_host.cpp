// A host built with -fcheck-new whose new and delete are Kest's. Exits with the number of the check
// that failed.

#include <stdlib.h>

#include "kest/frame.h"

namespace {

int s_live = 0;
bool s_refuse = false;
int s_constructed = 0;

void* Alloc(unsigned int size) {
  if (s_refuse) return nullptr;
  ++s_live;
  return malloc(size);
}
void* Realloc(void* block, unsigned int size) { return realloc(block, size); }
void Free(void* block) {
  if (block != nullptr) --s_live;
  free(block);
}

struct Thing {
  Thing() : value(7) { ++s_constructed; }
  int value;
};

// Outside main's sight, so that the compiler cannot elide the pair of new and delete.
__attribute__((noinline)) Thing* Make() { return new Thing; }
__attribute__((noinline)) void Unmake(Thing* thing) { delete thing; }

}  // namespace

int main() {
  KEST::SAllocator hooks = {Alloc, Realloc, Free};
  if (KestInitialize(&hooks) != 1) return 1;
  const int before = s_live;

  Thing* thing = Make();
  if (thing == nullptr || thing->value != 7 || s_constructed != 1) return 2;
  if (s_live != before + 1) return 3;
  Unmake(thing);
  if (s_live != before) return 4;

  s_refuse = true;
  if (Make() != nullptr) return 5;
  if (s_constructed != 1) return 6;  // no constructor ran
  s_refuse = false;

  KestUninitialize();
  return s_live == 0 ? 0 : 7;
}
