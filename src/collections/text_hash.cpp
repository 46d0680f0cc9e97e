#include "collections/text_hash.h"

namespace KEST {

TextHash HashTextPlain(const unsigned short* text) {
  const unsigned short* end = text;
  unsigned int hash = 0;
  for (; *end != 0; ++end) hash = hash * kHashFactor + *end;
  return PackTextHash(static_cast<size_t>(end - text), hash);
}

}  // namespace KEST
