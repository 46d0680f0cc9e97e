// A program of somebody else's: it uses a class of each kind, and the version of what it runs with
// has to be that of its headers.

#include <stdio.h>
#include <string.h>

#include "kest/bridge/version.h"
#include "kest/kest.h"

namespace {

// A virtual table of ours above one of the library's.
class TCountingDigest : public KEST::TMd5Digest {
 public:
  void Transform(unsigned int* words, const unsigned char* block) override {
    ++blocks;
    KEST::TMd5Digest::Transform(words, block);
  }
  int blocks = 0;
};

int Answer(void* arg) { return *static_cast<int*>(arg) + 1; }

bool Strings() {
  KEST::TBstr text("Hello");
  text += KEST_TEXT(", world");
  text.Format(KEST_TEXT("%s: %d"), text.GetString(), text.GetLength());
  return text == KEST_TEXT("Hello, world: 12") && kest_ucslen(text.GetString()) == 16;
}

bool Containers() {
  KEST::TPtrFromBstrMap map;
  int value = 7;
  void* found = nullptr;
  return map.SetAt(KEST_TEXT("seven"), &value) && map.Lookup(KEST_TEXT("seven"), found) &&
         found == &value;
}

bool Digests() {
  static const unsigned char kEmpty[] = {0xd4, 0x1d, 0x8c, 0xd9, 0x8f, 0x00, 0xb2, 0x04,
                                         0xe9, 0x80, 0x09, 0x98, 0xec, 0xf8, 0x42, 0x7e};
  TCountingDigest digest;
  unsigned char out[16];
  return digest.Finish(out, 0) == 16 && memcmp(out, kEmpty, 16) == 0 && digest.blocks == 1;
}

bool Threads() {
  int given = 41, answer = 0;
  KEST::TThread thread;
  return thread.Create(Answer, &given, false) && thread.WaitForExit(&answer) && answer == 42;
}

}  // namespace

int main() {
  if (KestInitialize(nullptr) != 1) return 1;
  const bool good = Strings() && Containers() && Digests() && Threads();
  KestUninitialize();
  const bool fits =
      strcmp(KestGetVersion(), KEST_VERSION_STRING) == 0 && KEST::IsLibraryCompatible();
  printf("%d-bit, C++%d: %s\n", static_cast<int>(8 * sizeof(void*)),
         static_cast<int>(__cplusplus / 100 % 100), good && fits ? "ok" : "FAILED");
  return good && fits ? 0 : 1;
}
