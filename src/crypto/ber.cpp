// One element of the Basic Encoding Rules, ITU-T X.690 section 8.1: tag, length, content.

#include "kest/digest.h"

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include "frame/layout.h"

namespace {

constexpr int kIndefinite = INT_MAX;      // in SBerItem::length
constexpr int kIndefiniteOctet = 0x80;    // in the encoding, where a long form's count starts, too
constexpr int kEncodableLimit = 1 << 24;  // lengths from here on are refused

// A big-endian number. Of more than four bytes the low ones count, on purpose.
unsigned int BigEndianNumber(const unsigned char* bytes, int count) {
  unsigned int number = 0;
  for (int i = 0; i < count; ++i) number = number << 8 | bytes[i];
  return number;
}

// The header that KestBerEncode writes: tag and length. The long form is not that of X.690, on
// purpose: a length from 128 on becomes 0x81 and a zero, from 65536 on 0x82, a zero and its low
// byte.
int HeaderSize(int length) {
  if (length < 0x80) return 2;
  return length < 0x10000 ? 3 : 4;
}

void WriteHeader(unsigned char* out, unsigned char tag, int length) {
  out[0] = tag;
  if (length < 0x80) {
    out[1] = static_cast<unsigned char>(length);
    return;
  }
  out[1] = length < 0x10000 ? 0x81 : 0x82;
  out[2] = 0;
  if (length >= 0x10000) out[3] = static_cast<unsigned char>(length);
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(SBerItem, 12, 16);
KEST_FIELD_AT(SBerItem, tag, 0, 0);
KEST_FIELD_AT(SBerItem, length, 4, 4);
KEST_FIELD_AT(SBerItem, value, 8, 8);

}  // namespace KEST

extern "C" {

int KestBerDecode(const unsigned char* data, int length, KEST::SBerItem* item) {
  *item = {0, 0, nullptr};
  if (length < 2) return 0;
  const int first = data[1];
  const int more = first > kIndefiniteOctet ? first - kIndefiniteOctet : 0;
  const int header = 2 + more;
  if (length < header) return 0;
  unsigned int content = 0;
  if (first < kIndefiniteOctet) content = static_cast<unsigned int>(first);
  if (more > 0) content = BigEndianNumber(data + 2, more);
  if (content > static_cast<unsigned int>(length - header)) return 0;
  const int contentLength = static_cast<int>(content);
  *item = {data[0], first == kIndefiniteOctet ? kIndefinite : contentLength, data + header};
  return header + contentLength;
}

int KestBerEncode(unsigned char* out, int size, const KEST::SBerItem* item) {
  const bool indefinite = item->length == kIndefinite;
  const int content = indefinite ? 0 : item->length;
  if (content < 0 || content >= kEncodableLimit) return 0;
  const int header = HeaderSize(content);
  // A size below 0 is a large one, on purpose.
  if (static_cast<unsigned int>(size) < static_cast<unsigned int>(header + content)) return 0;
  // The content first: it may lie in out already.
  if (item->value != nullptr) memmove(out + header, item->value, static_cast<size_t>(content));
  WriteHeader(out, item->tag, content);
  if (indefinite) out[1] = kIndefiniteOctet;
  return item->value != nullptr ? header + content : header;
}

}  // extern "C"
