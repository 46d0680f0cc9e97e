// Messages: one queue for the whole process, identifiers, and a callback for each identifier.
//
// A client asks for an identifier, registers a callback for it, and posts messages that carry it
// from any thread. One thread, the consumer, takes them out in the order posted: in a loop that
// blocks, or, when a host has an event loop of its own, whenever the message-available callback has
// woken that. A message goes to the callback of its identifier, on the consumer's thread.
//
//   Threads    Posting is safe from any thread. There is one consumer: a second thread that blocks
//              in the queue may never be woken. Identifiers and callbacks take no lock: ask for and
//              register them on the consumer's thread, or before messages flow.
//   Ownership  The two parameters are passed on and never looked at, nor freed.
//   Lifetime   The queue lives from KestInitialize to the last KestUninitialize; outside, calls
//              that need it return false, null or at once. Messages still waiting at the stop are
//              dropped. No thread may be in the queue then: quit, join, then stop.
//   Example    examples/queue/queue.cpp

#ifndef KEST_MESSAGE_H
#define KEST_MESSAGE_H

#include "kest/export.h"

namespace KEST {

extern KEST_API const unsigned int kFirstMessageId;  // 1
extern KEST_API const unsigned int kQuitMessageId;   // 0xFFFFFFFF: ends loops

// Handles one message.
typedef void (*TMessageCallback)(unsigned int id, void* param1, void* param2);

}  // namespace KEST

extern "C" {

// A fresh identifier: 1, 2, 3, ... for the life of the process.
KEST_API unsigned int KestRequestMessageId(void);

// Does nothing: identifiers are not used again.
KEST_API void KestReleaseMessageId(unsigned int id);

// Makes callback the one for id. The first registration wins: false, and nothing changes, when id
// has a callback; false without memory as well. A null callback counts as none. Registrations are
// independent of start and stop.
KEST_API bool KestRegisterMessageCallback(unsigned int id, KEST::TMessageCallback callback);

// Removes the callback of id. False when there is none.
KEST_API bool KestUnregisterMessageCallback(unsigned int id);

// The callback of id, or null.
KEST_API KEST::TMessageCallback KestLookupMessageCallback(unsigned int id);

// Calls the callback of id at once, on the calling thread and past the queue. False when there is
// none. The quit identifier is like any other here.
KEST_API bool KestGiveMessage(unsigned int id, void* param1, void* param2);

// Appends a message. False without memory, or when the library is not started.
KEST_API bool KestPostMessage(unsigned int id, void* param1, void* param2);

// Posts the message that ends a loop. param1 becomes the loop's result.
KEST_API bool KestPostQuitMessage(void* param1);

// Takes the oldest message, without waiting. False, with the outputs untouched, when there is none.
// The three pointers may not be null.
KEST_API bool KestGetMessage(unsigned int* id, void** param1, void** param2);

// Gives every waiting message, without blocking, including those that the callbacks post. A message
// without a callback is dropped. Stops at a quit message, which is dropped too; what follows it
// stays in the queue.
KEST_API void KestDispatchMessages(void);

// Waits for messages and gives each, until a quit message, which is not given. Returns that
// message's first parameter. A wait that ends for no reason ends the loop as well, with the first
// parameter of the message before, or null when none was received: a program that must not stop for
// that calls the loop again.
KEST_API void* KestMessageLoop(void);

// Has callback(data) called whenever the queue turns from empty to not empty, instead of waking a
// blocked consumer; null goes back to that. It runs on the posting thread with the queue locked: it
// wakes the host's own loop and neither posts nor gets, which would wait for ever. Set it before
// messages flow; messages that already wait are not reported.
KEST_API void KestSetMessageAvailableCallback(void (*callback)(void*), void* data);

}  // extern "C"

// Called by the library frame and the platform layer.

namespace KEST {

// Creates and destroys the process's queue. A second MessageInit keeps the queue; false without
// memory.
KEST_API bool MessageInit();
KEST_API void MessageTerm();

// A queue, as an opaque handle; null without memory.
KEST_API void* InternalCreateMessageQueue();

// Frees a queue and the messages in it, without giving them. Null is ignored.
KEST_API void InternalDestroyMessageQueue(void* queue);

// As the calls above, on a queue that is not null. With wait, a get on an empty queue waits once;
// it is false when the wait ends without a message.
KEST_API bool InternalPostMessage(void* queue, unsigned int id, void* param1, void* param2);
KEST_API bool InternalGetMessage(void* queue, unsigned int& id, void*& param1, void*& param2,
                                 bool wait);
KEST_API void* InternalMessageLoop(void* queue);
KEST_API void InternalSetMessageAvailableCallback(void* queue, void (*callback)(void*), void* data);

}  // namespace KEST

#endif  // KEST_MESSAGE_H
