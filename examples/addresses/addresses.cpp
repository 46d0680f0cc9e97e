// Internet addresses: dotted text becomes a number and a port, and the way back.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/text.h"

using KEST::TBstr;

static bool Print(const TBstr& entry) {
  unsigned int address, port;
  if (!KestInetAtoN(entry.GetString(), &address, &port)) {
    return printf("%s is no address\n", entry.GetMultibyteString()) >= 0;
  }
  TBstr text, network;
  KestInetNtoAEx(address, port, text);
  KestInetNtoA(address & 0xFFFFFF00, network);
  if (text.IsEmpty() || network.IsEmpty()) return false;  // no memory
  return printf("%s is 0x%08X, in full %s, of the network %s\n", entry.GetMultibyteString(),
                address, text.GetMultibyteString(), network.GetMultibyteString()) >= 0;
}

static bool Run() {
  // A last part fills the rest of the address; without a port it is 0.
  const char* const entries[] = {"192.168.10.77:8080", "10.258:80", "127.1", "256.0.0.1",
                                 "1.2.3.4.5"};
  for (const char* entry : entries) {
    const TBstr text(entry);
    if (text.IsEmpty() || !Print(text)) return false;
  }
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
