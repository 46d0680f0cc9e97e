// POSIX side of TFile: a handle is a FILE*, never null.
//
// Positions and lengths are 32-bit numbers here, also where long has 64 bits: what comes in is cut
// to its low 32 bits, what goes out is sign-extended from them.

#include "kest/file.h"

#include <stdio.h>
#include <unistd.h>

namespace {

FILE* Stream(void* handle) { return static_cast<FILE*>(handle); }

long LowWord(long long offset) { return static_cast<int>(offset); }

}  // namespace

namespace KEST {

void* TFile::FileOpen(const TBstr& spec, unsigned int flags, bool create) {
  char mode[4] = {};
  char* end = mode;
  *end++ = create ? 'w' : 'r';
  if ((flags & kOpenReadWrite) != 0) *end++ = '+';
  *end = 'b';
  return fopen(spec.GetMultibyteString(), mode);
}

bool TFile::FileClose(void* h) { return fclose(Stream(h)) == 0; }

int TFile::FileRead(void* h, void* buffer, int count) {
  if (count <= 0) return 0;
  return static_cast<int>(fread(buffer, 1, static_cast<size_t>(count), Stream(h)));
}

int TFile::FileWrite(void* h, const void* buffer, int count) {
  if (count <= 0) return 0;
  return static_cast<int>(fwrite(buffer, 1, static_cast<size_t>(count), Stream(h)));
}

bool TFile::FileFlush(void* h) { return fflush(Stream(h)) == 0; }

long long TFile::FileGetPosition(void* h) { return LowWord(ftell(Stream(h))); }

bool TFile::FileSetPosition(void* h, long long offset, int origin) {
  return fseek(Stream(h), LowWord(offset), origin) == 0;
}

long long TFile::FileGetLength(void* h) {
  const long position = ftell(Stream(h));
  fseek(Stream(h), 0, SEEK_END);
  const long length = ftell(Stream(h));
  fseek(Stream(h), position, SEEK_SET);
  [[maybe_unused]] const long restored = ftell(Stream(h));
  return LowWord(length);
}

bool TFile::FileSetLength(void* h, long long length) {
  const int descriptor = fileno(Stream(h));
  return descriptor != -1 && ftruncate(descriptor, LowWord(length)) == 0;
}

}  // namespace KEST
