// Comparison of wide C strings by unit value, with and without regard to ASCII case.

#include "cpu/dispatch.h"
#include "kest/string.h"
#include "string/ucs_compare_levels.h"
#include "string/units.h"

namespace KEST {

namespace {

constexpr unsigned short AsItIs(unsigned short ch) { return ch; }

template <unsigned short fold(unsigned short)>
int Compare(const unsigned short* a, const unsigned short* b, size_t limit) {
  for (; limit != 0; --limit, ++a, ++b) {
    const int difference = fold(*a) - fold(*b);
    if (difference != 0 || *a == 0) return difference;
  }
  return 0;
}

}  // namespace

int UcsComparePlain(const unsigned short* a, const unsigned short* b) {
  return Compare<AsItIs>(a, b, kWholeText);
}

int UcsCompareFoldedPlain(const unsigned short* a, const unsigned short* b) {
  return Compare<UpperOf>(a, b, kWholeText);
}

int UcsCompareSomePlain(const unsigned short* a, const unsigned short* b, unsigned int limit) {
  return Compare<AsItIs>(a, b, limit);
}

int UcsCompareSomeFoldedPlain(const unsigned short* a, const unsigned short* b,
                              unsigned int limit) {
  return Compare<UpperOf>(a, b, limit);
}

size_t UcsCommonPlain(const unsigned short* a, const unsigned short* b, size_t limit) {
  size_t at = 0;
  while (at < limit && a[at] == b[at] && a[at] != 0) ++at;
  return at;
}

namespace {

constexpr SVersions<UcsCompareRoutine> kCompare = {UcsComparePlain, UcsCompareSse2, nullptr,
                                                   UcsCompareAvx2, UcsCompareAvx512};
constexpr TDispatch<kCompare> CompareUnits;

constexpr SVersions<UcsCompareRoutine> kCompareFolded = {
    UcsCompareFoldedPlain, UcsCompareFoldedSse2, nullptr, UcsCompareFoldedAvx2,
    UcsCompareFoldedAvx512};
constexpr TDispatch<kCompareFolded> CompareFolded;

constexpr SVersions<UcsCompareSomeRoutine> kCompareSome = {
    UcsCompareSomePlain, UcsCompareSomeSse2, nullptr, UcsCompareSomeAvx2, UcsCompareSomeAvx512};
constexpr TDispatch<kCompareSome> CompareSome;

constexpr SVersions<UcsCompareSomeRoutine> kCompareSomeFolded = {
    UcsCompareSomeFoldedPlain, UcsCompareSomeFoldedSse2, nullptr, UcsCompareSomeFoldedAvx2,
    UcsCompareSomeFoldedAvx512};
constexpr TDispatch<kCompareSomeFolded> CompareSomeFolded;

constexpr SVersions<UcsCommonRoutine> kCommon = {UcsCommonPlain, UcsCommonSse2, nullptr,
                                                 UcsCommonAvx2, UcsCommonAvx512};
constexpr TDispatch<kCommon> FirstStop;

}  // namespace

size_t CommonUnits(const unsigned short* a, const unsigned short* b, size_t limit) {
  return FirstStop(a, b, limit);
}

int ucscmp(const unsigned short* a, const unsigned short* b) {
  return CompareUnits(OrEmpty(a), OrEmpty(b));
}

int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return CompareSome(OrEmpty(a), OrEmpty(b), n);
}

int ucsicmp(const unsigned short* a, const unsigned short* b) {
  return CompareFolded(OrEmpty(a), OrEmpty(b));
}

int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n) {
  return CompareSomeFolded(OrEmpty(a), OrEmpty(b), n);
}

}  // namespace KEST
