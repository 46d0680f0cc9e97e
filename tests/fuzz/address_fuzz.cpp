// Addresses in text against a reader of its own, against inet_aton for what both take for an
// address, and written again.

#include <arpa/inet.h>

#include "fuzz/fuzz.h"
#include "kest/text.h"

namespace {

// The signed decimal number at s, which is moved past it.
long long TakeNumber(const unsigned short*& s) {
  const unsigned short* at = s;
  while (*at == ' ') ++at;
  const bool isNegative = *at == '-';
  if (*at == '-' || *at == '+') ++at;
  if (*at < '0' || *at > '9') return 0;
  long long value = 0;
  for (; *at >= '0' && *at <= '9'; ++at) {
    value = value * 10 + (*at - '0');
    if (value > 0x7fffffff) value = 0x7fffffff;
  }
  s = at;
  return isNegative ? -value : value;
}

bool Model(const unsigned short* s, unsigned int& address, unsigned int& port) {
  long long parts[4];
  int count = 0;
  for (;;) {
    parts[count] = TakeNumber(s);
    if (parts[count] < 0) return false;
    ++count;
    if (count == 4 || *s != '.') break;
    if (parts[count - 1] > 255) return false;
    ++s;
  }
  if (*s != 0 && *s != ':') return false;
  address = static_cast<unsigned int>(parts[count - 1]);
  for (int i = 0; i < count - 1; ++i)
    address |= static_cast<unsigned int>(parts[i]) << (24 - 8 * i);
  port = 0;
  if (*s == ':') port = static_cast<unsigned int>(TakeNumber(++s));
  return true;
}

// What inet_aton makes of digits and dots alone, without the zeros that stand for octal numbers
// there, is what Kest makes of it.
void CompareWithSystem(const unsigned short* s, unsigned int address) {
  char narrow[20];
  size_t length = 0;
  bool atStart = true;
  for (; *s != 0; ++s) {
    if (*s != '.' && (*s < '0' || *s > '9')) return;
    if (length == sizeof narrow - 1 || (atStart && s[0] == '0' && s[1] != '.' && s[1] != 0)) return;
    atStart = *s == '.';
    narrow[length++] = static_cast<char>(*s);
  }
  narrow[length] = 0;
  in_addr system;
  // The system goes up to 4294967295 where Kest stops at 2147483647.
  if (inet_aton(narrow, &system) == 0 || address == 0x7fffffff) return;
  FUZZ_CHECK(ntohl(system.s_addr) == address);
}

void WriteAndRead(unsigned int address, unsigned int port) {
  KEST::TBstr text;
  unsigned int againAddress = 1, againPort = 1;
  KestInetNtoA(address, text);
  FUZZ_CHECK(KestInetAtoN(text.GetString(), &againAddress, &againPort));
  FUZZ_CHECK(againAddress == address && againPort == 0);
  KestInetNtoAEx(address, port, text);
  FUZZ_CHECK(KestInetAtoN(text.GetString(), &againAddress, &againPort));
  FUZZ_CHECK(againAddress == address);
  // The lowest int reads as the one above it.
  FUZZ_CHECK(againPort == (port == 0x80000000 ? port + 1 : port));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  static kest_fuzz::GuardedText<64> text;
  const unsigned short* s = text.Take(in);
  unsigned int expectedAddress = 0xdead, expectedPort = 0xbeef, address = 0xdead, port = 0xbeef;
  const bool good = Model(s, expectedAddress, expectedPort);
  FUZZ_CHECK(KestInetAtoN(s, &address, &port) == good);
  FUZZ_CHECK(good ? address == expectedAddress && port == expectedPort
                  : address == 0xdead && port == 0xbeef);
  FUZZ_CHECK(KestInetAtoN(s, nullptr, nullptr) == good);
  if (!good) return 0;
  CompareWithSystem(s, address);
  WriteAndRead(address, port);
  return 0;
}
