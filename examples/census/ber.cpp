#include "ber.h"

#include <limits.h>

#include "numbers.h"

using KEST::TBstr;

namespace census {

namespace {

constexpr int kMostDepth = 64;
constexpr int kConstructed = 0x20;
constexpr int kLongTag = 0x1F;
constexpr int kIndefinite = INT_MAX;

struct SWalk {
  const unsigned char* start;
  void (*visit)(void* visitor, const SBerElement& element);
  void* visitor;
};

bool WalkLevel(const SWalk& walk, const unsigned char* data, int length, int depth) {
  if (depth > kMostDepth) return false;
  BerReader reader(data, length);
  while (!reader.IsAtEnd()) {
    SBerElement element = {};
    if (!reader.Next(&element.item)) return false;
    element.offset = static_cast<int>(data - walk.start);
    element.header = static_cast<int>(element.item.value - data);
    element.depth = depth;
    walk.visit(walk.visitor, element);
    const SBerItem& item = element.item;
    if ((item.tag & kConstructed) != 0 && !WalkLevel(walk, item.value, item.length, depth + 1)) {
      return false;
    }
    data = item.value + item.length;
  }
  return true;
}

}  // namespace

bool BerReader::Next(SBerItem* item) {
  const int size = KestBerDecode(at, left, item);
  if (size == 0 || item->length == kIndefinite || (item->tag & kLongTag) == kLongTag) return false;
  at += size;
  left -= size;
  return true;
}

bool WalkBer(const unsigned char* data, int length,
             void (*visit)(void* visitor, const SBerElement& element), void* visitor) {
  return WalkLevel(SWalk{data, visit, visitor}, data, length, 0);
}

TBstr ObjectText(const SBerItem& item) {
  TBstr text;
  unsigned long long number = 0;
  for (int i = 0; i < item.length; ++i) {
    if (number >> 56 != 0) return TBstr();
    number = number << 7 | (item.value[i] & 0x7F);
    const bool more = (item.value[i] & 0x80) != 0;
    if (more && i + 1 == item.length) return TBstr();
    if (more) continue;
    if (text.IsEmpty()) {  // the first two numbers share one
      const unsigned long long first = number < 80 ? number / 40 : 2;
      text = Decimal(static_cast<long long>(first));
      number -= 40 * first;
    }
    text += TBstr(".") + Decimal(static_cast<long long>(number));
    number = 0;
  }
  return text;
}

}  // namespace census
