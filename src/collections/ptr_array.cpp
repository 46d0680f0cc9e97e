#include <limits.h>

#include <algorithm>

#include "frame/default_hooks.h"
#include "frame/layout.h"
#include "frame/object.h"
#include "kest/collections.h"

namespace {

// Growing by an eighth keeps copying cheap; the bounds keep small arrays from crawling and large
// ones from wasting.
constexpr int kMinStep = 4;
constexpr int kMaxStep = 1024;

// A growBy below 0 stands for growth to what is needed.
unsigned int GrowthStep(int growBy, int size) {
  const int step = growBy != 0 ? growBy : std::clamp(size / 8, kMinStep, kMaxStep);
  return static_cast<unsigned int>(std::max(step, 0));
}

// The sum, or INT_MAX: more pointers than a 32-bit number of bytes holds, so a size that fails.
int AddSizes(int a, int b) { return a <= INT_MAX - b ? a + b : INT_MAX; }

// More elements do not fit a 32-bit number of bytes.
constexpr unsigned int kMaxRoom = UINT_MAX / sizeof(void*);

// Up to the first the room goes up in powers of two, then in eighths of them, from 2^21 elements on
// in steps of the second.
constexpr unsigned int kSmallRoom = 1023;
constexpr unsigned int kLargestStep = 1 << 18;

// How many elements the block of an array of that capacity has room for as long as no client has
// set hooks: the capacity keeps to its described steps, while the block is moved more rarely. It
// follows from the capacity alone, for which reason there is no field for it.
inline unsigned int RoomFor(unsigned int capacity) {
  const unsigned int power = 1u << (31 - __builtin_clz(capacity));  // the largest up to it
  if (capacity <= kSmallRoom) return 2 * power - 1;
  const unsigned int step = std::min(power / 8, kLargestStep);
  return std::min((capacity + step - 1) & ~(step - 1), kMaxRoom);
}

// Up to here freed blocks are at hand for the C library's next allocation, which is faster than a
// block that grows; above, growing may move pages instead of bytes.
constexpr unsigned int kRoomToCopy = 255;

// Gives the block of oldCapacity elements, none when it is null, the new capacity, with the first
// count elements in place. Null when there is no memory; the block is then as it was.
inline void** Resize(void** block, int count, int oldCapacity, unsigned int capacity) {
  if (capacity > kMaxRoom) return nullptr;
  unsigned int room = capacity;
  if (!KEST::hadClientHooks) {
    room = RoomFor(capacity);
    if (block != nullptr && room == RoomFor(static_cast<unsigned int>(oldCapacity))) return block;
    if (room > kRoomToCopy) return static_cast<void**>(KestMemRealloc(block, room * sizeof(void*)));
  }
  void** moved = static_cast<void**>(KestMemAlloc(room * sizeof(void*)));
  if (moved == nullptr) return nullptr;
  std::copy_n(block, count, moved);
  KestMemFree(block);
  return moved;
}

// Grows the capacity to at least newSize. False when there is no memory; nothing has changed then.
// Appending one by one comes here every few elements, so all of this is inline.
inline bool Grow(void**& data, int size, int& maxSize, int growBy, int newSize) {
  unsigned int capacity = static_cast<unsigned int>(newSize);
  // The first allocation is exact. Later ones grow by a step taken from the size, on purpose not
  // from the capacity.
  if (data != nullptr) {
    capacity = std::max(capacity, static_cast<unsigned int>(maxSize) + GrowthStep(growBy, size));
  }
  void** block = Resize(data, size, maxSize, capacity);
  if (block == nullptr) return false;
  data = block;
  maxSize = static_cast<int>(capacity);
  return true;
}

}  // namespace

namespace KEST {

KEST_SIZE_IS(TPtrArray, 16, 24);

TPtrArray::TPtrArray() : data(nullptr), size(0), maxSize(0), growBy(0) {
  KEST_FIELD_AT(TPtrArray, data, 0, 0);
  KEST_FIELD_AT(TPtrArray, size, 4, 8);
  KEST_FIELD_AT(TPtrArray, maxSize, 8, 12);
  KEST_FIELD_AT(TPtrArray, growBy, 12, 16);
}

TPtrArray::~TPtrArray() { KestMemFree(data); }

// Not inline in SetAtGrow, where appending would take longer for it.
__attribute__((noinline)) void TPtrArray::SetSize(int newSize, int newGrowBy) {
  if (newSize < 0) return;
  const int step = newGrowBy != -1 ? newGrowBy : growBy;
  if (newSize == 0) {
    KestMemFree(data);
    data = nullptr;
    maxSize = 0;
  } else if (newSize > maxSize && !Grow(data, size, maxSize, step, newSize)) {
    return;
  }
  if (newSize > size) std::fill(data + size, data + newSize, nullptr);
  size = newSize;
  growBy = step;
}

void TPtrArray::FreeExtra() {
  if (size == maxSize) return;
  if (size == 0) {
    SetSize(0);
    return;
  }
  void** block = Resize(data, size, maxSize, static_cast<unsigned int>(size));
  if (block == nullptr) return;
  data = block;
  maxSize = size;
}

void TPtrArray::SetAtGrow(int index, void* element) {
  if (index < 0) return;
  if (index == size) {
    if (size == maxSize && !Grow(data, size, maxSize, growBy, size + 1)) return;
    ++size;
  } else if (index > size) {
    SetSize(AddSizes(index, 1));
    if (index >= size) return;
  }
  data[index] = element;
}

void TPtrArray::InsertAt(int index, void* element, int count) {
  if (index < 0 || count < 0) return;
  const int oldSize = size;
  const int newSize = AddSizes(std::max(index, size), count);
  SetSize(newSize);
  if (size != newSize) return;
  if (index < oldSize) std::copy_backward(data + index, data + oldSize, data + newSize);
  std::fill_n(data + index, count, element);
}

void TPtrArray::InsertAt(int startIndex, TPtrArray* source) {
  if (source == nullptr || source->size == 0) return;
  const int count = source->size;
  const int oldSize = size;
  InsertAt(startIndex, source->data[0], count);
  if (size == oldSize) return;
  // An array inserted into itself has been split: what lay behind startIndex has moved up.
  const int unmoved = source == this ? std::min(startIndex, count) : count;
  void** gap = data + startIndex;
  std::copy_n(source->data, unmoved, gap);
  std::copy_n(gap + count, count - unmoved, gap + unmoved);
}

void TPtrArray::RemoveAt(int index, int count) {
  if (index < 0 || count < 0 || index >= size) return;
  const int removed = std::min(count, size - index);
  std::copy(data + index + removed, data + size, data + index);
  size -= removed;
}

int TPtrArray::Append(const TPtrArray& source) {
  const int oldSize = size;
  const int count = source.size;
  if (count == 0) return oldSize;
  SetSize(AddSizes(oldSize, count));
  if (size != oldSize) std::copy_n(source.data, count, data + oldSize);
  return oldSize;
}

void TPtrArray::Copy(const TPtrArray& source) {
  const int count = source.size;
  SetSize(count);
  if (size == count) std::copy_n(source.data, count, data);
}

}  // namespace KEST
