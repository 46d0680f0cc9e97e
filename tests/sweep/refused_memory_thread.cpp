// Operations of kest/thread.h and kest/message.h that ask for memory.

#include "kest/message.h"
#include "kest/thread.h"
#include "sweep/refused_memory.h"

using namespace KEST;

namespace kest_test {

namespace {

int AddOne(void* count) {
  ++*static_cast<int*>(count);
  return 7;
}

// Thread-local data under key 5, while there is a key for all of it.
auto Tls(void* (*add)(int key, unsigned int size)) {
  return [add](Attempts& attempts) {
    TlsInit();
    attempts(TlsThreadTerm, [&] {
      void* const block = add(5, 16);
      return Said(block, block == KestTlsGetData(5));
    });
    TlsThreadTerm();
    TlsTerm();
  };
}

void Callback(unsigned int, void*, void*) {}

// A post, while there is a queue, and whether the message arrives.
auto Posts(bool (*post)()) {
  return [post](Attempts& attempts) {
    MessageInit();
    attempts([&] {
      const bool posted = post();
      unsigned int id;
      void *first, *second;
      const bool arrived = KestGetMessage(&id, &first, &second);
      return Said(posted, arrived);
    });
    MessageTerm();
  };
}

}  // namespace

std::vector<RefusedMemoryRow> ThreadRows() {
  return {
      {{"KEST::TThread::Create(int (*)(void*), void*, bool)"},
       "true true 1",
       {"false false 0"},
       [](Attempts& attempts) {
         int runs = 0;
         TThread thread;
         attempts([&] { runs = 0; },
                  [&] {
                    const bool created = thread.Create(AddOne, &runs, false);
                    const bool ended = thread.WaitForExit(nullptr);
                    return Said(created, ended, runs);
                  });
       }},
      {{"KEST::TThread::ThreadCreate(void*, bool)"},
       "there 7",
       {"null 0"},
       [](Attempts& attempts) {
         int runs = 0;
         TThread thread;
         thread.Create(AddOne, &runs, false);
         thread.WaitForExit(nullptr);
         attempts([&] {
           void* const handle = TThread::ThreadCreate(&thread, false);
           int code = 0;
           if (handle != nullptr) {
             TThread::ThreadWaitForExit(handle, &code);
             TThread::ThreadClose(handle);
           }
           return Said(handle, code);
         });
       }},
      {{"KestCreateThread"},
       "there 1",
       {"null 0"},
       [](Attempts& attempts) {
         int runs = 0;
         attempts([&] { runs = 0; },
                  [&] {
                    TThread* const thread = KestCreateThread(AddOne, &runs, false);
                    KestDestroyThread(thread, true);
                    return Said(thread, runs);
                  });
       }},
      {{"KestTlsAddData"}, "there true", {"null true"}, Tls(KestTlsAddData)},
      {{"KestTlsGetAddData"}, "there true", {"null true"}, Tls(KestTlsGetAddData)},
  };
}

std::vector<RefusedMemoryRow> MessageRows() {
  return {
      {{"KestRegisterMessageCallback"},
       "true true",
       {"false false"},
       [](Attempts& attempts) {
         attempts([] { KestUnregisterMessageCallback(5); },
                  [] {
                    const bool registered = KestRegisterMessageCallback(5, Callback);
                    return Said(registered, KestLookupMessageCallback(5) == Callback);
                  });
         KestUnregisterMessageCallback(5);
       }},
      {{"KestPostMessage"}, "true true", {"false false"}, Posts([] {
         return KestPostMessage(5, nullptr, nullptr);
       })},
      {{"KestPostQuitMessage"}, "true true", {"false false"}, Posts([] {
         return KestPostQuitMessage(nullptr);
       })},
      {{"KEST::MessageInit()"},
       "true",
       {"false"},
       [](Attempts& attempts) {
         attempts(MessageTerm, [] { return Said(MessageInit()); });
         MessageTerm();
       }},
      {{"KEST::InternalCreateMessageQueue()"},
       "there",
       {"null"},
       [](Attempts& attempts) {
         attempts([] {
           void* const queue = InternalCreateMessageQueue();
           InternalDestroyMessageQueue(queue);
           return Said(queue);
         });
       }},
      {{"KEST::InternalPostMessage(void*, unsigned int, void*, void*)"},
       "true true",
       {"false false"},
       [](Attempts& attempts) {
         void* const queue = InternalCreateMessageQueue();
         attempts([&] {
           const bool posted = InternalPostMessage(queue, 5, nullptr, nullptr);
           unsigned int id;
           void *first, *second;
           const bool arrived = InternalGetMessage(queue, id, first, second, false);
           return Said(posted, arrived);
         });
         InternalDestroyMessageQueue(queue);
       }},
  };
}

}  // namespace kest_test
