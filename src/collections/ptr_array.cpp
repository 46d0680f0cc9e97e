#include <limits.h>

#include <algorithm>

#include "frame/layout.h"
#include "frame/object.h"
#include "kest/collections.h"

namespace {

// Growing by an eighth keeps copying cheap; the bounds keep small arrays from crawling and large
// ones from wasting.
constexpr int kMinStep = 4;
constexpr int kMaxStep = 1024;

int GrowthStep(int growBy, int size) {
  return growBy != 0 ? growBy : std::clamp(size / 8, kMinStep, kMaxStep);
}

// Capacities may pass INT_MAX here; no allocation of that many pointers succeeds.
unsigned int GrownCapacity(int maxSize, int step, int newSize) {
  const long long grown = static_cast<long long>(maxSize) + step;
  return static_cast<unsigned int>(std::max<long long>(grown, newSize));
}

// The sum, or INT_MAX: more pointers than a 32-bit number of bytes holds, so a size that fails.
int AddSizes(int a, int b) { return a <= INT_MAX - b ? a + b : INT_MAX; }

// A new block of capacity elements, the first count of them copied; null when there is no memory.
void** CopyToNewBlock(void* const* elements, int count, unsigned int capacity) {
  void** block = static_cast<void**>(KEST::AllocateArray(capacity, sizeof(void*)));
  if (block != nullptr) std::copy_n(elements, count, block);
  return block;
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

void TPtrArray::SetSize(int newSize, int newGrowBy) {
  if (newSize < 0) return;
  const int step = newGrowBy != -1 ? newGrowBy : growBy;
  if (newSize == 0) {
    KestMemFree(data);
    data = nullptr;
    maxSize = 0;
  } else if (newSize > maxSize) {
    // The first allocation is exact. Later ones grow by a step taken from the size, on purpose not
    // from the capacity.
    const unsigned int capacity = data != nullptr
                                      ? GrownCapacity(maxSize, GrowthStep(step, size), newSize)
                                      : static_cast<unsigned int>(newSize);
    void** block = CopyToNewBlock(data, size, capacity);
    if (block == nullptr) return;
    KestMemFree(data);
    data = block;
    maxSize = static_cast<int>(capacity);
  }
  if (newSize > size) std::fill(data + size, data + newSize, nullptr);
  size = newSize;
  growBy = step;
}

void TPtrArray::FreeExtra() {
  if (size == maxSize) return;
  void** block = nullptr;
  if (size != 0) {
    block = CopyToNewBlock(data, size, static_cast<unsigned int>(size));
    if (block == nullptr) return;
  }
  KestMemFree(data);
  data = block;
  maxSize = size;
}

void TPtrArray::SetAtGrow(int index, void* element) {
  if (index < 0) return;
  if (index >= size) SetSize(AddSizes(index, 1));
  if (index < size) data[index] = element;
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
