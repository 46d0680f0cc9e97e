// Message identifiers: 1, 2, 3, ... in order of request.

#include "kest/message.h"

namespace KEST {

const unsigned int kFirstMessageId = 1;
const unsigned int kQuitMessageId = 0xFFFFFFFF;

}  // namespace KEST

namespace {

unsigned int s_nextId = 0;  // 0: none handed out yet

}  // namespace

extern "C" {

unsigned int KestRequestMessageId(void) {
  if (s_nextId == 0) s_nextId = KEST::kFirstMessageId;
  return s_nextId++;
}

// An identifier is never handed out twice: a message may still be under way to it.
void KestReleaseMessageId(unsigned int) {}

}  // extern "C"
