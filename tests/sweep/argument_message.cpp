// kest/message.h at the edges of its arguments.

#include "collections/element.h"
#include "sweep/argument_sweep.h"

namespace kest_test {

namespace {

using namespace KEST;

unsigned int s_id;
void *s_param1, *s_param2;
int s_woken;

void Note(unsigned int id, void* param1, void* param2) {
  s_id = id;
  s_param1 = param1;
  s_param2 = param2;
}

void Wake(void*) { ++s_woken; }

// The oldest message is this one.
void ExpectMessage(void* queue, unsigned int id, void* param1, void* param2) {
  unsigned int gotId = ~id;
  void *got1 = &gotId, *got2 = &gotId;
  EXPECT_TRUE(InternalGetMessage(queue, gotId, got1, got2, false));
  EXPECT_EQ(id, gotId);
  EXPECT_EQ(param1, got1);
  EXPECT_EQ(param2, got2);
}

void AddMessageRows(Table& table) {
  table.Row("KestReleaseMessageId", [](unsigned int id) {
    const unsigned int next = KestRequestMessageId() + 1;
    KestReleaseMessageId(id);
    EXPECT_EQ(next, KestRequestMessageId());
  });
  table.Row("KestRegisterMessageCallback", [](unsigned int id, bool given) {
    EXPECT_TRUE(KestRegisterMessageCallback(id, given ? Note : nullptr));
    EXPECT_EQ(given ? Note : nullptr, KestLookupMessageCallback(id));
    EXPECT_EQ(!given, KestRegisterMessageCallback(id, Note));
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
  });
  table.Row("KestUnregisterMessageCallback", [](unsigned int id) {
    EXPECT_FALSE(KestUnregisterMessageCallback(id));
    EXPECT_TRUE(KestRegisterMessageCallback(id, Note));
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
    EXPECT_FALSE(KestUnregisterMessageCallback(id));
  });
  table.Row("KestLookupMessageCallback", [](unsigned int id) {
    EXPECT_EQ(nullptr, KestLookupMessageCallback(id));
    EXPECT_TRUE(KestRegisterMessageCallback(id, Note));
    EXPECT_EQ(Note, KestLookupMessageCallback(id));
    EXPECT_EQ(nullptr, KestLookupMessageCallback(id + 1));
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
  });
  table.Row("KestGiveMessage", [](unsigned int id, unsigned int param1, unsigned int param2) {
    EXPECT_FALSE(KestGiveMessage(id, Element(param1), Element(param2)));
    EXPECT_TRUE(KestRegisterMessageCallback(id, Note));
    EXPECT_TRUE(KestGiveMessage(id, Element(param1), Element(param2)));
    EXPECT_EQ(id, s_id);
    EXPECT_EQ(Element(param1), s_param1);
    EXPECT_EQ(Element(param2), s_param2);
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
  });
  table.Row("KestPostMessage", [](unsigned int id, unsigned int param1, unsigned int param2) {
    EXPECT_TRUE(KestRegisterMessageCallback(id, Note));
    s_id = ~id;
    EXPECT_TRUE(KestPostMessage(id, Element(param1), Element(param2)));
    KestDispatchMessages();
    // A quit message ends the dispatch and is not given.
    EXPECT_EQ(id != kQuitMessageId, s_id == id);
    EXPECT_TRUE(KestUnregisterMessageCallback(id));
  });
  table.Row("KestPostQuitMessage", [](unsigned int param1) {
    EXPECT_TRUE(KestPostQuitMessage(Element(param1)));
    EXPECT_EQ(Element(param1), KestMessageLoop());
  });
  table.Row("KestSetMessageAvailableCallback", [](bool given, unsigned int data) {
    s_woken = 0;
    KestSetMessageAvailableCallback(given ? Wake : nullptr, Element(data));
    EXPECT_TRUE(KestPostMessage(1, nullptr, nullptr));
    EXPECT_EQ(given ? 1 : 0, s_woken);
    KestDispatchMessages();
    KestSetMessageAvailableCallback(nullptr, nullptr);
  });
  table.Row("KEST::InternalDestroyMessageQueue(void*)", [](bool given) {
    InternalDestroyMessageQueue(given ? InternalCreateMessageQueue() : nullptr);
  });
  table.Row("KEST::InternalPostMessage(void*, unsigned int, void*, void*)",
            [](unsigned int id, unsigned int param1, unsigned int param2) {
              void* queue = InternalCreateMessageQueue();
              EXPECT_TRUE(InternalPostMessage(queue, id, Element(param1), Element(param2)));
              ExpectMessage(queue, id, Element(param1), Element(param2));
              InternalDestroyMessageQueue(queue);
            });
  table.Row("KEST::InternalGetMessage(void*, unsigned int&, void*&, void*&, bool)", [](bool wait) {
    void* queue = InternalCreateMessageQueue();
    EXPECT_TRUE(InternalPostMessage(queue, 7, nullptr, nullptr));
    unsigned int id;
    void *param1, *param2;
    EXPECT_TRUE(InternalGetMessage(queue, id, param1, param2, wait));
    EXPECT_EQ(7u, id);
    // On an empty queue a wait would have no end.
    if (!wait) {
      EXPECT_FALSE(InternalGetMessage(queue, id, param1, param2, wait));
    }
    InternalDestroyMessageQueue(queue);
  });
  table.Row("KEST::InternalSetMessageAvailableCallback(void*, void (*)(void*), void*)",
            [](bool given, unsigned int data) {
              s_woken = 0;
              void* queue = InternalCreateMessageQueue();
              InternalSetMessageAvailableCallback(queue, given ? Wake : nullptr, Element(data));
              EXPECT_TRUE(InternalPostMessage(queue, 1, nullptr, nullptr));
              EXPECT_EQ(given ? 1 : 0, s_woken);
              InternalDestroyMessageQueue(queue);
            });
}

const Table kMessage(AddMessageRows);

TEST(ArgumentSweep, Message) { kMessage.Run(); }

}  // namespace

}  // namespace kest_test
