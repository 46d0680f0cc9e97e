// Making, assigning and appending to a TBstr.

#include <algorithm>

#include "frame/object.h"
#include "string/bstr_block.h"
#include "string/splice.h"

namespace KEST {

namespace {

// Runs of up to this many units are assembled on the stack.
constexpr int kLocalUnits = 128;

// False, and nothing done, when the block has no room.
bool AppendInPlace(unsigned short* string, unsigned short ch) {
  const unsigned int length = BstrLength(string);
  if (string == nullptr || length >= kMaxBstrLength) return false;
  void* const block = BlockOf(string);
  if (BlockRoom(block) < BstrBlockSize(length + 1)) return false;
  string[length] = ch;
  MakeBstr(block, length + 1);
  return true;
}

}  // namespace

TBstr::TBstr() : string(nullptr), multibyte(nullptr) {}

TBstr::TBstr(const TBstr& other)
    : string(NewBstr(other.string, BstrLength(other.string))), multibyte(nullptr) {}

TBstr::TBstr(unsigned short ch, int count) : TBstr() {
  if (ch == 0 || count < 0) return;
  unsigned short local[kLocalUnits];
  unsigned short* units = local;
  if (count > kLocalUnits) {
    units = static_cast<unsigned short*>(
        AllocateArray(static_cast<unsigned int>(count), sizeof(unsigned short)));
    if (units == nullptr) return;
  }
  std::fill_n(units, count, ch);
  InternalInit(units, count);
  if (units != local) KestMemFree(units);
}

TBstr::TBstr(const unsigned short* s) : TBstr(s, TextLength(s)) {}

TBstr::TBstr(const unsigned short* s, int length)
    : string(s != nullptr && length > 0 ? NewBstr(s, static_cast<unsigned int>(length)) : nullptr),
      multibyte(nullptr) {}

TBstr::TBstr(const char* s) : TBstr(s, -1) {}

TBstr::TBstr(const char* s, int length) : TBstr() {
  const TConvertBuffer wide(s, length);
  InternalInit(wide.GetBuffer(), wide.GetLength());
}

TBstr& TBstr::Assign(const TBstr& other) {
  if (this != &other) InternalInit(other.string, other.GetLength());
  return *this;
}

TBstr& TBstr::Assign(unsigned short ch) {
  if (ch != 0) InternalInit(&ch, 1);  // 0 keeps the old text, on purpose
  return *this;
}

TBstr& TBstr::Assign(const unsigned short* s) {
  InternalInit(s, TextLength(s));
  return *this;
}

TBstr& TBstr::Assign(const char* s) {
  const TConvertBuffer wide(s);
  InternalInit(wide.GetBuffer(), wide.GetLength());
  return *this;
}

TBstr& TBstr::Append(const TBstr& other) {
  InternalAppend(other.string, other.GetLength());
  return *this;
}

TBstr& TBstr::Append(unsigned short ch) {
  if (ch == 0) return *this;
  Discard(multibyte);
  if (!AppendInPlace(string, ch)) {
    const unsigned short text[] = {ch};
    AppendUnits(string, text, 1);
  }
  return *this;
}

TBstr& TBstr::Append(const unsigned short* s) {
  InternalAppend(s, TextLength(s));
  return *this;
}

TBstr& TBstr::Append(const char* s) {
  const TConvertBuffer wide(s);
  InternalAppend(wide.GetBuffer(), wide.GetLength());
  return *this;
}

}  // namespace KEST
