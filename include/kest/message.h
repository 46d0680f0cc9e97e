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
//   Failure    False or null, and nothing is changed. Nothing throws.
//   Blocking   Never for long: calls that post or get take the queue's lock for a few instructions.
//   Cost       Constant.
//   Lifetime   The queue lives from KestInitialize to the last KestUninitialize; outside, calls
//              that need it return false, null or at once. Messages still waiting at the stop are
//              dropped. No thread may be in the queue then: quit, join, then stop.
//   Example    examples/queue/queue.cpp
//   See        docs/messages.md
//
//   id         the identifier of a message
//   callback   what to call
//   param1     the message's first parameter, any pointer, null included
//   param2     the message's second parameter, any pointer, null included

#ifndef KEST_MESSAGE_H
#define KEST_MESSAGE_H

#include "kest/export.h"

namespace KEST {

extern KEST_API const unsigned int kFirstMessageId;  // The first identifier that is given out: 1.
extern KEST_API const unsigned int kQuitMessageId;   // The message that ends loops: 0xFFFFFFFF.

// Handles one message, on the thread of the consumer.
typedef void (*TMessageCallback)(unsigned int id, void* param1, void* param2);

}  // namespace KEST

extern "C" {

// A fresh identifier: 1, 2, 3 and so on for the life of the process.
//   Failure   none
//   Threads   one at a time, best the consumer's: the number takes no lock
//   Blocking  never
KEST_API unsigned int KestRequestMessageId(void);

// Does nothing: identifiers are not used again.
//   Failure   none
//   Threads   any
//   Blocking  never
KEST_API void KestReleaseMessageId(unsigned int id);

// Makes callback the one for id. The first registration wins. Registrations are independent of
// start and stop.
//   callback  the function; null counts as none
//   Result    true; false, and nothing changes, when id has a callback, and without memory
//   Threads   the consumer's, or before messages flow: registrations take no lock
//   Blocking  never, save for what the allocator hooks do
//   See       KestUnregisterMessageCallback, KestLookupMessageCallback, docs/messages.md
KEST_API bool KestRegisterMessageCallback(unsigned int id, KEST::TMessageCallback callback);

// Removes the callback of id.
//   Result    true; false when there is none
//   Threads   the consumer's, or before messages flow: registrations take no lock
//   Blocking  never
//   See       KestRegisterMessageCallback
KEST_API bool KestUnregisterMessageCallback(unsigned int id);

// The callback of id, or null.
//   Failure   none
//   Threads   the consumer's, or before messages flow: registrations take no lock
//   Blocking  never
//   See       KestRegisterMessageCallback
KEST_API KEST::TMessageCallback KestLookupMessageCallback(unsigned int id);

// Calls the callback of id at once, on the calling thread and past the queue. The quit identifier
// is like any other here.
//   Result    true; false when there is no callback
//   Threads   any, as long as nobody registers
//   Blocking  as the callback does
//   Cost      that of the callback
//   See       KestPostMessage
KEST_API bool KestGiveMessage(unsigned int id, void* param1, void* param2);

// Appends a message to the queue.
//   Result  true; false without memory, or when the library is not started
//   Cost    constant; a request for memory, and a call of the system when the consumer sleeps
//   See     KestMessageLoop, KestGetMessage, KestGiveMessage
KEST_API bool KestPostMessage(unsigned int id, void* param1, void* param2);

// Posts the message that ends a loop.
//   param1  becomes the loop's result; any pointer, null included
//   Result  true; false without memory, or when the library is not started
//   See     KestMessageLoop
KEST_API bool KestPostQuitMessage(void* param1);

// Takes the oldest message, without waiting.
//   id       receives its identifier; not null
//   param1   receives its first parameter; not null
//   param2   receives its second parameter; not null
//   Result   true; false, with the outputs untouched, when there is none or the library is not
//            started
//   Threads  the consumer's
//   See      KestDispatchMessages
KEST_API bool KestGetMessage(unsigned int* id, void** param1, void** param2);

// Gives every waiting message, without blocking, including those that the callbacks post. A message
// without a callback is dropped. Stops at a quit message, which is dropped too; what follows it
// stays in the queue.
//   Failure   none
//   Threads   the consumer's
//   Blocking  as the callbacks do
//   Cost      that of the callbacks
//   See       KestMessageLoop, KestSetMessageAvailableCallback
KEST_API void KestDispatchMessages(void);

// Waits for messages and gives each, until a quit message, which is not given. A wait that ends for
// no reason ends the loop as well: a program that must not stop for that calls the loop again.
//   Result    the quit message's first parameter; after a wait that ended for no reason that of the
//             message before, or null when none was received
//   Failure   null at once when the library is not started
//   Threads   the consumer's
//   Blocking  until a quit message comes; a wait looks for some microseconds before it sleeps
//   Cost      that of the callbacks
//   See       KestPostQuitMessage, KestDispatchMessages
KEST_API void* KestMessageLoop(void);

// Has callback(data) called whenever the queue turns from empty to not empty, instead of waking a
// blocked consumer.
//
// The callback runs on the posting thread with the queue locked: it wakes the host's own loop and
// neither posts nor gets, which would wait for ever. Messages that already wait are not reported.
//   callback   the function; null goes back to waking a blocked consumer
//   data       passed on to callback, any pointer, null included
//   Failure    none; nothing is done when the library is not started
//   Ownership  data is kept by address and has to stay until another callback is set or the stop
//   Threads    the consumer's, before messages flow
//   See        KestDispatchMessages
KEST_API void KestSetMessageAvailableCallback(void (*callback)(void*), void* data);

}  // extern "C"

namespace KEST {

// Called by the library frame and the platform layer.
//
//   queue    from InternalCreateMessageQueue, not null
//   Example  None: the library makes these calls.
//   See      KestInitialize, InternalCreateMessageQueue, docs/messages.md

// Creates the process's queue, or keeps it when there is one.
//   Result   true; false without memory
//   Threads  the one that starts the library
KEST_API bool MessageInit();

// Destroys the process's queue with the messages in it.
//   Failure  none
//   Threads  the one that stops the library, while no other is in the queue
//   Cost     linear in the messages that wait
KEST_API void MessageTerm();

// A new queue, as an opaque handle; null without memory.
//   Ownership  the caller's, who gives it to InternalDestroyMessageQueue
KEST_API void* InternalCreateMessageQueue();

// Frees a queue and the messages in it, without giving them.
//   queue    from InternalCreateMessageQueue; null is ignored
//   Failure  none
//   Threads  one, while no other is in the queue
//   Cost     linear in the messages that wait
KEST_API void InternalDestroyMessageQueue(void* queue);

// Appends a message to a queue, as KestPostMessage does.
//   Result  true; false without memory
KEST_API bool InternalPostMessage(void* queue, unsigned int id, void* param1, void* param2);

// Takes the oldest message of a queue, as KestGetMessage does.
//   id        receives its identifier
//   param1    receives its first parameter
//   param2    receives its second parameter
//   wait      whether to wait once when the queue is empty
//   Result    true; false, with the outputs untouched, when the queue is empty, after the wait as
//             well
//   Blocking  with wait until a message comes or the wait ends for no reason
KEST_API bool InternalGetMessage(void* queue, unsigned int& id, void*& param1, void*& param2,
                                 bool wait);

// Waits for messages of a queue and gives each, as KestMessageLoop does.
//   Result    the quit message's first parameter, as for KestMessageLoop
//   Blocking  until a quit message comes
//   Cost      that of the callbacks
KEST_API void* InternalMessageLoop(void* queue);

// Has callback(data) called whenever a queue turns from empty to not empty, as
// KestSetMessageAvailableCallback does.
//   callback   the function; null goes back to waking a blocked consumer
//   data       passed on to callback, any pointer, null included
//   Failure    none
KEST_API void InternalSetMessageAvailableCallback(void* queue, void (*callback)(void*), void* data);

}  // namespace KEST

#endif  // KEST_MESSAGE_H
