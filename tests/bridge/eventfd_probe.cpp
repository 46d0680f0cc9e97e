// For strace: a million posts with a hundred edges, then two seconds with nothing to do. The lines
// that it prints divide what it does.

#include <stdio.h>

#include "kest/bridge/eventfd.h"
#include "kest/bridge/session.h"

int main() {
  constexpr int kEdges = 100, kPosts = 10000;
  KEST::TSession session;
  KEST::TMessageEvent event;
  if (!session || !event || event.Dispatch() != KEST::TMessageEvent::kDrained) return 1;
  setvbuf(stdout, nullptr, _IOLBF, 256);  // a line, a write
  puts("posting");
  for (int edge = 0; edge < kEdges; ++edge) {
    for (int i = 0; i < kPosts; ++i) {
      if (!KestPostMessage(1, nullptr, nullptr)) return 1;
    }
    if (!event.Wait() || event.Dispatch() != KEST::TMessageEvent::kDrained) return 1;
  }
  puts("idle");
  if (event.Wait(std::chrono::seconds(2))) return 1;
  puts("end");
  return 0;
}
