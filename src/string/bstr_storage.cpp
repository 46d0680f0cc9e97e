// How a TBstr keeps its text: one BSTR of exactly the text's length, and an 8-bit copy on demand.

#include <limits.h>

#include <algorithm>

#include "frame/layout.h"
#include "kest/frame.h"
#include "string/splice.h"
#include "string/units.h"

namespace KEST {

namespace {

// What a caller gets instead of null.
constexpr unsigned short kEmptyText[] = {0};
constexpr char kEmptyMultibyte[] = "";

// The longest text whose 8-bit copy, of 2 * length + 1 bytes, is counted in an int.
constexpr int kMaxCachedLength = (INT_MAX - 1) / 2;

void Discard(char*& multibyte) {
  if (multibyte != nullptr) KestMemFree(multibyte);
  multibyte = nullptr;
}

}  // namespace

KEST_SIZE_IS(TBstr, 8, 16);

TBstr::~TBstr() {
  KEST_FIELD_AT(TBstr, string, 0, 0);
  KEST_FIELD_AT(TBstr, multibyte, 4, 8);
  DestroyMultibyteBuffer();
  KestFreeString(string);
  string = nullptr;
}

bool TBstr::AdjustBuffer(int length, bool keep) {
  const int oldLength = GetLength();
  if (length == oldLength) return true;
  unsigned short* fresh = nullptr;
  if (length >= 1) {
    fresh = KestAllocStringLen(nullptr, static_cast<unsigned int>(length));
    if (fresh != nullptr && keep) {
      MoveUnits(fresh, string, static_cast<size_t>(std::min(oldLength, length)));
    }
  }
  // The old text goes even when there is no new block: a failed change leaves the string empty.
  KestFreeString(string);
  string = fresh;
  return fresh != nullptr || length < 1;
}

bool TBstr::InternalInit(const unsigned short* src, int length) {
  DestroyMultibyteBuffer();
  if (src == nullptr || length == 0) return AdjustBuffer(0, false);
  if (length < 0) return false;
  if (length != GetLength()) return Splice(*this, 0, GetLength(), src, length);
  MoveUnits(string, src, static_cast<size_t>(length));
  return true;
}

bool TBstr::InternalAppend(const unsigned short* src, int length) {
  DestroyMultibyteBuffer();
  if (src == nullptr || length == 0) return true;
  if (length < 0) return false;
  return Splice(*this, GetLength(), 0, src, length);
}

bool TBstr::CreateMultibyteBuffer() const {
  Discard(multibyte);
  const int length = GetLength();
  if (length > kMaxCachedLength) return false;
  const int size = 2 * length + 1;
  multibyte = static_cast<char*>(KestMemAlloc(static_cast<unsigned int>(size)));
  if (multibyte == nullptr) return false;
  KestUnicodeToMultibyte(GetString(), length + 1, multibyte, size);
  return true;
}

void TBstr::DestroyMultibyteBuffer() { Discard(multibyte); }

int TBstr::GetLength() const { return static_cast<int>(KestStringLen(string)); }

bool TBstr::IsEmpty() const { return GetLength() == 0; }

void TBstr::Empty() {
  DestroyMultibyteBuffer();
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
  DestroyMultibyteBuffer();
  string = bstr;  // the previous text is not freed, on purpose
}

unsigned short* TBstr::Detach() {
  DestroyMultibyteBuffer();
  unsigned short* bstr = string;
  string = nullptr;
  return bstr;
}

unsigned short* TBstr::Copy() const { return KestAllocStringLen(string, KestStringLen(string)); }

}  // namespace KEST
