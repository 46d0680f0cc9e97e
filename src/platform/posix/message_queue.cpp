// The message queue. It is a platform function because a platform with a message queue of its own
// would use that one; POSIX has none that a host's loop could share, so here it is a list and a
// condition. A handle is an SMessageQueue, and null only where that is said.
//
// With the default hooks messages go through a lane, which uses its memory again. With a client's
// hooks they go on a list, with the memory that is described. The hooks may change under a queue:
// what is on the lane is older than what is on the list.

#include <stddef.h>

#include <algorithm>
#include <memory>

#include "frame/default_hooks.h"
#include "frame/layout.h"
#include "frame/object.h"
#include "kest/message.h"
#include "kest/thread.h"
#include "platform/posix/cores.h"
#include "platform/posix/message_lane.h"
#include "platform/posix/message_list.h"

namespace {

using KEST::SMessage;
using KEST::SPlex;
using KEST::TMessageLane;
using KEST::TMessageList;

KEST_SIZE_IS(SMessage, 12, 24);

struct SMessageQueue {
  TMessageList list;
  TMessageLane* lane = nullptr;  // of a queue that was created with the default hooks
  KEST::TCondVar signal;         // its mutex guards the list and the posters' end of the lane
  void (*availableCallback)(void*) = nullptr;
  void* availableData = nullptr;
};
KEST_SIZE_IS(SMessageQueue, 104, 152);
KEST_FIELD_AT(SMessageQueue, signal, 24, 48);
KEST_FIELD_AT(SMessageQueue, availableCallback, 96, 136);
KEST_FIELD_AT(SMessageQueue, availableData, 100, 144);

// A queue with its lane. Posting writes to the lock, which therefore begins a cache line: taking
// reads what lies before and behind it.
struct SQueueWithLane {
  TMessageLane lane;
  char gap[KEST::kCacheLine - offsetof(SMessageQueue, signal)];
  SMessageQueue queue;
  void* block = nullptr;  // that all this lies in
};
constexpr size_t kQueueAt = offsetof(SQueueWithLane, queue);
static_assert((kQueueAt + offsetof(SMessageQueue, signal)) % KEST::kCacheLine == 0);

SQueueWithLane* WithLane(SMessageQueue* queue) {
  return reinterpret_cast<SQueueWithLane*>(reinterpret_cast<char*>(queue) - kQueueAt);
}

SMessageQueue* CreateQueueWithLane() {
  size_t space = sizeof(SQueueWithLane) + KEST::kCacheLine;
  void* const block = KestMemAlloc(static_cast<unsigned int>(space));
  if (block == nullptr) return nullptr;
  void* aligned = block;
  std::align(KEST::kCacheLine, sizeof(SQueueWithLane), aligned, space);
  ::new (aligned) SQueueWithLane;
  SQueueWithLane* const self = static_cast<SQueueWithLane*>(aligned);
  self->block = block;
  self->queue.lane = &self->lane;
  if (self->lane.Init()) return &self->queue;
  KestMemFree(block);
  return nullptr;
}

void FreeQueue(SMessageQueue* queue) {
  if (queue->lane == nullptr) {
    KEST::DestroyObject(queue);
    return;
  }
  void* const block = WithLane(queue)->block;
  WithLane(queue)->~SQueueWithLane();
  KestMemFree(block);
}

SMessageQueue* ToQueue(void* queue) { return static_cast<SMessageQueue*>(queue); }

auto AvailableCallback(const SMessageQueue* queue) {
  return __atomic_load_n(&queue->availableCallback, __ATOMIC_ACQUIRE);
}

// Tells the consumer that the queue is no longer empty. The lock is held.
void Announce(SMessageQueue* queue) {
  void (*const callback)(void*) = AvailableCallback(queue);
  if (callback == nullptr) {
    queue->signal.Signal();
  } else {
    callback(__atomic_load_n(&queue->availableData, __ATOMIC_RELAXED));
  }
}

// ---- Posting

// False when older messages are on the list, or without memory, which added tells apart.
bool PostToLane(SMessageQueue* queue, const SMessage& message, bool& added) {
  queue->signal.Lock();
  const bool inOrder = queue->list.IsEmpty();
  if (inOrder) {
    const bool wasEmpty = queue->lane->IsEmpty();
    added = queue->lane->Post(message);
    // Only the first message is announced, on purpose: the consumer drains before it waits again.
    if (added && wasEmpty) Announce(queue);
  }
  queue->signal.Unlock();
  return inOrder;
}

bool PostToList(SMessageQueue* queue, SMessage* message) {
  // An empty list has no nodes. They are taken before the lock, which the consumer may want.
  TMessageList::SNodes fresh;
  const bool first = queue->list.SeemsEmpty();
  if (first) fresh.Get();
  queue->signal.Lock();
  const bool added = queue->list.MakeRoom(fresh, !first);
  if (added) {
    const bool wasEmpty =
        queue->list.IsEmpty() && (queue->lane == nullptr || queue->lane->IsEmpty());
    queue->list.Append(message);
    if (wasEmpty) Announce(queue);
  }
  queue->signal.Unlock();
  return added;
}

// ---- Taking

// What a taken message leaves, to be freed when the lock has been given back.
struct SLeft {
  SMessage* record = nullptr;
  SPlex* nodes = nullptr;
};

// The lock is held.
bool TakeLocked(SMessageQueue* queue, SMessage& message, SLeft& left) {
  if (queue->lane != nullptr && queue->lane->Take(message)) return true;
  left.record = queue->list.Take(left.nodes);
  if (left.record == nullptr) return false;
  message = *left.record;
  return true;
}

void UnlockAndFree(SMessageQueue* queue, const SLeft& left) {
  queue->signal.Unlock();
  if (left.nodes != nullptr) left.nodes->FreeDataChain();
  KEST::DestroyObject(left.record);
}

// Takes the oldest message if there is one, without the lock where that is possible. With a
// callback it is not: that has to have run before others see the message that it announces.
bool TakeNow(SMessageQueue* queue, SMessage& message) {
  SLeft left;
  if (AvailableCallback(queue) == nullptr) {
    if (queue->list.IsFrontApart()) {
      left.record = queue->list.TakeUnlessLast();
      if (left.record != nullptr) {
        message = *left.record;
        KEST::DestroyObject(left.record);
        return true;
      }
    } else if (queue->lane != nullptr && queue->lane->Take(message)) {
      return true;
    }
    if (queue->list.SeemsEmpty()) return false;
  }
  queue->signal.Lock();
  const bool taken = TakeLocked(queue, message, left);
  UnlockAndFree(queue, left);
  return taken;
}

// Once, not in a loop: a wake-up without a message ends the call.
bool TakeOrSleep(SMessageQueue* queue, SMessage& message) {
  SLeft left;
  queue->signal.Lock();
  bool taken = TakeLocked(queue, message, left);
  if (!taken) {
    queue->signal.Wait(-1);
    taken = TakeLocked(queue, message, left);
  }
  UnlockAndFree(queue, left);
  return taken;
}

// ---- Looking

// A consumer that finds the queue empty looks at it for a while before it sleeps: a message that
// another core is about to post comes sooner than a wake-up. It looks as often as it has paid of
// late.
constexpr int kMostLooks = 256;
constexpr int kLooksInARow = 16;  // without a pause between them
constexpr int kLooksBeyond = 32;  // more than four times what the last success took
constexpr int kFewestLooks = 4;

// Two threads that answer each other would sleep for ever after both have slept once, as each look
// ends before the other thread is awake. So now and then a look lasts as long as a wake-up. Where
// that finds a message, so do the next ones, until the other thread's long look meets a quick
// answer; not again soon, because messages may just happen to come at that pace.
constexpr int kLongLooks = 2048;
constexpr unsigned int kWaitsPerLongLook = 64;
constexpr unsigned int kWaitsPerPatience = 1024;

// When messages come in a stream, a consumer that looks at once takes each from under the poster's
// hands, and both wait for the memory between them. Then it rests first, so that several come
// together. Now and then it tries whether they do.
constexpr int kPausesPerRest = 32;
constexpr unsigned int kWaitsPerRest = 64;
constexpr unsigned int kStream = 4;

// What a thread that takes messages has found of late.
struct SConsumer {
  int looks;  // for the next wait; below 0 before the first one
  bool rested;
  unsigned int waits;
  unsigned int taken;        // messages since the last wait began
  unsigned int patientFrom;  // the wait since when all looks were long, for a while
};

// In the static thread block, because the general model may allocate on first use and has no result
// for a failure.
thread_local SConsumer t_consumer
    __attribute__((tls_model("initial-exec"))) = {-1, false, 0, 0, 0u - kWaitsPerPatience};

void Rest() {
  for (int i = 0; i < kPausesPerRest; ++i) KEST::Pause();
}

// How often this wait looks.
int Looks(const SConsumer& self) {
  if (self.looks == 0) return 0;
  const bool isPatient = self.waits - self.patientFrom < kWaitsPerLongLook;
  return isPatient || self.waits % kWaitsPerLongLook == 0 ? kLongLooks : self.looks;
}

// How often the next one does, after this one has looked in vain. A thread that has one core must
// not: whatever it waits for needs that core.
int LooksAfterFailure(const SConsumer& self) {
  return KEST::HasSeveralCores() ? std::max(self.looks / 2, kFewestLooks) : 0;
}

bool Look(SMessageQueue* queue, SMessage& message) {
  SConsumer& self = t_consumer;
  ++self.waits;
  if (self.looks < 0) self.looks = KEST::HasSeveralCores() ? kMostLooks : 0;
  self.rested = self.rested ? self.taken >= kStream : self.waits % kWaitsPerRest == 0;
  self.taken = 0;
  if (AvailableCallback(queue) != nullptr) return false;
  if (self.rested && self.looks > 0) Rest();
  const int looks = Looks(self);
  for (int i = 0; i < looks; ++i) {
    if (TakeNow(queue, message)) {
      self.looks = std::min(4 * i + kLooksBeyond, kMostLooks);
      if (i >= kMostLooks && self.waits - self.patientFrom >= kWaitsPerPatience) {
        self.patientFrom = self.waits;
      }
      return true;
    }
    if (i >= kLooksInARow) KEST::Pause();
  }
  self.looks = LooksAfterFailure(self);
  return false;
}

}  // namespace

namespace KEST {

void* InternalCreateMessageQueue() {
  SMessageQueue* const queue =
      UsesDefaultHooks() ? CreateQueueWithLane() : CreateObject<SMessageQueue>();
  if (queue == nullptr) return nullptr;
  if (queue->signal.Init() != 0) {
    FreeQueue(queue);
    return nullptr;
  }
  if (queue->lane == nullptr) queue->list.MoveFront();
  return queue;
}

void InternalDestroyMessageQueue(void* queue) {
  SMessageQueue* const self = ToQueue(queue);
  if (self == nullptr) return;
  SPlex* nodes = nullptr;
  while (SMessage* message = self->list.Take(nodes)) DestroyObject(message);
  if (nodes != nullptr) nodes->FreeDataChain();
  self->list.MoveFrontBack();
  self->signal.Term();
  FreeQueue(self);
}

bool InternalPostMessage(void* queue, unsigned int id, void* param1, void* param2) {
  SMessageQueue* const self = ToQueue(queue);
  const SMessage message = {id, param1, param2};
  bool added;
  if (self->lane != nullptr && UsesDefaultHooks() && PostToLane(self, message, added)) return added;
  SMessage* const record = CreateObject<SMessage>(message);
  if (record == nullptr) return false;
  added = PostToList(self, record);
  if (!added) DestroyObject(record);
  return added;
}

bool InternalGetMessage(void* queue, unsigned int& id, void*& param1, void*& param2, bool wait) {
  SMessageQueue* const self = ToQueue(queue);
  SMessage message;
  const bool taken =
      TakeNow(self, message) || (wait && (Look(self, message) || TakeOrSleep(self, message)));
  if (!taken) return false;
  ++t_consumer.taken;
  id = message.id;
  param1 = message.param1;
  param2 = message.param2;
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
