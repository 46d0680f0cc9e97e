#include "languages.h"

#include <stdint.h>

#include "input.h"
#include "kest/collections.h"
#include "kest/file.h"
#include "kest/text.h"
#include "names.h"
#include "numbers.h"

using KEST::TBstr;
using KEST::TFile;
using KEST::TFileFinder;

namespace census {

namespace {

const char* const kPart = "languages";
const char* const kFolders[] = {"/usr/share/i18n/locales", "/usr/share/locale"};

const unsigned short* const kSupported = KEST_TEXT("/usr/share/i18n/SUPPORTED");
constexpr unsigned int kBuckets = 509;  // a prime

// Codes that the library knows under the name they had before.
const char* const kOldCodes[][2] = {{"he", "iw"}, {"id", "in"}, {"yi", "ji"}, {"jv", "jw"}};

// "de" of "de_AT.UTF-8@euro", and "zh-tw" of "zh_TW": the two with a region of their own.
int LanguageOf(const TBstr& locale) {
  TBstr code = locale;
  const int end = code.FindOneOf(KEST_TEXT(".@"));
  if (end >= 0) code = code.Left(end);
  const int region = code.Find(u'_');
  TBstr language = region >= 0 ? code.Left(region) : code;
  for (const auto& row : kOldCodes) {
    if (language == TBstr(row[0])) language = row[1];
  }
  if (language == KEST_TEXT("zh")) {
    language = code;
    language.Replace(u'_', u'-');
  }
  // A code counts by its start, so "fil" would be Finnish: the way back has to lead here.
  int number;
  TBstr known;
  if (language.IsEmpty() || !KestIsoToZelLang(language.GetString(), &number)) return -1;
  KestZelToIsoLang(static_cast<unsigned int>(number), known);
  return known.CompareNoCase(language.GetString()) == 0 ? number : -1;
}

int EncodingNumber(const TBstr& name) {
  int number;
  return !name.IsEmpty() && KestIsoToZelEncoding(name.GetString(), &number) ? number : -1;
}

// The encodings of locales whose names do not tell them.
class Supported {
 public:
  explicit Supported(const TBstr& system) {
    TBstr text, reason, line, locale, encoding;
    encodings.InitHashTable(kBuckets, false);
    if (!ReadWhole(SystemSpec(system, kSupported), &text, &reason)) return;
    for (Lines lines(text); lines.Next(&line);) {
      Words words(line);
      if (!words.Next(&locale) || !words.Next(&encoding)) continue;
      encodings.SetAt(locale.GetString(),
                      reinterpret_cast<void*>(static_cast<intptr_t>(EncodingNumber(encoding))));
    }
  }

  // "UTF-8" of "de_AT.UTF-8@euro"; what the list has, for "de_AT".
  int EncodingOf(const TBstr& locale) const {
    const int dot = locale.Find(u'.');
    if (dot >= 0) {
      const TBstr name = locale.Mid(dot + 1);
      const int end = name.Find(u'@');
      return EncodingNumber(end >= 0 ? name.Left(end) : name);
    }
    void* number = nullptr;
    return encodings.Lookup(locale.GetString(), number)
               ? static_cast<int>(reinterpret_cast<intptr_t>(number))
               : -1;
  }

 private:
  KEST::TPtrFromBstrMap encodings;
};

void FindLocales(const TBstr& folder, TextList* locales) {
  TFileFinder finder;
  const TBstr pattern = GlobLiteral(folder) + KEST_TEXT("/*");
  for (bool more = finder.Find(pattern.GetString(), false); more; more = finder.FindNext(true)) {
    locales->Add(finder.name);
  }
}

}  // namespace

void ReadLanguages(const TBstr& system, TextList* rows, Notes& notes) {
  TextList locales;
  for (const char* folder : kFolders) {
    if (locales.GetCount() == 0) FindLocales(SystemSpec(system, folder), &locales);
  }
  locales.Sort();
  if (locales.GetCount() == 0) notes.Add(kPart, kFolders[0], "no locales here");
  const Supported supported(system);
  for (int i = 0; i < locales.GetCount(); ++i) {
    const TBstr& locale = locales.GetAt(i);
    rows->Add(EscapeForTable(locale) + KEST_TEXT("\t") + Decimal(LanguageOf(locale)) +
              KEST_TEXT("\t") + Decimal(supported.EncodingOf(locale)));
  }
}

}  // namespace census
