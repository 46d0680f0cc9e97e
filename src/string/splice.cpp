#include "string/splice.h"

#include <stdint.h>

#include <algorithm>

#include "frame/default_hooks.h"
#include "string/bstr_block.h"
#include "string/units.h"

namespace KEST {

namespace {

// The units for which a block is asked: some to spare when a text grows by small pieces, so that
// making it takes linear time. Short texts double, longer ones grow by half.
unsigned int WithSpare(unsigned int length, unsigned int added) {
  constexpr unsigned int kLeastSpare = 16;
  constexpr unsigned int kMostDoubled = 2048;
  if (added > length / 4) return length;
  const unsigned int spare = std::max(length / 2, std::clamp(length, kLeastSpare, kMostDoubled));
  return std::min(length + spare, kMaxBstrLength);
}

// A block with room for length units and the first units of string, which is no longer valid; null
// without memory, and string is then as it was.
void* GrowBlock(unsigned short* string, unsigned int length, unsigned int added) {
  void* const block = BlockOf(string);
  const size_t room = BlockRoom(block);
  if (room >= BstrBlockSize(length)) return block;
  // Without an answer what is asked for in addition could not be used.
  const unsigned int wanted = room != 0 ? WithSpare(length, added) : length;
  void* const fresh = KestMemRealloc(block, BstrBlockSize(wanted));
  return fresh != nullptr || wanted == length ? fresh
                                              : KestMemRealloc(block, BstrBlockSize(length));
}

}  // namespace

bool Splice(unsigned short*& string, int index, int removed, const unsigned short* src, int count) {
  const int kept = static_cast<int>(BstrLength(string)) - removed;
  if (count > INT_MAX - kept) {
    Clear(string);
    return false;
  }
  unsigned short* fresh = NewBstr(static_cast<unsigned int>(kept + count));
  if (fresh != nullptr) {
    MoveUnits(fresh, string, static_cast<size_t>(index));
    MoveUnits(fresh + index, src, static_cast<size_t>(count));
    MoveUnits(fresh + index + count, string + index + removed, static_cast<size_t>(kept - index));
  }
  FreeBstr(string);
  string = fresh;
  return fresh != nullptr || kept + count == 0;
}

bool AppendUnits(unsigned short*& string, const unsigned short* src, int count) {
  const unsigned int length = BstrLength(string);
  const unsigned int added = static_cast<unsigned int>(count);
  if (string == nullptr || !UsesDefaultHooks() || length + added > kMaxBstrLength) {
    return Splice(string, static_cast<int>(length), 0, src, count);
  }
  const uintptr_t offset = reinterpret_cast<uintptr_t>(src) - reinterpret_cast<uintptr_t>(string);
  const bool isOwn = offset <= length * kUnitSize;
  char* const block = static_cast<char*>(GrowBlock(string, length + added, added));
  if (block == nullptr) {
    Clear(string);
    return false;
  }
  string = reinterpret_cast<unsigned short*>(block + kBstrPrefixSize);
  if (isOwn) src = reinterpret_cast<const unsigned short*>(block + kBstrPrefixSize + offset);
  // The terminator may be one of the units of src, so a new one is set when they are in place.
  if (added == 1) {
    string[length] = *src;
  } else {
    MoveUnits(string + length, src, added);
  }
  MakeBstr(block, length + added);
  return true;
}

bool Resize(unsigned short*& string, int length) {
  const unsigned int wanted = static_cast<unsigned int>(length);
  if (string != nullptr && UsesDefaultHooks() && wanted <= kMaxBstrLength) {
    void* const block = KestMemRealloc(BlockOf(string), BstrBlockSize(wanted));
    if (block == nullptr) {
      Clear(string);
      return false;
    }
    string = MakeBstr(block, wanted);
    return true;
  }
  unsigned short* const fresh = NewBstr(wanted);
  if (fresh != nullptr) MoveUnits(fresh, string, std::min(wanted, BstrLength(string)));
  FreeBstr(string);
  string = fresh;
  return fresh != nullptr;
}

}  // namespace KEST
