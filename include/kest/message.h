#ifndef KEST_MESSAGE_H
#define KEST_MESSAGE_H

#include "kest/export.h"
namespace KEST {
extern KEST_API const unsigned int kFirstMessageId;
extern KEST_API const unsigned int kQuitMessageId;
typedef void (*TMessageCallback)(unsigned int id, void* param1, void* param2);
}  // namespace KEST
extern "C" {
KEST_API unsigned int KestRequestMessageId(void);
KEST_API void KestReleaseMessageId(unsigned int id);
KEST_API bool KestRegisterMessageCallback(unsigned int id, KEST::TMessageCallback callback);
KEST_API bool KestUnregisterMessageCallback(unsigned int id);
KEST_API KEST::TMessageCallback KestLookupMessageCallback(unsigned int id);
KEST_API bool KestGiveMessage(unsigned int id, void* param1, void* param2);
KEST_API bool KestPostMessage(unsigned int id, void* param1, void* param2);
KEST_API bool KestPostQuitMessage(void* param1);
KEST_API bool KestGetMessage(unsigned int* id, void** param1, void** param2);
KEST_API void KestDispatchMessages(void);
KEST_API void* KestMessageLoop(void);
KEST_API void KestSetMessageAvailableCallback(void (*callback)(void*), void* data);
}
// Called by the library frame and the platform layer.
namespace KEST {
KEST_API bool MessageInit();
KEST_API void MessageTerm();
KEST_API void* InternalCreateMessageQueue();
KEST_API void InternalDestroyMessageQueue(void* queue);
KEST_API bool InternalPostMessage(void* queue, unsigned int id, void* param1, void* param2);
KEST_API bool InternalGetMessage(void* queue, unsigned int& id, void*& param1, void*& param2,
                                 bool wait);
KEST_API void* InternalMessageLoop(void* queue);
KEST_API void InternalSetMessageAvailableCallback(void* queue, void (*callback)(void*), void* data);
}  // namespace KEST

#endif  // KEST_MESSAGE_H
