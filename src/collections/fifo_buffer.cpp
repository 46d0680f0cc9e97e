#include <limits.h>
#include <string.h>

#include <algorithm>

#include "collections/copy_piece.h"
#include "cpu/dispatch.h"
#include "frame/layout.h"
#include "kest/collections.h"

namespace KEST {

void CopyPiecePlain(unsigned char* dest, const unsigned char* source, size_t count) {
  memcpy(dest, source, count);
}

namespace {

constexpr SVersions<void(unsigned char*, const unsigned char*, size_t)> kCopyPiece = {
    CopyPiecePlain, CopyPieceSse2};
constexpr TDispatch<kCopyPiece> CopyPiece;

void CopyBytes(unsigned char* dest, const unsigned char* source, int count) {
  const size_t size = static_cast<size_t>(count);
  if (size >= kMinPiece && size <= kMaxPiece) {
    CopyPiece(dest, source, size);
  } else {
    memcpy(dest, source, size);
  }
}

}  // namespace

KEST_SIZE_IS(TFifoBuffer, 12, 16);

int TFifoBuffer::Read(unsigned char* destination, int count) {
  KEST_FIELD_AT(TFifoBuffer, buffer, 0, 0);
  KEST_FIELD_AT(TFifoBuffer, capacity, 4, 8);
  KEST_FIELD_AT(TFifoBuffer, length, 8, 12);
  const int taken = std::min(count, length);
  if (taken <= 0) return 0;
  length -= taken;
  CopyBytes(destination, buffer, taken);
  if (length != 0) memmove(buffer, buffer + taken, static_cast<size_t>(length));
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
  CopyBytes(buffer + length, source, count);
  length = total;
  return count;
}

}  // namespace KEST
