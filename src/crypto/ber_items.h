// BER elements of keys and algorithm identifiers: their tags, and several written one after
// another.

#ifndef KEST_SRC_CRYPTO_BER_ITEMS_H
#define KEST_SRC_CRYPTO_BER_ITEMS_H

#include "kest/digest.h"

namespace KEST {

constexpr unsigned char kBerInteger = 0x02;
constexpr unsigned char kBerBitString = 0x03;
constexpr unsigned char kBerOctetString = 0x04;
constexpr unsigned char kBerObjectIdentifier = 0x06;
constexpr unsigned char kBerSequence = 0x30;

// Writes the items into buf, which has room for them all. An item without a value is a header
// alone: its content are the items after it. Returns the number of bytes written.
template <int kCount>
int WriteBerItems(unsigned char* buf, int size, const SBerItem (&items)[kCount]) {
  int written = 0;
  for (const SBerItem& item : items) written += KestBerEncode(buf + written, size - written, &item);
  return written;
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BER_ITEMS_H
