// TFile's object layer: keeps the stream and its specification, refuses calls on a closed object.

#include "kest/file.h"

#include <stdint.h>

#include <utility>

#include "frame/layout.h"

namespace {

// Streams lie at even addresses. The lowest bit of a handle remembers that a Close has failed to
// flush it, so that the next Close releases the stream whatever becomes of the data.
constexpr uintptr_t kFlushFailed = 1;

bool HasFlushFailed(void* handle) {
  return (reinterpret_cast<uintptr_t>(handle) & kFlushFailed) != 0;
}

void* MarkFlushFailed(void* handle) {
  return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(handle) | kFlushFailed);
}

void* StreamOf(void* handle) {
  return reinterpret_cast<void*>(reinterpret_cast<uintptr_t>(handle) & ~kFlushFailed);
}

}  // namespace

namespace KEST {

TFile::TFile() : handle(nullptr) {
  KEST_SIZE_IS(TFile, 12, 24);
  KEST_FIELD_AT(TFile, handle, 0, 0);
  KEST_FIELD_AT(TFile, spec, 4, 8);
}

TFile::~TFile() {
  if (IsOpen() && !Close()) Close();
}

bool TFile::Open(const TBstr& fileSpec, unsigned int flags, bool create) {
  if (IsOpen() || fileSpec.IsEmpty()) return false;
  if (create && (flags & kOpenReadWrite) == 0) return false;
  // Copied first: no file is created or truncated that could not be kept.
  TBstr copy(fileSpec);
  if (copy.IsEmpty()) return false;
  handle = FileOpen(fileSpec, flags, create);
  if (!IsOpen()) return false;
  spec = std::move(copy);
  return true;
}

bool TFile::Close() {
  if (!IsOpen()) return false;
  // Closing a stream destroys it even when its data cannot be written, flushing does not.
  if (!HasFlushFailed(handle) && !FileFlush(handle)) {
    handle = MarkFlushFailed(handle);
    return false;
  }
  const bool closed = FileClose(StreamOf(handle));
  handle = nullptr;
  spec.Empty();
  return closed;
}

bool TFile::IsOpen() const { return handle != nullptr; }

int TFile::Read(void* buffer, int count) {
  if (handle == nullptr || buffer == nullptr) return 0;
  return FileRead(StreamOf(handle), buffer, count);
}

int TFile::Write(const void* buffer, int count) {
  if (handle == nullptr || buffer == nullptr) return 0;
  return FileWrite(StreamOf(handle), buffer, count);
}

bool TFile::Flush() { return IsOpen() && FileFlush(StreamOf(handle)); }

long long TFile::GetPosition() const { return IsOpen() ? FileGetPosition(StreamOf(handle)) : 0; }

bool TFile::SetPosition(long long offset, int origin) {
  return IsOpen() && FileSetPosition(StreamOf(handle), offset, origin);
}

long long TFile::GetLength() const { return IsOpen() ? FileGetLength(StreamOf(handle)) : 0; }

bool TFile::SetLength(long long length) {
  return IsOpen() && FileSetLength(StreamOf(handle), length);
}

const TBstr& TFile::GetFileSpec() const { return spec; }

}  // namespace KEST
