// Names of languages and encodings against a search of the tables that the other direction gives.

#include <string>

#include "fuzz/fuzz.h"
#include "kest/text.h"

namespace {

constexpr int kLanguages = 160;
constexpr int kEncodings = 20;

// The 8-bit names by number; empty where there is none.
struct Names {
  std::string languages[kLanguages], encodings[kEncodings];
  Names() {
    KEST::TBstr name;
    for (unsigned int i = 0; i < kLanguages; ++i) {
      if (KestZelToIsoLang(i, name) != 0) languages[i] = name.GetMultibyteString();
    }
    for (int i = 0; i < kEncodings; ++i) {
      if (KestZelToIsoEncoding(i, name) != 0) encodings[i] = name.GetMultibyteString();
    }
  }
};

unsigned short Lower(unsigned short ch) {
  return ch >= 'A' && ch <= 'Z' ? static_cast<unsigned short>(ch + 32) : ch;
}

// The first of the names that is the start of text, or all of it.
template <size_t count>
int Find(const std::string (&names)[count], const unsigned short* text, bool isWhole) {
  if (*text == 0) return 0;
  for (size_t i = 0; i < count; ++i) {
    const std::string& name = names[i];
    size_t same = 0;
    while (same < name.size() && Lower(text[same]) == name[same]) ++same;
    if (!name.empty() && same == name.size() && (!isWhole || text[same] == 0)) {
      return static_cast<int>(i);
    }
  }
  return -1;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Names names;
  kest_fuzz::Input in(data, size);
  static kest_fuzz::GuardedText<24> text;
  const unsigned short* s = text.Take(in);
  int number = 77;
  const int language = Find(names.languages, s, false);
  FUZZ_CHECK(KestIsoToZelLang(s, &number) == (language >= 0 ? 1 : 0));
  FUZZ_CHECK(number == language);
  const int encoding = Find(names.encodings, s, true);
  FUZZ_CHECK(KestIsoToZelEncoding(s, &number) == (encoding >= 0 ? 1 : 0));
  FUZZ_CHECK(number == encoding);
  return 0;
}
