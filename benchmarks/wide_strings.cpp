// The wide C strings beside strings of 16-bit units of other libraries, and beside glibc's wcs
// functions, whose units are twice as wide.

#include <stdlib.h>
#include <wchar.h>

#if KEST_PEER_ICU
#include <unicode/ustring.h>
#endif
#if KEST_PEER_QT
#include <QStringView>
#endif
#if KEST_PEER_UNISTRING
#include <unistr.h>
#endif

#include <memory>
#include <vector>

#include "kest/string.h"
#include "support/row.h"

namespace {

// A text as each library takes it.
class Text {
 public:
  explicit Text(const std::u16string& text)
      : m_units(text.begin(), text.end()), m_wide(text.begin(), text.end()) {
    m_units.push_back(0);
    m_wide.push_back(0);
  }

  const unsigned short* Units() const { return m_units.data(); }
  const wchar_t* Wide() const { return m_wide.data(); }
  const char16_t* Utf16() const { return reinterpret_cast<const char16_t*>(m_units.data()); }
  size_t Size() const { return m_units.size() - 1; }
#if KEST_PEER_QT
  QStringView View() const { return {Utf16(), static_cast<qsizetype>(Size())}; }
#endif

 private:
  std::vector<unsigned short> m_units;
  std::vector<wchar_t> m_wide;
};

// The two arguments of a call.
struct SCase {
  std::string row;
  Text first;
  Text second;
};
using Case = std::shared_ptr<const SCase>;

Case MakeCase(const std::string& row, const std::u16string& first,
              const std::u16string& second = u"") {
  return std::make_shared<const SCase>(SCase{row, Text(first), Text(second)});
}

// A row's entry for who: calls function with the case's texts.
template <typename Function>
void Measure(const Case& texts, const char* who, Function function) {
  Row(texts->row, who, [=](benchmark::State& state) {
    for (auto _ : state) {
      benchmark::ClobberMemory();
      benchmark::DoNotOptimize(function(texts->first, texts->second));
    }
  });
}

std::u16string Letters(size_t length, char16_t first = u'a') {
  std::u16string text(length, u' ');
  for (size_t at = 0; at < length; ++at) text[at] = static_cast<char16_t>(first + at % 25);
  return text;
}

std::u16string Repeated(const std::u16string& part, size_t times) {
  std::u16string text;
  while (times-- > 0) text += part;
  return text;
}

void Length(const std::u16string& text) {
  const Case of = MakeCase("ucslen " + std::to_string(text.size()), text);
  Measure(of, "kest", [](const Text& s, const Text&) { return KEST::ucslen(s.Units()); });
  Measure(of, "glibc", [](const Text& s, const Text&) { return wcslen(s.Wide()); });
#if KEST_PEER_QT
  Measure(of, "qt", [](const Text& s, const Text&) { return QStringView(s.Utf16()).size(); });
#endif
}

void FirstUnit(const Case& of) {
  Measure(of, "kest",
          [](const Text& s, const Text& unit) { return KEST::ucschr(s.Units(), *unit.Units()); });
  Measure(of, "glibc",
          [](const Text& s, const Text& unit) { return wcschr(s.Wide(), *unit.Wide()); });
#if KEST_PEER_QT
  Measure(of, "qt",
          [](const Text& s, const Text& unit) { return s.View().indexOf(QChar(*unit.Utf16())); });
#endif
}

void LastUnit(const Case& of) {
  Measure(of, "kest",
          [](const Text& s, const Text& unit) { return KEST::ucsrchr(s.Units(), *unit.Units()); });
  Measure(of, "glibc",
          [](const Text& s, const Text& unit) { return wcsrchr(s.Wide(), *unit.Wide()); });
}

void UnitOfASet(const Case& of) {
  Measure(of, "kest",
          [](const Text& s, const Text& set) { return KEST::ucspbrk(s.Units(), set.Units()); });
  Measure(of, "glibc",
          [](const Text& s, const Text& set) { return wcspbrk(s.Wide(), set.Wide()); });
#if KEST_PEER_ICU
  Measure(of, "icu",
          [](const Text& s, const Text& set) { return u_strpbrk(s.Utf16(), set.Utf16()); });
#endif
#if KEST_PEER_UNISTRING
  Measure(of, "unistring",
          [](const Text& s, const Text& set) { return u16_strpbrk(s.Units(), set.Units()); });
#endif
}

void Compare(const Case& of) {
  Measure(of, "kest",
          [](const Text& a, const Text& b) { return KEST::ucscmp(a.Units(), b.Units()); });
  Measure(of, "glibc", [](const Text& a, const Text& b) { return wcscmp(a.Wide(), b.Wide()); });
#if KEST_PEER_QT
  Measure(of, "qt", [](const Text& a, const Text& b) { return a.View().compare(b.View()); });
#endif
}

void CompareWithoutCase(const Case& of) {
  Measure(of, "kest",
          [](const Text& a, const Text& b) { return KEST::ucsicmp(a.Units(), b.Units()); });
  Measure(of, "glibc", [](const Text& a, const Text& b) { return wcscasecmp(a.Wide(), b.Wide()); });
#if KEST_PEER_QT
  Measure(of, "qt", [](const Text& a, const Text& b) {
    return a.View().compare(b.View(), Qt::CaseInsensitive);
  });
#endif
}

void Find(const Case& of) {
  Measure(of, "kest", [](const Text& haystack, const Text& needle) {
    return KEST::ucsstr(haystack.Units(), needle.Units());
  });
  Measure(of, "glibc", [](const Text& haystack, const Text& needle) {
    return wcsstr(haystack.Wide(), needle.Wide());
  });
#if KEST_PEER_QT
  Measure(of, "qt", [](const Text& haystack, const Text& needle) {
    return haystack.View().indexOf(needle.View());
  });
#endif
#if KEST_PEER_UNISTRING
  Measure(of, "unistring", [](const Text& haystack, const Text& needle) {
    return u16_strstr(haystack.Units(), needle.Units());
  });
#endif
}

void CompareSome(const Case& of) {
  Measure(of, "kest",
          [](const Text& a, const Text& b) { return KEST::ucsncmp(a.Units(), b.Units(), 200); });
  Measure(of, "glibc",
          [](const Text& a, const Text& b) { return wcsncmp(a.Wide(), b.Wide(), 200); });
#if KEST_PEER_UNISTRING
  Measure(of, "unistring",
          [](const Text& a, const Text& b) { return u16_strncmp(a.Units(), b.Units(), 200); });
#endif
}

void Copy(const Case& of) {
  const auto room = std::make_shared<std::vector<unsigned short>>(of->first.Size() + 1);
  const auto wideRoom = std::make_shared<std::vector<wchar_t>>(of->first.Size() + 1);
  Measure(of, "kest",
          [=](const Text& s, const Text&) { return KEST::ucscpy(room->data(), s.Units()); });
  Measure(of, "glibc",
          [=](const Text& s, const Text&) { return wcscpy(wideRoom->data(), s.Wide()); });
#if KEST_PEER_UNISTRING
  Measure(of, "unistring",
          [=](const Text& s, const Text&) { return u16_strcpy(room->data(), s.Units()); });
#endif
}

void Number(const std::string& digits) {
  const Case of = MakeCase("ucstol " + std::to_string(digits.size()) + " digits",
                           std::u16string(digits.begin(), digits.end()));
  Measure(of, "kest",
          [](const Text& s, const Text&) { return KEST::ucstol(s.Units(), nullptr, 10); });
  Measure(of, "glibc", [](const Text& s, const Text&) { return wcstol(s.Wide(), nullptr, 10); });
  Measure(of, "glibc 8-bit",
          [digits](const Text&, const Text&) { return strtol(digits.c_str(), nullptr, 10); });
}

}  // namespace

void RegisterRows() {
  const std::u16string text = Letters(16384);
  for (size_t length : {16384, 256, 16}) Length(Letters(length));
  FirstUnit(MakeCase("ucschr absent in 16384", text, u"Z"));
  FirstUnit(MakeCase("ucschr at 10", text, u"k"));
  LastUnit(MakeCase("ucsrchr absent in 16384", text, u"Z"));
  LastUnit(MakeCase("ucsrchr 4 before the end of 256", Letters(252) + u".txt", u"."));
  UnitOfASet(MakeCase("ucspbrk 4 absent in 16384", text, u"&<>\""));
  Compare(MakeCase("ucscmp equal 16384", text, text));
  Compare(MakeCase("ucscmp equal 16", Letters(16), Letters(16)));
  CompareSome(MakeCase("ucsncmp equal 200", Letters(256), Letters(256)));
  CompareWithoutCase(MakeCase("ucsicmp 16384", text, Letters(16384, u'A')));
  CompareWithoutCase(MakeCase("ucsicmp 16", Letters(16), Letters(16, u'A')));
  Find(MakeCase("ucsstr absent 8 in 16384", text, u"abcdefgx"));
  Find(MakeCase("ucsstr 8 at 40", Letters(40, u'A') + text, Letters(8)));
  Copy(MakeCase("ucscpy 256", Letters(256)));
  const std::u16string same(16384, u'a'), half(32, u'a');
  Find(MakeCase("ucsstr hostile: the last differs", same, half + half + u"b"));
  Find(MakeCase("ucsstr hostile: the middle differs", same, half + u"b" + half));
  Find(MakeCase("ucsstr hostile: periods", Repeated(u"ab", 8192),
                Repeated(u"ab", 16) + Repeated(u"ba", 16)));
  Find(MakeCase("ucsstr hostile: almost everywhere", Repeated(std::u16string(63, u'a') + u"b", 256),
                half + half));
  Number("1234567");
}
