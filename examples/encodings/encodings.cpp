// Encodings and languages: numbers become the names that mail and web use, and the way back.

#include <stdio.h>

#include "kest/frame.h"
#include "kest/text.h"

using KEST::TBstr;

// The header of a text: its encoding, the narrowest that holds it, and its language.
static bool Describe(const TBstr& text, unsigned int language) {
  const TBstr encoding = text.GetBestEncoding();
  TBstr code;
  if (encoding.IsEmpty() || !KestZelToIsoLang(language, code)) return false;
  int number;
  if (!KestIsoToZelEncoding(encoding.GetString(), &number)) return false;
  return printf("Content-Type: %s; charset=%s (%d, %d bytes)\nContent-Language: %s\n",
                TBstr(KEST::kTextPlainMimeType).GetMultibyteString(), encoding.GetMultibyteString(),
                number, text.GetEncodedByteLength(encoding.GetString()),
                code.GetMultibyteString()) >= 0;
}

static bool Run() {
  if (!Describe(KEST_TEXT("Hello"), 0)) return false;
  if (!Describe(KEST_TEXT("Grüße"), 2)) return false;
  if (!Describe(KEST_TEXT("Привет"), 32)) return false;

  // Encodings are compared whole, in any case; a language may be followed by a region.
  int number;
  if (!KestIsoToZelEncoding(KEST_TEXT("UTF-8"), &number)) return false;
  printf("UTF-8 is encoding %d\n", number);
  if (!KestIsoToZelLang(KEST_TEXT("fr-CA"), &number)) return false;
  printf("fr-CA is language %d\n", number);

  // What is unknown gives 0, with "?" or -1.
  TBstr name;
  const bool known = KestZelToIsoEncoding(1, name) != 0;
  printf("encoding 1 is %s: %s\n", known ? "known" : "unknown", name.GetMultibyteString());
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
