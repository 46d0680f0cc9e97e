#include <limits.h>
#include <string.h>

#include "frame/layout.h"
#include "frame/object.h"
#include "kest/string.h"

namespace KEST {

namespace {

// A length that an int cannot hold counts as nothing to convert.
int ByteLength(const char* s) {
  const size_t length = strlen(s);
  return length <= INT_MAX ? static_cast<int>(length) : 0;
}

}  // namespace

KEST_SIZE_IS(TConvertBuffer, 8, 16);

TConvertBuffer::TConvertBuffer(const char* s, int byteLength) : buffer(nullptr), length(0) {
  if (s == nullptr) return;
  if (byteLength == -1) byteLength = ByteLength(s);
  if (byteLength <= 0) return;
  constexpr unsigned int kUnitSize = sizeof(unsigned short);
  buffer = static_cast<unsigned short*>(
      AllocateArray(static_cast<unsigned int>(byteLength), kUnitSize, kUnitSize));
  if (buffer == nullptr) return;
  length = KestMultibyteToUnicode(s, byteLength, buffer, byteLength);
  buffer[length] = 0;
}

TConvertBuffer::~TConvertBuffer() {
  KEST_FIELD_AT(TConvertBuffer, buffer, 0, 0);
  KEST_FIELD_AT(TConvertBuffer, length, 4, 8);
  if (buffer != nullptr) KestMemFree(buffer);
}

}  // namespace KEST
