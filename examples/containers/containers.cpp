// Containers: a map counts words, an array keeps their order, a list is changed on the way through.

#include <stdio.h>

#include "kest/collections.h"
#include "kest/frame.h"

static const char* const kText[] = {"the", "cat", "and", "the", "dog", "and", "the", "bird"};

struct SWord {
  const char* text;
  int count;
};

// Finds the word's record, or makes free the one.
static bool Count(const char* text, SWord* free, KEST::TPtrFromBstrMap& map,
                  KEST::TPtrArray& order) {
  const KEST::TBstr key(text);  // the map will have a copy of its own
  if (key.IsEmpty()) return false;
  void* word;
  if (!map.Lookup(key.GetString(), word)) {
    *free = {text, 0};
    word = free;
    if (!map.SetAt(key.GetString(), word) || order.Add(word) < 0) return false;
  }
  ++static_cast<SWord*>(word)->count;
  return true;
}

static bool Run() {
  SWord words[8];  // containers hold pointers and own nothing, so the records live here
  KEST::TPtrFromBstrMap map;
  KEST::TPtrArray order;
  for (const char* text : kText) {
    if (!Count(text, &words[order.GetSize()], map, order)) return false;
  }

  KEST::TPtrList rare;
  for (int i = 0; i < order.GetSize(); ++i) {
    const SWord* word = static_cast<SWord*>(order[i]);
    printf("%s %d\n", word->text, word->count);
    if (rare.AddTail(order[i]) == nullptr) return false;
  }
  for (KEST::__POSITION* next = rare.GetHeadPosition(); next != nullptr;) {
    KEST::__POSITION* const current = next;  // GetNext moves on, so this one may be removed
    if (static_cast<SWord*>(rare.GetNext(next))->count > 1) rare.RemoveAt(current);
  }
  printf("%d of %d are rare\n", rare.GetCount(), map.GetCount());
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
