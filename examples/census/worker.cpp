#include "worker.h"

#include <limits.h>

#include "kest/bridge/session.h"
#include "kest/digest.h"
#include "kest/file.h"
#include "kest/frame.h"
#include "posix.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

namespace {

constexpr int kBufferKey = 1;  // in the thread-local registry
constexpr int kBufferSize = 128 * 1024;
constexpr long long kBytesPerNews = 8 * 1024 * 1024;
constexpr int kAttempts = 3;  // at a file that changes while it is read

// All three digests over one reading.
struct SDigests {
  KEST::TMd4Digest md4;
  KEST::TMd5Digest md5;
  KEST::TShaDigest sha1;

  void Update(const unsigned char* data, int length) {
    md4.Update(data, length);
    md5.Update(data, length);
    sha1.Update(data, length);
  }
  void Finish(Entry* entry) {
    md4.Finish(entry->md4, sizeof(entry->md4));
    md5.Finish(entry->md5, sizeof(entry->md5));
    sha1.Finish(entry->sha1, sizeof(entry->sha1));
    entry->digested = true;
  }
};

TBstr WithReason(const char* what) {
  const TBstr error = ErrorText();
  return error.IsEmpty() ? TBstr(what) : TBstr(what) + KEST_TEXT(": ") + error;
}

}  // namespace

bool Worker::Start(const TBstr& ownRoot, WorkQueue* ownQueue, const SNews& ownNews) {
  root = ownRoot;
  queue = ownQueue;
  news = ownNews;
  return thread.Create(ThreadProc, this, false);
}

int Worker::ThreadProc(void* self) {
  KEST::TThreadSession session;
  static_cast<Worker*>(self)->Work();
  return 0;
}

void Worker::Work() {
  while (Entry* entry = queue->Take()) {
    if (Examine(entry)) {
      news.PostEntry(entry);
    } else {
      delete entry;
    }
  }
  news.PostEnded();
}

// Completes an entry. False when the census was abandoned before that.
bool Worker::Examine(Entry* entry) {
  const TBstr spec = SpecOf(root, entry->path);
  for (int attempt = 0; attempt < kAttempts; ++attempt) {
    SLook before, after;
    ForgetError();
    if (!LookAt(spec, &before)) {
      entry->kind = kUnknown;
      entry->Fail(ErrorText());
      return true;
    }
    entry->kind = before.kind;
    entry->size = before.size;
    entry->modified = before.modified;
    if (before.kind != kRegular) {  // opening a fifo would wait for its writer, for ever
      entry->Skip(before.kind == kLink ? "not followed" : "not opened");
      return true;
    }
    if (!Digest(spec, entry)) return false;
    if (LookAt(spec, &after) && before == after) return true;
  }
  entry->digested = false;
  entry->Fail("changes while it is read");
  return true;
}

bool Worker::Digest(const TBstr& spec, Entry* entry) {
  entry->reason.Empty();
  entry->problem = entry->digested = false;
  if (entry->size > INT_MAX) {
    entry->Fail("2 GiB or more");
    return true;
  }
  return Read(spec, entry);
}

bool Worker::Read(const TBstr& spec, Entry* entry) {
  ForgetError();
  TFile file;
  auto* buffer = static_cast<unsigned char*>(KestTlsGetAddData(kBufferKey, kBufferSize));
  if (buffer == nullptr || !file.Open(spec, 0, false)) {
    entry->Fail(WithReason("cannot be opened"));
    return true;
  }
  ForgetError();
  SDigests digests;
  long long total = 0;
  // A file that grows without end must not be followed for ever: one byte too many is enough.
  for (int count = kBufferSize; count == kBufferSize && total <= entry->size; total += count) {
    if (queue->IsAbandoned()) return false;
    count = file.Read(buffer, kBufferSize);
    digests.Update(buffer, count);
    Announce(entry, total + count);
  }
  if (total == entry->size) {
    digests.Finish(entry);
  } else {
    entry->Fail(
        WithReason(total < entry->size ? "ends before its size" : "goes on after its size"));
  }
  return true;
}

void Worker::Announce(Entry* entry, long long read) {
  if (read - entry->announced < kBytesPerNews) return;
  news.PostBytes(read - entry->announced);
  entry->announced = read;
}

}  // namespace census
