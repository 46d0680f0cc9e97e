// Comparison of wide C strings by unit value, with and without regard to ASCII case.

#include <stdint.h>

#include "kest/string.h"
#include "string/units.h"

namespace {

constexpr unsigned short AsItIs(unsigned short ch) { return ch; }

// No text is as long as that.
constexpr size_t kWholeText = SIZE_MAX;

template <unsigned short fold(unsigned short)>
int Compare(const unsigned short* a, const unsigned short* b, size_t n) {
  a = KEST::OrEmpty(a);
  b = KEST::OrEmpty(b);
  for (; n != 0; --n, ++a, ++b) {
    const int difference = fold(*a) - fold(*b);
    if (difference != 0 || *a == 0) return difference;
  }
  return 0;
}

}  // namespace

namespace KEST {

int ucscmp(const unsigned short* a, const unsigned short* b) {
  return Compare<AsItIs>(a, b, kWholeText);
}

int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return Compare<AsItIs>(a, b, n);
}

int ucsicmp(const unsigned short* a, const unsigned short* b) {
  return Compare<UpperOf>(a, b, kWholeText);
}

int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return Compare<UpperOf>(a, b, n);
}

}  // namespace KEST
