// The hash of the map with text as keys, in a plain version and one for each level that pays.

#ifndef KEST_SRC_COLLECTIONS_TEXT_HASH_H
#define KEST_SRC_COLLECTIONS_TEXT_HASH_H

#include <limits.h>
#include <stddef.h>

#include <algorithm>

namespace KEST {

// A text's length in units in the upper half, at most UINT_MAX, and its hash in the lower one: both
// are needed of a key, and two registers hold them.
using TextHash = unsigned long long;

constexpr unsigned int kHashFactor = 33;

inline TextHash PackTextHash(size_t length, unsigned int hash) {
  return static_cast<TextHash>(std::min<size_t>(length, UINT_MAX)) << 32 | hash;
}
inline unsigned int LengthOf(TextHash hash) { return static_cast<unsigned int>(hash >> 32); }
inline unsigned int HashOf(TextHash hash) { return static_cast<unsigned int>(hash); }

// The length of a text that ends at its first zero unit, and h = 0, then h = h * 33 + unit for
// each.
TextHash HashTextPlain(const unsigned short* text);
TextHash HashTextSse2(const unsigned short* text);

}  // namespace KEST

#endif  // KEST_SRC_COLLECTIONS_TEXT_HASH_H
