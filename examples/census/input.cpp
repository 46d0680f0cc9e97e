#include "input.h"

#include <algorithm>
#include <new>

#include "kest/file.h"
#include "kest/frame.h"
#include "posix.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

namespace {

constexpr long long kMostBytes = 64 * 1024 * 1024;

bool IsBlank(unsigned short unit) { return unit == u' ' || unit == u'\t' || unit == u'\r'; }

bool TextOrder(void* a, void* b) { return *static_cast<TBstr*>(a) < *static_cast<TBstr*>(b); }

}  // namespace

TBstr SystemSpec(const TBstr& system, const TBstr& path) {
  return TFile::RemoveTrailingSeparator(system) + path;
}

bool ReadWhole(const TBstr& spec, TBstr* bytes, TBstr* reason) {
  ForgetError();
  TFile file;
  if (!file.Open(spec, 0, false)) {
    *reason = ErrorText();
    return false;
  }
  const long long length = file.GetLength();
  const int size = length > 0 && length <= kMostBytes ? static_cast<int>(length) : 0;
  char* buffer = static_cast<char*>(KestMemAlloc(static_cast<unsigned int>(size + 1)));
  if (buffer == nullptr || length > kMostBytes) {
    *reason = "too large";
    KestMemFree(buffer);
    return false;
  }
  const bool whole = file.Read(buffer, size) == size;
  *bytes = TBstr(buffer, size);
  *reason = whole ? TBstr() : ErrorText();
  KestMemFree(buffer);
  return whole && bytes->GetLength() == size;
}

bool Lines::Next(TBstr* line) {
  if (at >= text.GetLength()) return false;
  int end = text.Find(u'\n', at);
  if (end < 0) end = text.GetLength();
  *line = text.Mid(at, end - at);
  at = end + 1;
  return true;
}

bool Words::Next(TBstr* word) {
  const int length = line.GetLength();
  while (at < length && IsBlank(line.GetAt(at))) ++at;
  const int start = at;
  while (at < length && !IsBlank(line.GetAt(at))) ++at;
  *word = line.Mid(start, at - start);
  return at > start;
}

TextList::~TextList() {
  for (int i = 0; i < texts.GetSize(); ++i) delete static_cast<TBstr*>(texts[i]);
}

void TextList::Add(const TBstr& text) {
  auto* copy = new (std::nothrow) TBstr(text);
  const int count = texts.GetSize();
  if (copy != nullptr) texts.Add(copy);
  if (texts.GetSize() == count) delete copy;
}

void TextList::RemoveLast() {
  delete static_cast<TBstr*>(texts[GetCount() - 1]);
  texts.RemoveAt(GetCount() - 1);
}

void TextList::Sort() {
  if (!texts.IsEmpty()) std::sort(texts.GetData(), texts.GetData() + texts.GetSize(), TextOrder);
}

}  // namespace census
