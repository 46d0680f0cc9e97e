#include "output.h"

#include "posix.h"

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileInfo;

namespace census {

namespace {

constexpr unsigned int kCreateFlags = TFile::kOpenReadWrite;
constexpr unsigned short kByteOrderMark = 0xFEFF;
constexpr int kUnitsPerPiece = 1024;  // text is converted in pieces, on the stack
constexpr int kUtf8BytesPerUnit = 3;

}  // namespace

bool OutputFile::Open(const TBstr& ownSpec, EEncoding ownEncoding) {
  spec = ownSpec;
  encoding = ownEncoding;
  failed = false;
  if (!file.Open(spec, kCreateFlags, true)) return false;
  if (encoding == kUtf16) PutBytes(&kByteOrderMark, sizeof(kByteOrderMark));
  return true;
}

void OutputFile::Put(const TBstr& text) {
  const unsigned short* units = text.GetString();
  if (encoding == kUtf16) return PutBytes(units, text.GetLength() * 2);
  char bytes[kUnitsPerPiece * kUtf8BytesPerUnit];
  for (int left = text.GetLength(); left > 0; left -= kUnitsPerPiece) {
    const int piece = left < kUnitsPerPiece ? left : kUnitsPerPiece;
    const int count = encoding == kUtf8
                          ? KestStringToUtf8(units, piece, bytes, sizeof(bytes))
                          : KestUnicodeToMultibyte(units, piece, bytes, sizeof(bytes));
    PutBytes(bytes, count);
    units += piece;
  }
}

bool OutputFile::Close() {
  // Closing flushes first, and after a failed flush the file is still open: its destructor gives
  // up what could not be written.
  return file.Close() && !failed;
}

void OutputFile::PutBytes(const void* bytes, int count) {
  if (failed || count == 0) return;
  failed = file.Write(bytes, count) != count;
}

bool OutputFolder::Prepare() {
  ForgetError();
  if (!TFile::CreatePath(folder)) return Fail(folder);
  const TBstr probe = PartOf("probe");
  ForgetError();
  OutputFile out;
  const bool good = (out.Open(probe, kBytes) && out.Close()) || Fail(probe);
  TFile::Remove(probe);
  return good;
}

bool OutputFolder::MakeFolder(const TBstr& name) {
  ForgetError();
  return TFile::CreatePath(SpecOf(name)) || Fail(SpecOf(name));
}

bool OutputFolder::Begin(OutputFile& out, const TBstr& name, EEncoding encoding) {
  ForgetError();
  const int count = names.GetCount();
  names.Add(name);
  if (names.GetCount() > count && out.Open(PartOf(name), encoding)) return true;
  return Fail(PartOf(name));
}

bool OutputFolder::End(OutputFile& out) { return out.Close() || Fail(out.GetSpec()); }

bool OutputFolder::Publish(const TBstr& seal) {
  ForgetError();
  SLook look;
  if (LookAt(SpecOf(seal), &look) && !TFile::Remove(SpecOf(seal))) return Fail(SpecOf(seal));
  for (int i = 0; i < names.GetCount(); ++i) {
    if (names.GetAt(i) != seal && !Rename(names.GetAt(i))) return false;
  }
  return Rename(seal);
}

void OutputFolder::Drop() {
  TFile::Remove(PartOf(names.GetAt(names.GetCount() - 1)));
  names.RemoveLast();
}

void OutputFolder::Discard() {
  for (int i = 0; i < names.GetCount(); ++i) TFile::Remove(PartOf(names.GetAt(i)));
}

TBstr OutputFolder::PartOf(const TBstr& name) const { return SpecOf(name) + KEST_TEXT(".part"); }

bool OutputFolder::Rename(const TBstr& name) {
  ForgetError();
  return TFile::Rename(PartOf(name), SpecOf(name)) || Fail(SpecOf(name));
}

TBstr OutputFolder::SpecOf(const TBstr& name) const {
  return TFile::AppendFileNameToSpec(folder, name);
}

bool OutputFolder::Fail(const TBstr& spec) {
  const TBstr reason = ErrorText();
  error = spec + KEST_TEXT(": ") + (reason.IsEmpty() ? TBstr("cannot be written") : reason);
  return false;
}

}  // namespace census
