// The message queue, its callbacks and its loops on one thread, against std::deque and std::map.
// A callback of the kinds below changes queue and callbacks while messages are being given.

#include <deque>
#include <map>

#include "collections/element.h"
#include "fuzz/steps.h"
#include "kest/message.h"

namespace {

using kest_fuzz::Memory;
using kest_fuzz::StepInput;

constexpr unsigned int kQuit = 0xFFFFFFFF;
constexpr unsigned int kIds[] = {1, 2, 3, 18, 0, 0x80000000, kQuit};
constexpr int kIdCount = 7;
constexpr int kMostActions = 12;  // of callbacks, for each step

struct SMessage {
  unsigned int id;
  void* param1;
  void* param2;

  bool operator==(const SMessage& other) const {
    return id == other.id && param1 == other.param1 && param2 == other.param2;
  }
};

class Messages {
 public:
  Messages(StepInput&, Memory& all) : memory(all) {
    s_self = this;
    FUZZ_CHECK(kQuit == KEST::kQuitMessageId && KEST::MessageInit());
  }
  ~Messages() {
    for (const auto& entry : callbacks) FUZZ_CHECK(KestUnregisterMessageCallback(entry.first));
    KEST::MessageTerm();
  }

  void Step(int step, StepInput& in) {
    actionsLeft = kMostActions;
    const SMessage message = {kIds[in.Below(kIdCount)], kest_test::Element(in.Byte()),
                              kest_test::Element(static_cast<uintptr_t>(step))};
    switch (step % 10) {
      case 0:
      case 1:
        return Post(message);
      case 2:
        return Get();
      case 3:
        return Register(message.id, in.Below(kKinds + 1));
      case 4:
        return Unregister(message.id);
      case 5:
        return Give(message);
      case 6:
        KestDispatchMessages();
        Drained();
        break;
      case 7:
        return Loop();
      case 8:
        announcing = in.Bool() && started;
        KestSetMessageAvailableCallback(announcing ? Available : nullptr, this);
        break;
      default:
        if (in.Below(4) == 0) return Restart();
        FUZZ_CHECK(KestRequestMessageId() + 1 == KestRequestMessageId());
        KestReleaseMessageId(message.id);
    }
  }

 private:
  static constexpr int kKinds = 5;
  enum EKind { kPlain, kPosts, kGives, kRegisters, kUnregisters };

  template <int kKind>
  static void Callback(unsigned int id, void* param1, void* param2) {
    s_self->Called(kKind, {id, param1, param2});
  }
  static constexpr KEST::TMessageCallback kCallbacks[kKinds + 1] = {
      Callback<kPlain>,     Callback<kPosts>,       Callback<kGives>,
      Callback<kRegisters>, Callback<kUnregisters>, nullptr};

  static void Available(void* self) { ++static_cast<Messages*>(self)->announced; }

  void Post(const SMessage& message) {
    const int before = announced, refusals = memory.Refusals();
    const bool posted = message.id == kQuit && message.param2 == nullptr
                            ? KestPostQuitMessage(message.param1)
                            : KestPostMessage(message.id, message.param1, message.param2);
    FUZZ_CHECK(posted == (started && memory.Refusals() == refusals));
    // Only the first message is announced.
    FUZZ_CHECK(announced == before + (posted && announcing && queue.empty() ? 1 : 0));
    if (posted) queue.push_back(message);
  }

  void Get() {
    SMessage message = {77, this, this};
    const SMessage untouched = message;
    const bool got = KestGetMessage(&message.id, &message.param1, &message.param2);
    FUZZ_CHECK(got == !queue.empty());
    FUZZ_CHECK(message == (got ? queue.front() : untouched));
    if (got) queue.pop_front();
  }

  void Register(unsigned int id, int kind) {
    const int refusals = memory.Refusals();
    const bool known = callbacks.count(id) != 0;
    const KEST::TMessageCallback callback = kCallbacks[kind];
    const bool registered = KestRegisterMessageCallback(id, callback);
    // Null counts as none, and there is always room for that.
    FUZZ_CHECK(registered == (!known && (callback == nullptr || memory.Refusals() == refusals)));
    if (registered && callback != nullptr) callbacks[id] = callback;
    LooksUp(id);
  }
  void Unregister(unsigned int id) {
    FUZZ_CHECK(KestUnregisterMessageCallback(id) == (callbacks.erase(id) != 0));
    LooksUp(id);
  }
  void LooksUp(unsigned int id) const {
    const auto found = callbacks.find(id);
    FUZZ_CHECK(KestLookupMessageCallback(id) ==
               (found != callbacks.end() ? found->second : nullptr));
  }

  void Give(const SMessage& message) {
    const bool known = callbacks.count(message.id) != 0;
    const size_t before = given.size();
    if (known) given.push_back(message);
    FUZZ_CHECK(KestGiveMessage(message.id, message.param1, message.param2) == known);
    FUZZ_CHECK(given.size() == before);
  }

  // A message that was given past the queue, or else the next in it that has a callback.
  void Called(int kind, const SMessage& message) {
    if (!given.empty()) {
      FUZZ_CHECK(message == given.back());
      given.pop_back();
    } else {
      DropUntil(message);
      queue.pop_front();
    }
    if (actionsLeft-- <= 0) return;
    const unsigned int otherId = kIds[static_cast<unsigned int>(actionsLeft) % (kIdCount - 1)];
    switch (kind) {
      case kPosts:
        return Post({otherId, message.param2, message.param1});
      case kGives:
        return Give({otherId, message.param2, message.param1});
      case kRegisters:
        return Register(otherId, actionsLeft % kKinds);
      case kUnregisters:
        return Unregister(message.id);
      default:
        break;
    }
  }

  // Before message is given, those without a callback are dropped.
  void DropUntil(const SMessage& message) {
    while (!queue.empty() && callbacks.count(queue.front().id) == 0) {
      FUZZ_CHECK(queue.front().id != kQuit);
      queue.pop_front();
    }
    FUZZ_CHECK(!queue.empty() && queue.front() == message);
    FUZZ_CHECK(message.id != kQuit);
  }

  // What was not given up to the end, or to a quit message, had no callback.
  void* Drained() {
    while (!queue.empty()) {
      const SMessage message = queue.front();
      queue.pop_front();
      if (message.id == kQuit) return message.param1;
      FUZZ_CHECK(callbacks.count(message.id) == 0);
    }
    return nullptr;
  }

  // Without a quit message in the queue it would wait for ever; no callback takes that out.
  void Loop() {
    const auto isQuit = [](const SMessage& message) { return message.id == kQuit; };
    if (started && std::none_of(queue.begin(), queue.end(), isQuit)) return;
    void* const result = KestMessageLoop();
    FUZZ_CHECK(result == Drained());
  }

  // Drops what waits and who is called for it, but no callback of an identifier.
  void Restart() {
    KEST::MessageTerm();
    queue.clear();
    announcing = started = false;
    Loop();
    started = KEST::MessageInit();
    FUZZ_CHECK(started == !memory.Refused());
    FUZZ_CHECK(!started || KEST::MessageInit());
  }

  static inline Messages* s_self;

  Memory& memory;
  std::deque<SMessage> queue;
  std::deque<SMessage> given;  // past the queue, and not yet received
  std::map<unsigned int, KEST::TMessageCallback> callbacks;
  bool started = true;
  bool announcing = false;
  int announced = 0;
  int actionsLeft = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Messages>(data, size, 60);
}
