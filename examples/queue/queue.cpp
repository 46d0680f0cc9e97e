// The message queue: a thread works and posts its progress, the main thread's loop shows it.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/message.h"
#include "kest/thread.h"

static unsigned int s_progressId;
static int s_percent[] = {0, 25, 50, 75, 100};

// Parameters are passed on untouched; what they point to has to live until the message is given.
static int Work(void* finished) {
  KestInitialize(nullptr);  // every thread that uses the library; cannot fail while it runs
  int failures = 0;
  for (int& percent : s_percent) {
    if (!KestPostMessage(s_progressId, &percent, nullptr)) ++failures;
  }
  // The loop waits for this one: when there is no memory now, there may be soon.
  while (!KestPostQuitMessage(finished)) KEST::TThread::Sleep(10);
  KestUninitialize();
  return failures;
}

// On the thread that runs the loop, in the order posted.
static void OnProgress(unsigned int, void* percent, void*) {
  printf("%d%%\n", *static_cast<int*>(percent));
}

static bool Run() {
  s_progressId = KestRequestMessageId();
  if (!KestRegisterMessageCallback(s_progressId, OnProgress)) return false;

  int finished;
  KEST::TThread worker;
  int failures = 1;
  if (worker.Create(Work, &finished, false)) {
    // Once is enough nearly always; a wait may end for no reason, and the loop with it.
    while (KestMessageLoop() != &finished) continue;
    puts("finished");
    if (!worker.WaitForExit(&failures)) failures = 1;
  }
  return KestUnregisterMessageCallback(s_progressId) && failures == 0;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
