// The message queue. It is a platform function because a platform with a message queue of its own
// would use that one; POSIX has none that a host's loop could share, so here it is a list and a
// condition. A handle is an SMessageQueue, and null only where that is said.

#include "frame/layout.h"
#include "frame/object.h"
#include "kest/collections.h"
#include "kest/message.h"
#include "kest/thread.h"

namespace {

struct SMessage {
  unsigned int id;
  void* param1;
  void* param2;
};
KEST_SIZE_IS(SMessage, 12, 24);

struct SMessageQueue {
  KEST::TPtrList messages{10};  // of SMessage, the oldest at the head
  KEST::TCondVar signal;        // its mutex guards messages
  void (*availableCallback)(void*) = nullptr;
  void* availableData = nullptr;
};
KEST_SIZE_IS(SMessageQueue, 104, 152);
KEST_FIELD_AT(SMessageQueue, messages, 0, 0);
KEST_FIELD_AT(SMessageQueue, signal, 24, 48);
KEST_FIELD_AT(SMessageQueue, availableCallback, 96, 136);
KEST_FIELD_AT(SMessageQueue, availableData, 100, 144);

SMessageQueue* ToQueue(void* queue) { return static_cast<SMessageQueue*>(queue); }

// Null when there is none.
SMessage* TakeOldest(SMessageQueue* queue) {
  return static_cast<SMessage*>(queue->messages.RemoveHead());
}

// Tells the consumer that the queue is no longer empty. The lock is held.
void Announce(SMessageQueue* queue) {
  void (*const callback)(void*) = __atomic_load_n(&queue->availableCallback, __ATOMIC_ACQUIRE);
  if (callback == nullptr) {
    queue->signal.Signal();
  } else {
    callback(__atomic_load_n(&queue->availableData, __ATOMIC_RELAXED));
  }
}

}  // namespace

namespace KEST {

void* InternalCreateMessageQueue() {
  SMessageQueue* const queue = CreateObject<SMessageQueue>();
  if (queue == nullptr || queue->signal.Init() == 0) return queue;
  DestroyObject(queue);
  return nullptr;
}

void InternalDestroyMessageQueue(void* queue) {
  SMessageQueue* const self = ToQueue(queue);
  if (self == nullptr) return;
  while (SMessage* message = TakeOldest(self)) DestroyObject(message);
  self->signal.Term();
  DestroyObject(self);
}

bool InternalPostMessage(void* queue, unsigned int id, void* param1, void* param2) {
  SMessageQueue* const self = ToQueue(queue);
  SMessage* const message = CreateObject<SMessage>(SMessage{id, param1, param2});
  if (message == nullptr) return false;
  self->signal.Lock();
  const bool wasEmpty = self->messages.IsEmpty();
  const bool added = self->messages.AddTail(message) != nullptr;
  // Only the first message is announced, on purpose: the consumer drains before it waits again.
  if (added && wasEmpty) Announce(self);
  self->signal.Unlock();
  if (!added) DestroyObject(message);
  return added;
}

bool InternalGetMessage(void* queue, unsigned int& id, void*& param1, void*& param2, bool wait) {
  SMessageQueue* const self = ToQueue(queue);
  self->signal.Lock();
  // Once, not in a loop: a wake-up without a message ends the call.
  if (wait && self->messages.IsEmpty()) self->signal.Wait(-1);
  SMessage* const message = TakeOldest(self);
  self->signal.Unlock();
  if (message == nullptr) return false;
  id = message->id;
  param1 = message->param1;
  param2 = message->param2;
  DestroyObject(message);
  return true;
}

void* InternalMessageLoop(void* queue) {
  unsigned int id;
  void* param1 = nullptr;
  void* param2;
  while (InternalGetMessage(queue, id, param1, param2, true) && id != kQuitMessageId) {
    KestGiveMessage(id, param1, param2);
  }
  return param1;
}

void InternalSetMessageAvailableCallback(void* queue, void (*callback)(void*), void* data) {
  // Without the lock. The data goes first, so that who sees a first callback sees its data too.
  __atomic_store_n(&ToQueue(queue)->availableData, data, __ATOMIC_RELAXED);
  __atomic_store_n(&ToQueue(queue)->availableCallback, callback, __ATOMIC_RELEASE);
}

}  // namespace KEST
