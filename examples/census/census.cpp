#include "census.h"

#include <stdint.h>

#include "kest/message.h"

using KEST::TBstr;

namespace census {

namespace {

constexpr int kQueueCapacity = 256;  // entries: enough to keep every worker busy
constexpr std::chrono::seconds kRedraw(1);

}  // namespace

Census::Census(const Options& options, const TBstr& ownHidden, SResult* ownResult)
    : hidden(ownHidden),
      workerCount(options.workers),
      result(ownResult),
      queue(kQueueCapacity),
      news(),
      interrupts(ReceiveSignal, this),
      progress(options.workers),
      running(0),
      signal(0) {
  news.census = this;
  news.entryId = KestRequestMessageId();
  news.bytesId = KestRequestMessageId();
  news.endedId = KestRequestMessageId();
  news.interruptId = KestRequestMessageId();
  KestRegisterMessageCallback(news.entryId, OnEntry);
  KestRegisterMessageCallback(news.bytesId, OnBytes);
  KestRegisterMessageCallback(news.endedId, OnEnded);
  KestRegisterMessageCallback(news.interruptId, OnInterrupt);
}

Census::~Census() {
  interrupts.Stop();
  KestUnregisterMessageCallback(news.interruptId);
  KestUnregisterMessageCallback(news.endedId);
  KestUnregisterMessageCallback(news.bytesId);
  KestUnregisterMessageCallback(news.entryId);
}

bool Census::Run() {
  if (!messages) {
    Fail("no file descriptor is left");
  } else if (!StartThreads()) {
    Fail("no thread can be started");
  }
  while (running > 0) {
    // While a large file keeps the workers silent, the time goes on.
    if (!messages.Wait(kRedraw)) progress.Show();
    messages.Dispatch();
  }
  WaitForThreads();
  progress.End();
  if (walker.HasFailed()) Fail("out of memory");
  if (error.IsEmpty() && !result->inventory.Complete()) Fail("out of memory");
  if (error.IsEmpty() && !result->duplicates.Find(result->inventory)) Fail("out of memory");
  result->interrupted = signal != 0;
  return error.IsEmpty();
}

void Census::OnEntry(unsigned int, void* census, void* param) {
  Census* self = static_cast<Census*>(census);
  Entry* entry = static_cast<Entry*>(param);
  self->progress.Add(*entry);
  if (entry->problem && entry->path == KEST::TFileFinder::kCurrentDirectory) {
    self->Fail(self->result->directory + KEST_TEXT(" ") + entry->reason);
  }
  if (!self->result->inventory.Add(entry)) self->Fail("out of memory");
  self->progress.Show();
}

void Census::OnBytes(unsigned int, void* census, void* bytes) {
  Census* self = static_cast<Census*>(census);
  self->progress.AddBytes(reinterpret_cast<intptr_t>(bytes));
  self->progress.Show();
}

void Census::OnEnded(unsigned int, void* census, void*) { --static_cast<Census*>(census)->running; }

void Census::OnInterrupt(unsigned int, void* census, void* number) {
  static_cast<Census*>(census)->signal = static_cast<int>(reinterpret_cast<intptr_t>(number));
}

// On the signals' own thread. The threads are stopped at once, however many messages are waiting.
void Census::ReceiveSignal(void* census, int number) {
  Census* self = static_cast<Census*>(census);
  self->queue.Abandon();
  self->news.PostInterrupt(number);
}

bool Census::StartThreads() {
  if (!interrupts.Start()) return false;
  for (int i = 0; i < workerCount && workers[i].Start(result->directory, &queue, news); ++i) {
    ++running;
  }
  // Fewer workers than wished for will do, as long as there is one.
  if (running > 0 && walker.Start(result->directory, result->pattern, hidden, &queue, news)) {
    ++running;
    return true;
  }
  return false;
}

void Census::WaitForThreads() {
  for (int i = 0; i < workerCount; ++i) workers[i].WaitForExit();
  walker.WaitForExit();
  // A signal may have come after the last thread's end, with its message still in the queue.
  KestDispatchMessages();
}

void Census::Fail(const TBstr& why) {
  if (error.IsEmpty()) error = why;
  queue.Abandon();
}

}  // namespace census
