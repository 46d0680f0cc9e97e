// A program that links libKest.a. Exits with the number of the check that failed.

#include <string.h>

#include "kest/kest.h"

int main() {
  if (KestInitialize(nullptr) != 1) return 1;
  int result = 0;
  {
    KEST::TBstr text("static");
    text.Append(KEST_TEXT(" link"));
    if (text.Compare(KEST_TEXT("static link")) != 0) result = 2;
    KEST::TPtrFromBstrMap map;
    map[text.GetString()] = &text;
    void* found = nullptr;
    if (!map.Lookup(KEST_TEXT("static link"), found) || found != &text) result = 3;
    if (kest_ucslen(text.GetString()) != 11) result = 4;
    if (strcmp(KestGetVersion(), KEST_VERSION_STRING) != 0) result = 5;
  }
  KestUninitialize();
  return result;
}
