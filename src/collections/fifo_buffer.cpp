#include <limits.h>
#include <string.h>

#include <algorithm>

#include "frame/layout.h"
#include "kest/collections.h"

namespace KEST {

KEST_SIZE_IS(TFifoBuffer, 12, 16);

int TFifoBuffer::Read(unsigned char* destination, int count) {
  KEST_FIELD_AT(TFifoBuffer, buffer, 0, 0);
  KEST_FIELD_AT(TFifoBuffer, capacity, 4, 8);
  KEST_FIELD_AT(TFifoBuffer, length, 8, 12);
  const int taken = std::min(count, length);
  if (taken <= 0) return 0;
  length -= taken;
  memcpy(destination, buffer, static_cast<size_t>(taken));
  memmove(buffer, buffer + taken, static_cast<size_t>(length));
  return taken;
}

int TFifoBuffer::Write(const unsigned char* source, int count) {
  if (count <= 0 || count > INT_MAX - length) return 0;
  const int total = length + count;
  if (total > capacity) {
    void* block = KestMemRealloc(buffer, static_cast<unsigned int>(total));
    if (block == nullptr) return 0;
    buffer = static_cast<unsigned char*>(block);
    capacity = total;
  }
  memcpy(buffer + length, source, static_cast<size_t>(count));
  length = total;
  return count;
}

}  // namespace KEST
