// The length-prefixed buffers (BSTRs) that carry the library's text.

#include "kest/string.h"
#include "string/bstr_block.h"

extern "C" {

unsigned short* KestAllocString(const unsigned short* s) {
  return s != nullptr ? KEST::NewBstr(s, KEST::ucslen(s)) : nullptr;
}

unsigned short* KestAllocStringLen(const unsigned short* s, unsigned int length) {
  return KEST::NewBstr(s, length);
}

void KestFreeString(unsigned short* bstr) { KEST::FreeBstr(bstr); }

unsigned int KestStringLen(const unsigned short* bstr) { return KEST::BstrLength(bstr); }

unsigned int KestStringByteLen(const unsigned short* bstr) {
  return KEST::BstrLength(bstr) * KEST::kUnitSize;
}

}  // extern "C"

namespace KEST {

__thread SKeptBlocks t_kept __attribute__((tls_model("initial-exec"))) = {};

void StartKeepingBlocks() { ++t_kept.starts; }

void StopKeepingBlocks() {
  if (t_kept.starts == 0 || --t_kept.starts != 0) return;
  for (auto& kept : t_kept.classes) {
    if (kept.size != 0) FreeByDefault(kept.block);
    kept.size = 0;
  }
}

}  // namespace KEST
