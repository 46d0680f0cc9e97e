#include "news.h"

#include <stdint.h>

#include "kest/message.h"
#include "kest/thread.h"

namespace census {

namespace {

constexpr unsigned int kRetryMs = 20;

// A post fails only for want of a few bytes. Losing it would falsify the census or leave the main
// thread waiting for ever, so it is tried until there is room.
void PostSurely(unsigned int id, void* param1, void* param2) {
  while (!KestPostMessage(id, param1, param2)) KEST::TThread::Sleep(kRetryMs);
}

}  // namespace

void SNews::PostEntry(Entry* entry) const { PostSurely(entryId, census, entry); }

void SNews::PostBytes(long long bytes) const {
  PostSurely(bytesId, census, reinterpret_cast<void*>(static_cast<intptr_t>(bytes)));
}

void SNews::PostEnded() const { PostSurely(endedId, census, nullptr); }

void SNews::PostInterrupt(int signal) const {
  PostSurely(interruptId, census, reinterpret_cast<void*>(static_cast<intptr_t>(signal)));
}

}  // namespace census
