// Entities written and read, against the model of the unit tests; also out of the result's own
// text.

#include "fuzz/html_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  static kest_fuzz::HtmlChecks checks;
  checks.Take(in);
  checks.Run(KestEntityEscape, kest_test::PlainEscape);
  checks.Run(KestEntityUnescape, kest_test::PlainUnescape);
  checks.RoundTrip(KestEntityEscape, KestEntityUnescape);
  return 0;
}
