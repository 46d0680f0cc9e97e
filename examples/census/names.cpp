#include "names.h"

#include "kest/file.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

namespace {

constexpr unsigned short kDelete = 0x7F;
constexpr unsigned short kFirstSurrogate = 0xD800, kLastSurrogate = 0xDFFF;

bool HasSurrogates(const TBstr& text) {
  for (int i = 0; i < text.GetLength(); ++i) {
    const unsigned short unit = text.GetAt(i);
    if (unit >= kFirstSurrogate && unit <= kLastSurrogate) return true;
  }
  return false;
}

// The text whose UTF-8 form is bytes; empty when there is none. The converters check nothing, so
// what counts is whether the way back leads to the same bytes.
TBstr FromUtf8(const TBstr& bytes) {
  const int length = bytes.GetLength();
  TBstr text;
  if (!text.AdjustBuffer(length, false)) return TBstr();
  const int units =
      KestUtf8ToString(bytes.GetMultibyteString(), length, *text.GetRawBstrPtr(), length);
  if (!text.AdjustBuffer(units, true) || HasSurrogates(text)) return TBstr();

  return ToUtf8(text) == bytes ? text : TBstr();
}

}  // namespace

TBstr GlobLiteral(const TBstr& spec) {
  TBstr literal(spec);
  literal.Replace(KEST_TEXT("\\"), KEST_TEXT("\\\\"));
  literal.Replace(KEST_TEXT("*"), KEST_TEXT("\\*"));
  literal.Replace(KEST_TEXT("?"), KEST_TEXT("\\?"));
  literal.Replace(KEST_TEXT("["), KEST_TEXT("\\["));
  return literal;
}

TBstr EscapeForTable(const TBstr& name) {
  bool escaped;
  TBstr text = EscapeForSums(name, &escaped);
  text.Replace(KEST_TEXT("\t"), KEST_TEXT("\\t"));
  return text;
}

TBstr EscapeForSums(const TBstr& name, bool* escaped) {
  TBstr text(name);
  int replaced = text.Replace(KEST_TEXT("\\"), KEST_TEXT("\\\\"));  // first: the rest adds some
  replaced += text.Replace(KEST_TEXT("\n"), KEST_TEXT("\\n"));
  replaced += text.Replace(KEST_TEXT("\r"), KEST_TEXT("\\r"));
  *escaped = replaced > 0;
  return text;
}

TBstr Readable(const TBstr& name) {
  TBstr text = FromUtf8(name);
  if (text.IsEmpty()) text = name;
  for (int i = 0; i < text.GetLength(); ++i) {
    const unsigned short unit = text.GetAt(i);
    if (unit < u' ' || unit == kDelete) text.SetAt(i, u'?');
  }
  return text;
}

TBstr ToUtf8(const TBstr& text) {
  const int size = static_cast<int>(KestStringUtf8ByteLen(text.GetString()));
  constexpr int kSlack = 2;  // the converter may run that far past the size
  char* utf8 = static_cast<char*>(KestMemAlloc(static_cast<unsigned int>(size + kSlack)));
  if (utf8 == nullptr) return TBstr();
  KestStringToUtf8(text.GetString(), text.GetLength(), utf8, size);
  const TBstr bytes(utf8, size);
  KestMemFree(utf8);
  return bytes;
}

TBstr ExtensionOf(const TBstr& path) {
  const TBstr name = TFile::FileNameFromFullSpec(path);
  const int dot = name.ReverseFind(u'.');
  return dot <= 0 || dot == name.GetLength() - 1 ? TBstr() : name.Mid(dot);
}

}  // namespace census
