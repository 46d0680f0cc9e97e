// Numbers of languages and their codes after ISO 639.

#include <ctype.h>

#include "kest/text.h"

namespace {

using namespace KEST;

constexpr unsigned int kLanguages = 144;
constexpr unsigned int kCodeSize = 6;  // a language, a region, a terminator
constexpr unsigned short kUnknown = '?';

// By number; empty where there is no code. The codes "iw", "ji", "in", "jw" and "mo" were withdrawn
// since and stay, on purpose, as do the two numbers each of "az", "el", "mn" and "ms".
// clang-format off
constexpr char kCodes[kLanguages][kCodeSize] = {
    "en", "fr", "de", "it", "nl", "sv", "es", "da", "pt", "no",  // 0
    "iw", "ja", "ar", "fi", "el", "is", "mt", "tr", "hr", "zh-tw",  // 10
    "ur", "hi", "th", "ko", "lt", "pl", "hu", "et", "lv", "",  // 20
    "fo", "fa", "ru", "zh-cn", "", "ga", "sq", "ro", "cs", "sk",  // 30
    "sl", "ji", "sr", "mk", "bg", "uk", "be", "uz", "kk", "az",  // 40
    "az", "hy", "ka", "mo", "ky", "tg", "tk", "mn", "mn", "ps",  // 50
    "ku", "ks", "sd", "bo", "ne", "sa", "mr", "bn", "as", "gu",  // 60
    "pa", "or", "ml", "kn", "ta", "te", "si", "my", "km", "lo",  // 70
    "vi", "in", "tl", "ms", "ms", "am", "ti", "om", "so", "sw",  // 80
    "rw", "rn", "", "mg", "el", "", "", "", "", "",  // 90
    "", "", "", "", "", "", "", "", "", "",  // 100
    "", "", "", "", "", "", "", "", "", "",  // 110
    "", "", "", "", "", "", "", "",  // 120
    "cy", "eu", "ca", "la", "qu", "gn", "ay", "tt", "ug", "dz",  // 128
    "jw", "su", "gd", "gv", "br", "iu",  // 138
};
// clang-format on

// Bytes go through the C library's table of the current locale, other units stay.
int Lower(unsigned short ch) { return ch < 256 ? tolower(ch) : ch; }

// An entry needs no more than to start the text: "en" is found in "en-US", and in "english".
bool IsStartOf(const char* code, const unsigned short* text) {
  for (; *code != 0; ++code, ++text) {
    if (Lower(*text) != *code) return false;
  }
  return true;
}

int FindCode(const unsigned short* text) {
  for (unsigned int i = 0; i < kLanguages; ++i) {
    if (kCodes[i][0] != 0 && IsStartOf(kCodes[i], text)) return static_cast<int>(i);
  }
  return -1;
}

}  // namespace

extern "C" {

int KestZelToIsoLang(unsigned int language, TBstr& code) {
  if (language >= kLanguages || kCodes[language][0] == 0) {
    code.Assign(kUnknown);
    return 0;
  }
  unsigned short wide[kCodeSize];
  s2ulcpy(wide, kCodes[language], kCodeSize);
  code.Assign(wide);
  return 1;
}

int KestIsoToZelLang(const unsigned short* code, int* language) {
  const bool isDefault = code == nullptr || *code == 0;
  *language = isDefault ? 0 : FindCode(code);
  return *language >= 0;
}

}  // extern "C"
