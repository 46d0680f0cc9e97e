// Where text lies in memory, for kernels that read whole vectors: what lies in one page with a unit
// of the text can be read, what lies in another page need not be there. A file includes it after
// one of vector_LEVEL.h.

#ifndef KEST_SRC_STRING_PLACE_H
#define KEST_SRC_STRING_PLACE_H

#include <stddef.h>
#include <stdint.h>

namespace KEST::KEST_KERNELS {

constexpr size_t kVectorUnits = sizeof(Vector) / sizeof(unsigned short);
constexpr size_t kPageBytes = 4096;

inline size_t BytesInto(size_t blockBytes, const unsigned short* s) {
  return reinterpret_cast<uintptr_t>(s) & (blockBytes - 1);
}

// Units at odd addresses lie across the lanes of aligned vectors.
inline bool IsOdd(const unsigned short* s) { return BytesInto(sizeof(unsigned short), s) != 0; }

// The units from s on that are in its page as a whole.
inline size_t UnitsToPageEnd(const unsigned short* s) {
  return (kPageBytes - BytesInto(kPageBytes, s)) / sizeof(unsigned short);
}

inline const unsigned short* AlignedDown(const unsigned short* s) {
  return s - BytesInto(sizeof(Vector), s) / sizeof(unsigned short);
}

// The first unit that bits, which are not 0, have.
inline size_t FirstOf(unsigned int bits) {
  return static_cast<unsigned int>(__builtin_ctz(bits)) / kBitsOfUnit;
}

// The last one.
inline size_t LastOf(unsigned int bits) {
  return (31 - static_cast<unsigned int>(__builtin_clz(bits))) / kBitsOfUnit;
}

inline unsigned int WithoutUnit(unsigned int bits, size_t unit) {
  constexpr unsigned int kOneUnit = (1u << kBitsOfUnit) - 1;
  return bits & ~(kOneUnit << unit * kBitsOfUnit);
}

// bits without those of the first units, which are not all.
inline unsigned int WithoutFirst(unsigned int bits, size_t units) {
  return bits & (~0u << units * kBitsOfUnit);
}

// The bits of the first units, which are not all.
inline unsigned int OnlyFirst(unsigned int bits, size_t units) {
  return bits & ~(~0u << units * kBitsOfUnit);
}

}  // namespace KEST::KEST_KERNELS

#endif  // KEST_SRC_STRING_PLACE_H
