// File specifications: folded, against the folding step by step on a text that shrinks; and taken
// apart and put together again.

#include <string>

#include "fuzz/fuzz.h"
#include "kest/file.h"

namespace {

using KEST::TBstr;
using KEST::TFile;

using Units = std::basic_string<char16_t>;

Units UnitsOf(const TBstr& s) {
  return Units(reinterpret_cast<const char16_t*>(s.GetString()),
               static_cast<size_t>(s.GetLength()));
}

TBstr Bstr(const Units& s) {
  return TBstr(reinterpret_cast<const unsigned short*>(s.data()), static_cast<int>(s.size()));
}

Units Fold(Units s) {
  size_t at = 0;
  for (;;) {
    // A zero unit ends the search.
    at = s.find_first_of(Units(u".\0", 2), at);
    if (at == s.npos || s[at] == 0) return s;
    const bool beginsSegment = at == 0 || s[at - 1] == '/';
    const size_t end = s.find(u'/', at);
    const Units segment = s.substr(at, end == s.npos ? end : end - at);
    if (!beginsSegment || (segment != u"." && segment != u"..")) {
      ++at;
    } else if (segment == u".") {
      s.erase(at, 2);
    } else if (at < 2) {
      return {};
    } else {
      const size_t slash = s.rfind(u'/', at - 2);
      const size_t parent = slash == s.npos ? 0 : slash + 1;
      s.erase(parent, at - parent + 3);
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // One unit a byte, zero units included; from 0xF0 on, units that only look like a "/" or a ".".
  static const char16_t kOdd[] = {0x2F2F, 0x012F, 0x012E, 0x2E2E, 0x2044, 0x2215, 0xFF0F, 0xFF0E};
  if (size > 64) return 0;
  Units units;
  units.reserve(size);
  for (size_t i = 0; i < size; ++i) units += data[i] < 0xF0 ? data[i] : kOdd[data[i] & 7];
  const TBstr spec = Bstr(units);

  FUZZ_CHECK(UnitsOf(TFile::CanonicalizeSpec(spec)) == Fold(units));

  const TBstr directory = TFile::DirSpecFromFullSpec(spec),
              name = TFile::FileNameFromFullSpec(spec);
  FUZZ_CHECK(UnitsOf(directory) + UnitsOf(name) == units);
  const bool isWhole = units.find(u'\0') == units.npos;
  FUZZ_CHECK(!isWhole || UnitsOf(name).find(u'/') == units.npos);
  FUZZ_CHECK(directory.IsEmpty() || UnitsOf(directory).back() == '/');
  FUZZ_CHECK(UnitsOf(TFile::AppendFileNameToSpec(directory, name)) == units);

  const Units stripped = units.substr(0, units.find_last_not_of(u'/') + 1);
  FUZZ_CHECK(UnitsOf(TFile::RemoveTrailingSeparator(spec)) == stripped);
  const bool ends = units.empty() || units.back() == '/';
  FUZZ_CHECK(UnitsOf(TFile::AddTrailingSeparator(spec)) == (ends ? units : units + u'/'));
  FUZZ_CHECK(TFile::SafeToConvert(spec) ==
             (Units(units.c_str()).find_first_of(u"\u2044\u2215\uFF0F\uFF0E") == units.npos));
  return 0;
}
