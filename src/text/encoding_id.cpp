// Numbers of encodings and their Internet names.

#include "kest/text.h"

namespace {

using namespace KEST;

struct SEncoding {
  int id;
  const unsigned short* name;
};

constexpr int kAscii = 0;

const SEncoding kEncodings[] = {
    {kAscii, kAsciiEncoding},
    {2, kUnicodeEncoding},
    {3, kLatin1Encoding},
    {13, kUtf8Encoding},
};

constexpr unsigned short kUnknown = '?';

const SEncoding* FindId(int id) {
  for (const SEncoding& encoding : kEncodings) {
    if (encoding.id == id) return &encoding;
  }
  return nullptr;
}

const SEncoding* FindName(const unsigned short* name) {
  for (const SEncoding& encoding : kEncodings) {
    if (ucsicmp(name, encoding.name) == 0) return &encoding;
  }
  return nullptr;
}

}  // namespace

extern "C" {

int KestZelToIsoEncoding(int encoding, TBstr& name) {
  if (const SEncoding* known = FindId(encoding)) {
    name.Assign(known->name);
  } else {
    name.Assign(kUnknown);
  }
  // Read off the text, on purpose: without memory for it the answer is 1.
  return name.GetAt(0) != kUnknown;
}

int KestIsoToZelEncoding(const unsigned short* name, int* encoding) {
  const bool isDefault = name == nullptr || *name == 0;
  const SEncoding* known = isDefault ? FindId(kAscii) : FindName(name);
  *encoding = known != nullptr ? known->id : -1;
  return known != nullptr;
}

}  // extern "C"
