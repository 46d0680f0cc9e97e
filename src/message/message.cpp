// The process's one message queue: posting, getting, dispatch and the loop. The queue itself is a
// platform function, see platform/posix/message_queue.cpp.

#include "kest/message.h"

namespace {

void* s_queue = nullptr;  // null outside start and stop

}  // namespace

extern "C" {

bool KestPostMessage(unsigned int id, void* param1, void* param2) {
  return s_queue != nullptr && KEST::InternalPostMessage(s_queue, id, param1, param2);
}

bool KestPostQuitMessage(void* param1) {
  return KestPostMessage(KEST::kQuitMessageId, param1, nullptr);
}

bool KestGetMessage(unsigned int* id, void** param1, void** param2) {
  return s_queue != nullptr && KEST::InternalGetMessage(s_queue, *id, *param1, *param2, false);
}

void KestDispatchMessages(void) {
  unsigned int id;
  void* param1;
  void* param2;
  while (KestGetMessage(&id, &param1, &param2) && id != KEST::kQuitMessageId) {
    KestGiveMessage(id, param1, param2);
  }
}

void* KestMessageLoop(void) {
  return s_queue != nullptr ? KEST::InternalMessageLoop(s_queue) : nullptr;
}

void KestSetMessageAvailableCallback(void (*callback)(void*), void* data) {
  if (s_queue != nullptr) KEST::InternalSetMessageAvailableCallback(s_queue, callback, data);
}

}  // extern "C"

namespace KEST {

bool MessageInit() {
  if (s_queue == nullptr) s_queue = InternalCreateMessageQueue();
  return s_queue != nullptr;
}

void MessageTerm() {
  InternalDestroyMessageQueue(s_queue);  // which ignores null
  s_queue = nullptr;
}

}  // namespace KEST
