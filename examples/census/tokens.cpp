#include "tokens.h"

namespace census {

Tokens::Tokens(int initial) : count(initial), closed(false), revoked(false) { changed.Init(); }

Tokens::~Tokens() { changed.Term(); }

bool Tokens::Take() {
  changed.Lock();
  while (count == 0 && !closed) changed.Wait(-1);  // a loop: a wait may end for no reason
  const bool taken = count > 0 && !revoked;
  if (taken) --count;
  // A signal wakes one thread only, so whoever finds the end wakes the next.
  if (!taken || count > 0) changed.Signal();
  changed.Unlock();
  return taken;
}

void Tokens::Give() {
  changed.Lock();
  ++count;
  changed.Signal();
  changed.Unlock();
}

void Tokens::Close() {
  changed.Lock();
  closed = true;
  changed.Signal();
  changed.Unlock();
}

void Tokens::Revoke() {
  changed.Lock();
  closed = revoked = true;
  changed.Signal();
  changed.Unlock();
}

bool Tokens::IsRevoked() {
  changed.Lock();
  const bool result = revoked;
  changed.Unlock();
  return result;
}

}  // namespace census
