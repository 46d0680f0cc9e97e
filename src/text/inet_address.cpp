// IPv4 addresses as dotted text: 1.2.3.4 is 0x01020304.

#include "kest/text.h"
#include "string/units.h"

namespace {

using namespace KEST;

// Reads up to four parts; end receives the place behind them. The last part is no byte: it fills
// what the others left, or runs into it, on purpose.
bool ReadParts(const unsigned short* text, unsigned int& address, unsigned short*& end) {
  address = 0;
  for (int shift = 24;; shift -= 8) {
    const int part = ucstol(text, &end, 10);
    if (part < 0) return false;
    if (shift == 0 || *end != '.') {
      address |= static_cast<unsigned int>(part);
      return true;
    }
    if (part > 255) return false;
    address |= static_cast<unsigned int>(part) << shift;
    text = end + 1;
  }
}

int Byte(unsigned int address, int index) { return static_cast<int>(address >> 8 * index & 0xFF); }

}  // namespace

extern "C" {

bool KestInetAtoN(const unsigned short* text, unsigned int* address, unsigned int* port) {
  unsigned int parts;
  unsigned short* end;
  if (!ReadParts(OrEmpty(text), parts, end)) return false;
  if (*end != ':' && *end != 0) return false;
  if (address != nullptr) *address = parts;
  if (port != nullptr) {
    *port = *end == ':' ? static_cast<unsigned int>(ucstol(end + 1, nullptr, 10)) : 0;
  }
  return true;
}

void KestInetNtoA(unsigned int address, TBstr& text) {
  text.Format(KEST_TEXT("%d.%d.%d.%d"), Byte(address, 3), Byte(address, 2), Byte(address, 1),
              Byte(address, 0));
}

void KestInetNtoAEx(unsigned int address, unsigned int port, TBstr& text) {
  // The port is written as a signed number, on purpose.
  text.Format(KEST_TEXT("%d.%d.%d.%d:%d"), Byte(address, 3), Byte(address, 2), Byte(address, 1),
              Byte(address, 0), static_cast<int>(port));
}

}  // extern "C"
