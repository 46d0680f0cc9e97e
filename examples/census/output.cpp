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

bool OutputFile::Open(const TBstr& spec, EEncoding ownEncoding) {
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
  const unsigned short* probe = KEST_TEXT("probe");
  OutputFile out;
  if (!Begin(out, probe, kBytes)) return false;
  const bool good = End(out, probe);
  Discard(probe);
  return good;
}

bool OutputFolder::Begin(OutputFile& out, const unsigned short* name, EEncoding encoding) {
  ForgetError();
  return out.Open(PartOf(name), encoding) || Fail(PartOf(name));
}

bool OutputFolder::End(OutputFile& out, const unsigned short* name) {
  return out.Close() || Fail(PartOf(name));
}

bool OutputFolder::Remove(const unsigned short* name) {
  ForgetError();
  SLook look;
  const bool there = LookAt(SpecOf(name), &look);
  return !there || TFile::Remove(SpecOf(name)) || Fail(SpecOf(name));
}

bool OutputFolder::Publish(const unsigned short* name) {
  ForgetError();
  return TFile::Rename(PartOf(name), SpecOf(name)) || Fail(SpecOf(name));
}

void OutputFolder::Discard(const unsigned short* name) { TFile::Remove(PartOf(name)); }

TBstr OutputFolder::SpecOf(const unsigned short* name) const {
  return TFile::AppendFileNameToSpec(folder, name);
}

TBstr OutputFolder::PartOf(const unsigned short* name) const {
  return SpecOf(name) + KEST_TEXT(".part");
}

bool OutputFolder::Fail(const TBstr& spec) {
  const TBstr reason = ErrorText();
  error = spec + KEST_TEXT(": ") + (reason.IsEmpty() ? TBstr("cannot be written") : reason);
  return false;
}

}  // namespace census
