#include "thread_scope.h"

#include "kest/frame.h"
#include "kest/thread.h"

namespace census {

namespace {

KEST::TCritSec s_turn;

}  // namespace

void ThreadScope::Setup() { s_turn.Init(); }
void ThreadScope::Teardown() { s_turn.Term(); }

ThreadScope::ThreadScope() {
  s_turn.Lock();
  KestInitialize(nullptr);
  s_turn.Unlock();
}

ThreadScope::~ThreadScope() {
  s_turn.Lock();
  KestUninitialize();
  s_turn.Unlock();
}

}  // namespace census
