// The structure of BER and DER data, X.690.

#ifndef CENSUS_BER_H
#define CENSUS_BER_H

#include "kest/digest.h"
#include "kest/string.h"

namespace census {

enum EBerTag {
  kBerObject = 0x06,
  kBerUtf8 = 0x0C,
  kBerUniversal = 0x1C,
  kBerBmp = 0x1E,
  kBerSequence = 0x30,
  kBerSet = 0x31,
  kBerVersion = 0xA0  // of a certificate: context-specific, 0
};

// The elements at one level, one after the other.
class BerReader {
 public:
  BerReader(const unsigned char* data, int length) : at(data), left(length) {}
  explicit BerReader(const SBerItem& parent) : at(parent.value), left(parent.length) {}

  // The next element, when there is one and it is whole; of the given tag, when one is given.
  bool Next(SBerItem* item);
  bool Next(SBerItem* item, EBerTag tag) { return Next(item) && item->tag == tag; }
  bool IsAtEnd() const { return left == 0; }

 private:
  const unsigned char* at;
  int left;
};

// What a walk tells of each element, the outer before the inner.
struct SBerElement {
  int offset;  // bytes from the start
  int depth;
  int header;  // bytes before the content
  SBerItem item;
};

// Visits every element of length bytes of data. False when they are not all whole, one lies more
// than 64 deep, or one has a form that DER does not allow or a tag above 30.
bool WalkBer(const unsigned char* data, int length,
             void (*visit)(void* visitor, const SBerElement& element), void* visitor);

// "2.5.4.3"; empty when the content of item is no object identifier, or one with numbers of more
// than 63 bits.
KEST::TBstr ObjectText(const SBerItem& item);

}  // namespace census

#endif  // CENSUS_BER_H
