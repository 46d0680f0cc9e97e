// The length-prefixed buffers (BSTRs) that carry the library's text.

#include <string.h>

#include "kest/frame.h"
#include "kest/string.h"

namespace {

// A block is the prefix (the text's length in bytes), the units, and a zero unit; a BSTR is the
// address of its first unit.
constexpr unsigned int kPrefixSize = sizeof(unsigned int);
constexpr unsigned int kUnitSize = sizeof(unsigned short);

// The longest text whose block size fits 32 bits.
constexpr unsigned int kMaxLength = 0x7FFFFFFC;

char* BlockOf(unsigned short* bstr) { return reinterpret_cast<char*>(bstr) - kPrefixSize; }

}  // namespace

extern "C" {

unsigned short* KestAllocString(const unsigned short* s) {
  return s != nullptr ? KestAllocStringLen(s, KEST::ucslen(s)) : nullptr;
}

unsigned short* KestAllocStringLen(const unsigned short* s, unsigned int length) {
  if (length == 0 || length > kMaxLength) return nullptr;
  const unsigned int size = length * kUnitSize;
  void* block = KestMemAlloc(kPrefixSize + size + kUnitSize);
  if (block == nullptr) return nullptr;
  memcpy(block, &size, kPrefixSize);
  auto* bstr = reinterpret_cast<unsigned short*>(static_cast<char*>(block) + kPrefixSize);
  if (s != nullptr) memcpy(bstr, s, size);
  bstr[length] = 0;
  return bstr;
}

void KestFreeString(unsigned short* bstr) {
  if (bstr != nullptr) KestMemFree(BlockOf(bstr));
}

unsigned int KestStringLen(const unsigned short* bstr) {
  if (bstr == nullptr) return 0;
  unsigned int size;
  memcpy(&size, reinterpret_cast<const char*>(bstr) - kPrefixSize, kPrefixSize);
  return size >> 1;
}

unsigned int KestStringByteLen(const unsigned short* bstr) {
  return KestStringLen(bstr) * kUnitSize;
}

}  // extern "C"
