// HTML written and read, against the model of the unit tests; also out of the result's own text.

#include "fuzz/html_checks.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  static kest_fuzz::HtmlChecks checks;
  checks.Take(in);
  checks.Run(KestPlainToHtml, kest_test::PlainDocument);
  checks.Run(KestHtmlToPlain, kest_test::PlainStrip);
  checks.RoundTrip(KestPlainToHtml, KestHtmlToPlain);
  return 0;
}
