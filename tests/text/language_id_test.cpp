#include <ctype.h>
#include <gtest/gtest.h>
#include <limits.h>
#include <locale.h>
#include <stdlib.h>

#include "kest/text.h"
#include "support/random.h"
#include "support/test_allocator.h"
#include "support/text.h"

using KEST::TBstr;
using kest_test::ForEachRefusedRequest;
using kest_test::Random;
using kest_test::TestAllocator;
using kest_test::TextOf;
using kest_test::Units;

namespace {

constexpr int kUntouched = 0x5A5A5A5A;

// The languages by their names in ISO 639, with the code of each there; the codes marked withdrawn
// are those of the standard before 1989 (Hebrew, Indonesian, Yiddish), 2001 (Javanese) and 2008
// (Moldavian). A number that is not listed has no language.
struct {
  unsigned int number;
  const char* name;
  std::u16string code;
} const kLanguages[] = {
    {0, "English", u"en"},
    {1, "French", u"fr"},
    {2, "German", u"de"},
    {3, "Italian", u"it"},
    {4, "Dutch", u"nl"},
    {5, "Swedish", u"sv"},
    {6, "Spanish", u"es"},
    {7, "Danish", u"da"},
    {8, "Portuguese", u"pt"},
    {9, "Norwegian", u"no"},
    {10, "Hebrew", u"iw"},  // withdrawn, now he
    {11, "Japanese", u"ja"},
    {12, "Arabic", u"ar"},
    {13, "Finnish", u"fi"},
    {14, "Greek", u"el"},
    {15, "Icelandic", u"is"},
    {16, "Maltese", u"mt"},
    {17, "Turkish", u"tr"},
    {18, "Croatian", u"hr"},
    {19, "Chinese as in Taiwan", u"zh-tw"},
    {20, "Urdu", u"ur"},
    {21, "Hindi", u"hi"},
    {22, "Thai", u"th"},
    {23, "Korean", u"ko"},
    {24, "Lithuanian", u"lt"},
    {25, "Polish", u"pl"},
    {26, "Hungarian", u"hu"},
    {27, "Estonian", u"et"},
    {28, "Latvian", u"lv"},
    {30, "Faroese", u"fo"},
    {31, "Persian", u"fa"},
    {32, "Russian", u"ru"},
    {33, "Chinese as in China", u"zh-cn"},
    {35, "Irish", u"ga"},
    {36, "Albanian", u"sq"},
    {37, "Romanian", u"ro"},
    {38, "Czech", u"cs"},
    {39, "Slovak", u"sk"},
    {40, "Slovenian", u"sl"},
    {41, "Yiddish", u"ji"},  // withdrawn, now yi
    {42, "Serbian", u"sr"},
    {43, "Macedonian", u"mk"},
    {44, "Bulgarian", u"bg"},
    {45, "Ukrainian", u"uk"},
    {46, "Belarusian", u"be"},
    {47, "Uzbek", u"uz"},
    {48, "Kazakh", u"kk"},
    {49, "Azerbaijani", u"az"},
    {50, "Azerbaijani", u"az"},
    {51, "Armenian", u"hy"},
    {52, "Georgian", u"ka"},
    {53, "Moldavian", u"mo"},  // withdrawn, now ro
    {54, "Kirghiz", u"ky"},
    {55, "Tajik", u"tg"},
    {56, "Turkmen", u"tk"},
    {57, "Mongolian", u"mn"},
    {58, "Mongolian", u"mn"},
    {59, "Pashto", u"ps"},
    {60, "Kurdish", u"ku"},
    {61, "Kashmiri", u"ks"},
    {62, "Sindhi", u"sd"},
    {63, "Tibetan", u"bo"},
    {64, "Nepali", u"ne"},
    {65, "Sanskrit", u"sa"},
    {66, "Marathi", u"mr"},
    {67, "Bengali", u"bn"},
    {68, "Assamese", u"as"},
    {69, "Gujarati", u"gu"},
    {70, "Panjabi", u"pa"},
    {71, "Oriya", u"or"},
    {72, "Malayalam", u"ml"},
    {73, "Kannada", u"kn"},
    {74, "Tamil", u"ta"},
    {75, "Telugu", u"te"},
    {76, "Sinhala", u"si"},
    {77, "Burmese", u"my"},
    {78, "Khmer", u"km"},
    {79, "Lao", u"lo"},
    {80, "Vietnamese", u"vi"},
    {81, "Indonesian", u"in"},  // withdrawn, now id
    {82, "Tagalog", u"tl"},
    {83, "Malay", u"ms"},
    {84, "Malay", u"ms"},
    {85, "Amharic", u"am"},
    {86, "Tigrinya", u"ti"},
    {87, "Oromo", u"om"},
    {88, "Somali", u"so"},
    {89, "Swahili", u"sw"},
    {90, "Kinyarwanda", u"rw"},
    {91, "Rundi", u"rn"},
    {93, "Malagasy", u"mg"},
    {94, "Greek", u"el"},
    {128, "Welsh", u"cy"},
    {129, "Basque", u"eu"},
    {130, "Catalan", u"ca"},
    {131, "Latin", u"la"},
    {132, "Quechua", u"qu"},
    {133, "Guarani", u"gn"},
    {134, "Aymara", u"ay"},
    {135, "Tatar", u"tt"},
    {136, "Uighur", u"ug"},
    {137, "Dzongkha", u"dz"},
    {138, "Javanese", u"jw"},  // withdrawn, now jv
    {139, "Sundanese", u"su"},
    {140, "Scottish Gaelic", u"gd"},
    {141, "Manx", u"gv"},
    {142, "Breton", u"br"},
    {143, "Inuktitut", u"iu"},
};

std::u16string CodeOf(unsigned int number) {
  for (const auto& language : kLanguages) {
    if (language.number == number) return language.code;
  }
  return u"?";
}

char16_t Lower(char16_t unit) { return unit < 256 ? static_cast<char16_t>(tolower(unit)) : unit; }

// The lowest number whose code the text starts with.
int NumberOf(const std::u16string& text) {
  if (text.empty()) return 0;
  std::u16string lower;
  for (char16_t unit : text) lower += Lower(unit);
  for (const auto& language : kLanguages) {
    if (lower.compare(0, language.code.size(), language.code) == 0) {
      return static_cast<int>(language.number);
    }
  }
  return -1;
}

void ExpectCode(unsigned int number) {
  SCOPED_TRACE(number);
  const std::u16string expected = CodeOf(number);
  TBstr code(KEST_TEXT("old"));
  EXPECT_EQ(expected != u"?" ? 1 : 0, KestZelToIsoLang(number, code));
  EXPECT_EQ(expected, TextOf(code));
}

void ExpectNumber(int expected, const std::u16string& text) {
  SCOPED_TRACE(testing::PrintToString(text));
  int number = kUntouched;
  EXPECT_EQ(expected >= 0 ? 1 : 0, KestIsoToZelLang(Units(text), &number));
  EXPECT_EQ(expected, number);
}

}  // namespace

TEST(LanguageId, CodeOfEveryNumber) {
  for (unsigned int number = 0; number <= 1000; ++number) ExpectCode(number);
  for (int number : {-1, -2, -144, INT_MIN, INT_MIN + 1, INT_MAX}) {
    ExpectCode(static_cast<unsigned int>(number));
  }
  for (unsigned int bit = 10; bit < 32; ++bit) {
    ExpectCode(1u << bit);
    ExpectCode((1u << bit) + 143);
  }
}

TEST(LanguageId, NumbersAtTheEdges) {
  for (unsigned int number : {29u, 34u, 92u, 95u, 99u, 100u, 127u, 144u, UINT_MAX}) {
    TBstr code;
    EXPECT_EQ(0, KestZelToIsoLang(number, code)) << number;
    EXPECT_EQ(u"?", TextOf(code)) << number;
  }
  TBstr code;
  EXPECT_EQ(1, KestZelToIsoLang(143, code));
  EXPECT_EQ(u"iu", TextOf(code));
}

TEST(LanguageId, EnglishIsTheNamedLanguage) {
  int number = kUntouched;
  EXPECT_EQ(1, KestIsoToZelLang(KEST::kEnglishLanguage, &number));
  EXPECT_EQ(0, number);
}

TEST(LanguageId, WithoutACodeItIsEnglish) {
  int number = kUntouched;
  EXPECT_EQ(1, KestIsoToZelLang(nullptr, &number));
  EXPECT_EQ(0, number);
  ExpectNumber(0, u"");
}

TEST(LanguageId, NumberRows) {
  struct {
    int number;
    std::u16string text;
  } const kRows[] = {
      {0, u"En"},
      {0, u"EN-US"},
      {0, u"english"},
      {1, u"fr-CA"},
      {19, u"ZH-TW"},
      {33, u"zh-CN"},
      {33, u"zh-cnx"},
      // Two numbers of one language: the lower one.
      {14, u"el"},
      {49, u"az"},
      {57, u"mn"},
      {83, u"ms"},
      // The start decides, not the next hyphen.
      {2, u"deutsch"},
      {6, u"esperanto"},
      {81, u"ink"},
      {-1, u"zh"},
      {-1, u"zh-"},
      {-1, u"zh-t"},
      {-1, u"zh-hk"},
      {-1, u"zh_tw"},
      {-1, u"zhtw"},
      {-1, u"xx"},
      {-1, u"e"},
      {-1, u" en"},
      {-1, u"-en"},
      {-1, u"?"},
      {-1, u"he"},  // the codes that came later are unknown
      {-1, u"yi"},
      {-1, u"id"},
      {-1, u"jv"},
      {-1, u"\u0165n"},  // 'e' + 0x100
      {-1, u"\uFF45n"},
      {0, u"en\uFFFF"},
  };
  for (const auto& row : kRows) ExpectNumber(row.number, row.text);
}

TEST(LanguageId, EveryCodeInEveryCaseWithAndWithoutMore) {
  for (const auto& language : kLanguages) {
    const std::u16string& code = language.code;
    const int first = NumberOf(code);
    EXPECT_EQ(code, CodeOf(static_cast<unsigned int>(first))) << language.name;
    EXPECT_LE(first, static_cast<int>(language.number)) << language.name;
    for (unsigned int upper = 0; upper < 1u << code.size(); ++upper) {
      std::u16string text = code;
      for (size_t i = 0; i < text.size(); ++i) {
        if (upper >> i & 1) text[i] = static_cast<char16_t>(toupper(text[i]));
      }
      ExpectNumber(first, text);
      ExpectNumber(first, text + u"-XX");
      ExpectNumber(first, text + u"a");
      ExpectNumber(first, text + u"\x0101");
      ExpectNumber(-1, u" " + text);
    }
    for (size_t i = 1; i < code.size(); ++i) ExpectNumber(-1, code.substr(0, i));
  }
}

// Every pair of units below 0x180, alone, so that case and units just above the bytes are covered.
TEST(LanguageId, EveryPairOfUnits) {
  for (int first = 1; first < 0x180; ++first) {
    for (int second = 0; second < 0x180; ++second) {
      const char16_t pair[] = {static_cast<char16_t>(first), static_cast<char16_t>(second), 0};
      int number = kUntouched;
      const int expected = NumberOf(pair);
      ASSERT_EQ(expected >= 0 ? 1 : 0, KestIsoToZelLang(Units(pair), &number))
          << first << ' ' << second;
      ASSERT_EQ(expected, number) << first << ' ' << second;
    }
  }
}

TEST(LanguageId, EveryUnitInTheFirstPlace) {
  for (int unit = 1; unit <= 0xFFFF; ++unit) {
    const char16_t text[] = {static_cast<char16_t>(unit), u'n', 0};
    int number = kUntouched;
    KestIsoToZelLang(Units(text), &number);
    // "en", "in", "kn", "bn", "gn", "mn" and "rn" in either case.
    ASSERT_EQ(NumberOf(text), number) << unit;
    ASSERT_TRUE(unit <= 'z' || number == -1) << unit;
  }
}

TEST(LanguageId, RandomTextsAroundTheRegions) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const std::u16string alphabet = u"zzhhttwwccnn---ZHTWCN\u0100\u00FFx";
  for (int i = Random::Cases(); i > 0; --i) {
    std::u16string text = random.Between(0, 1) != 0 ? u"zh" : u"";
    for (int length = random.Between(0, 6); length > 0; --length) {
      text += alphabet[random.Next() % alphabet.size()];
    }
    int number = kUntouched;
    KestIsoToZelLang(Units(text), &number);
    ASSERT_EQ(NumberOf(text), number) << testing::PrintToString(text);
  }
}

// In Turkish the lower case of I is U+0131, 0xFD in ISO 8859-9, and that of U+0130, 0xDD, is i.
TEST(LanguageId, CaseFollowsTheCurrentLocale) {
  ExpectNumber(3, u"IT");
  ExpectNumber(-1, u"\u00DDT");
  char folder[] = "/tmp/kest_locale_XXXXXX";
  ASSERT_NE(nullptr, mkdtemp(folder));
  const std::string path = folder;
  const bool made =
      system(("localedef -i tr_TR -f ISO-8859-9 " + path + "/kest >/dev/null 2>&1").c_str()) == 0;
  setenv("LOCPATH", folder, 1);
  const bool set = made && setlocale(LC_CTYPE, "kest") != nullptr;
  if (set) {
    ExpectNumber(-1, u"IT");
    ExpectNumber(3, u"\u00DDT");
    ExpectNumber(3, u"it");
    ExpectNumber(-1, u"\u0130t");  // no byte, so it stays
    for (int unit = 1; unit <= 0x180; ++unit) {
      const std::u16string text = {static_cast<char16_t>(unit), u't'};
      ExpectNumber(NumberOf(text), text);
    }
  }
  EXPECT_EQ(0, system(("rm -r " + path).c_str()));
  if (!set) GTEST_SKIP() << "no 8-bit locale can be made here";
}

TEST(LanguageId, EveryCodeComesBack) {
  for (const auto& language : kLanguages) {
    TBstr code;
    ASSERT_EQ(1, KestZelToIsoLang(language.number, code)) << language.name;
    int number = kUntouched;
    ASSERT_EQ(1, KestIsoToZelLang(code.GetString(), &number)) << language.name;
    const unsigned int n = language.number;
    const int expected = static_cast<int>(n == 50 || n == 58 || n == 84 ? n - 1 : n == 94 ? 14 : n);
    EXPECT_EQ(expected, number) << language.name;
  }
}

TEST(LanguageId, TheCodeReplacesTheWholeString) {
  TBstr code(KEST_TEXT("old code"));
  code.GetMultibyteString();
  KestZelToIsoLang(19, code);
  EXPECT_STREQ("zh-tw", code.GetMultibyteString());
  KestZelToIsoLang(29, code);
  EXPECT_STREQ("?", code.GetMultibyteString());
}

// The result tells of the number alone.
TEST(LanguageId, WithoutMemoryTheCodeIsEmpty) {
  for (unsigned int number : {0u, 19u, 29u, 144u}) {
    ForEachRefusedRequest([number](TestAllocator& allocator) {
      TBstr code;
      EXPECT_EQ(number < 29 ? 1 : 0, KestZelToIsoLang(number, code));
      EXPECT_EQ(allocator.Refused() > 0 ? u"" : CodeOf(number), TextOf(code));
      EXPECT_EQ(1, allocator.Requests());
    });
  }
}

TEST(LanguageId, ReadingACodeTakesNoMemory) {
  TestAllocator allocator;
  for (const char16_t* text : {u"", u"zh-TW", u"unknown"}) {
    int number = kUntouched;
    KestIsoToZelLang(Units(text), &number);
  }
  EXPECT_EQ(0, allocator.Requests());
}
