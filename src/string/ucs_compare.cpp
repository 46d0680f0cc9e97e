// Comparison of wide C strings by unit value, with and without regard to ASCII case.

#include <stdint.h>

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/ucs_compare_levels.h"
#include "string/units.h"

namespace KEST {

namespace {

constexpr unsigned short AsItIs(unsigned short ch) { return ch; }

template <unsigned short fold(unsigned short)>
size_t FirstStop(const unsigned short* a, const unsigned short* b, size_t limit) {
  size_t at = 0;
  while (at < limit && fold(a[at]) == fold(b[at]) && a[at] != 0) ++at;
  return at;
}

}  // namespace

size_t UcsComparePlain(const unsigned short* a, const unsigned short* b, size_t limit) {
  return FirstStop<AsItIs>(a, b, limit);
}

size_t UcsCompareFoldedPlain(const unsigned short* a, const unsigned short* b, size_t limit) {
  return FirstStop<UpperOf>(a, b, limit);
}

namespace {

constexpr SVersions<UcsCompareRoutine> kVersions = {UcsComparePlain, UcsCompareSse2, nullptr,
                                                    UcsCompareAvx2, UcsCompareAvx512};
constexpr TDispatch<kVersions> FirstStopAsItIs;

constexpr SVersions<UcsCompareRoutine> kFoldedVersions = {
    UcsCompareFoldedPlain, UcsCompareFoldedSse2, nullptr, UcsCompareFoldedAvx2,
    UcsCompareFoldedAvx512};
constexpr TDispatch<kFoldedVersions> FirstStopFolded;

// No text is as long as that.
constexpr size_t kWholeText = SIZE_MAX;

template <unsigned short fold(unsigned short), typename FirstStop>
int Compare(const unsigned short* a, const unsigned short* b, size_t limit, FirstStop firstStop) {
  if (limit == 0) return 0;
  a = OrEmpty(a);
  b = OrEmpty(b);
  // Most texts that differ do so at once.
  const int difference = fold(*a) - fold(*b);
  if (difference != 0 || *a == 0) return difference;
  const size_t stop = firstStop(a, b, limit);
  return stop < limit ? fold(a[stop]) - fold(b[stop]) : 0;
}

}  // namespace

size_t CommonUnits(const unsigned short* a, const unsigned short* b, size_t limit) {
  return FirstStopAsItIs(a, b, limit);
}

int ucscmp(const unsigned short* a, const unsigned short* b) {
  return Compare<AsItIs>(a, b, kWholeText, FirstStopAsItIs);
}

int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return Compare<AsItIs>(a, b, n, FirstStopAsItIs);
}

int ucsicmp(const unsigned short* a, const unsigned short* b) {
  return Compare<UpperOf>(a, b, kWholeText, FirstStopFolded);
}

int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return Compare<UpperOf>(a, b, n, FirstStopFolded);
}

}  // namespace KEST
