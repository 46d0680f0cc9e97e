// How a TBstr keeps its text: one BSTR of exactly the text's length, and an 8-bit copy on demand.

#include <limits.h>

#include "frame/layout.h"
#include "kest/frame.h"
#include "string/bstr_block.h"
#include "string/splice.h"
#include "string/units.h"

namespace KEST {

namespace {

// What a caller gets instead of null.
constexpr unsigned short kEmptyText[] = {0};
constexpr char kEmptyMultibyte[] = "";

// The longest text whose 8-bit copy, of 2 * length + 1 bytes, is counted in an int.
constexpr int kMaxCachedLength = (INT_MAX - 1) / 2;

}  // namespace

KEST_SIZE_IS(TBstr, 8, 16);

TBstr::~TBstr() {
  KEST_FIELD_AT(TBstr, string, 0, 0);
  KEST_FIELD_AT(TBstr, multibyte, 4, 8);
  Discard(multibyte);
  FreeBstr(string);
  string = nullptr;
}

bool TBstr::AdjustBuffer(int length, bool keep) {
  if (length == Length(string)) return true;
  if (length >= 1 && keep) return Resize(string, length);
  unsigned short* fresh = length >= 1 ? NewBstr(static_cast<unsigned int>(length)) : nullptr;
  // The old text goes even when there is no new block: a failed change leaves the string empty.
  FreeBstr(string);
  string = fresh;
  return fresh != nullptr || length < 1;
}

bool TBstr::InternalInit(const unsigned short* src, int length) {
  Discard(multibyte);
  if (src == nullptr || length == 0) return AdjustBuffer(0, false);
  if (length < 0) return false;
  const int oldLength = Length(string);
  if (length != oldLength) return Splice(string, 0, oldLength, src, length);
  MoveUnits(string, src, static_cast<size_t>(length));
  return true;
}

bool TBstr::InternalAppend(const unsigned short* src, int length) {
  Discard(multibyte);
  if (src == nullptr || length == 0) return true;
  if (length < 0) return false;
  return AppendUnits(string, src, length);
}

bool TBstr::CreateMultibyteBuffer() const {
  Discard(multibyte);
  const int length = Length(string);
  if (length > kMaxCachedLength) return false;
  const int size = 2 * length + 1;
  multibyte = static_cast<char*>(KestMemAlloc(static_cast<unsigned int>(size)));
  if (multibyte == nullptr) return false;
  KestUnicodeToMultibyte(GetString(), length + 1, multibyte, size);
  return true;
}

void TBstr::DestroyMultibyteBuffer() { Discard(multibyte); }

int TBstr::GetLength() const { return Length(string); }

bool TBstr::IsEmpty() const { return Length(string) == 0; }

void TBstr::Empty() {
  Discard(multibyte);
  AdjustBuffer(0, false);
}

const unsigned short* TBstr::GetString() const { return string != nullptr ? string : kEmptyText; }

const char* TBstr::GetMultibyteString() const {
  if (string == nullptr) return kEmptyMultibyte;
  if (multibyte == nullptr && !CreateMultibyteBuffer()) return kEmptyMultibyte;
  return multibyte;
}

unsigned short** TBstr::GetBstrPtr() {
  Empty();
  return &string;
}

unsigned short** TBstr::GetRawBstrPtr() { return &string; }

void TBstr::Attach(unsigned short* bstr) {
  Discard(multibyte);
  string = bstr;  // the previous text is not freed, on purpose
}

unsigned short* TBstr::Detach() {
  Discard(multibyte);
  unsigned short* bstr = string;
  string = nullptr;
  return bstr;
}

unsigned short* TBstr::Copy() const { return NewBstr(string, BstrLength(string)); }

}  // namespace KEST
