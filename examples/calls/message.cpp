// The calls of kest/message.h.

#include "kest/message.h"

#include "check.h"
#include "kest/frame.h"

//! [message-loop]
static int s_sum = 0;

// Adds the number that param1 points to. Runs on the thread of the loop.
static void OnNumber(unsigned int, void* param1, void*) { s_sum += *static_cast<int*>(param1); }
//! [message-loop]

//! [message-poll]
// Runs on the thread that posts: wakes the host's own loop, here by a flag.
static void OnAvailable(void* data) { *static_cast<bool*>(data) = true; }
//! [message-poll]

int main() {
  if (!KestInitialize(nullptr)) return 1;

  //! [message-loop]
  const unsigned int id = KestRequestMessageId();
  Check(KestRegisterMessageCallback(id, OnNumber));
  int one = 1, two = 2;
  Check(KestPostMessage(id, &one, nullptr));  // from any thread
  Check(KestPostMessage(id, &two, nullptr));
  Check(KestPostQuitMessage(&one));
  Check(KestMessageLoop() == &one);  // gives both, then ends
  Check(s_sum == 3);
  //! [message-loop]

  //! [message-give]
  Check(KestLookupMessageCallback(id) == OnNumber);
  Check(KestGiveMessage(id, &two, nullptr));  // at once, past the queue
  Check(s_sum == 5);
  //! [message-give]

  //! [message-poll]
  bool woken = false;
  KestSetMessageAvailableCallback(OnAvailable, &woken);
  KestPostMessage(id, &one, nullptr);
  Check(woken);            // the host's loop would now call:
  KestDispatchMessages();  // gives what waits, and returns
  Check(s_sum == 6);

  unsigned int found;
  void *param1, *param2;
  Check(!KestGetMessage(&found, &param1, &param2));  // nothing is left
  KestSetMessageAvailableCallback(nullptr, nullptr);
  //! [message-poll]

  //! [message-end]
  Check(KestUnregisterMessageCallback(id));
  KestReleaseMessageId(id);  // identifiers are not used again
  //! [message-end]

  KestUninitialize();
  puts("as shown");
  return 0;
}
