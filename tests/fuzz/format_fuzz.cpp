// Formats with arguments to match, against the model of the unit tests: the text, its length, what
// a short buffer holds of it, and the counts that %n stores.

#include <algorithm>
#include <string>

#include "fuzz/fuzz.h"
#include "kest/string.h"
#include "string/format_model.h"

namespace {

constexpr size_t kLongestFormat = 40;
constexpr size_t kWords = 24;

// What the format asks for comes from the input; the words of an argument list are kept.
class Arguments : public kest_test::FormatArguments {
 public:
  explicit Arguments(kest_fuzz::Input& source) : in(source) {}

  int NextInt() override {
    static const int kSpecial[] = {0,      1,      -1,      7,       255,     0x7FFF,
                                   0x8000, 0xFFFF, 0x10001, INT_MAX, INT_MIN, INT_MIN + 1};
    const unsigned int choice = in.Byte();
    const int value = choice < std::size(kSpecial) ? kSpecial[choice] : in.Int();
    Add(static_cast<unsigned int>(value));
    return value;
  }
  // Mostly small, sometimes around the size of the digit buffer.
  int NextStar() override {
    const int choice = in.Byte();
    const int value = choice < 232 ? choice % 48 - 16 : 276 + choice;
    Add(static_cast<unsigned int>(value));
    return value;
  }
  const char16_t* NextString() override {
    static const char16_t* const kStrings[] = {
        u"", u"a", u"\u00E9\u4E2D\u8180\uFFFF", u"%d%s", u"a longer text of 28 units..", nullptr};
    const char16_t* s = kStrings[in.Below(std::size(kStrings))];
    Add(reinterpret_cast<uintptr_t>(s));
    return s;
  }
  void StoreCount(int count, bool isShort) override {
    const size_t place = std::min(used, kWords - 1);
    Add(reinterpret_cast<uintptr_t>(&counts[place]));
    const short low = static_cast<short>(count);
    memcpy(&expectedCounts[place], isShort ? static_cast<const void*>(&low) : &count,
           isShort ? sizeof low : sizeof count);
  }

  bool Fit() const { return used <= kWords; }
  bool CountsAgree() const { return memcmp(counts, expectedCounts, sizeof counts) == 0; }

  // function(..., all the words).
  template <typename Function>
  auto Call(Function function) const {
    const uintptr_t* w = words;
    return function(w[0], w[1], w[2], w[3], w[4], w[5], w[6], w[7], w[8], w[9], w[10], w[11], w[12],
                    w[13], w[14], w[15], w[16], w[17], w[18], w[19], w[20], w[21], w[22], w[23]);
  }

 private:
  void Add(uintptr_t word) {
    if (used < kWords) words[used] = word;
    ++used;
  }

  kest_fuzz::Input& in;
  uintptr_t words[kWords] = {};
  size_t used = 0;
  int counts[kWords] = {};
  int expectedCounts[kWords] = {};
};

// A unit for each byte, mostly one that means something. No number has more than three digits,
// where a '*' counts as two, so that no text is longer than a test can look at.
std::u16string TakeFormat(kest_fuzz::Input& in, size_t length) {
  static const std::u16string kUnits =
      u"%%%%%%%%ddsscxXuopni**..0123456789--+ #hlwLFINvBEGSZefg\u0425";
  std::u16string format;
  int digits = 0;
  for (size_t i = 0; i < length; ++i) {
    const uint8_t byte = in.Byte();
    char16_t unit = byte < 0x80 ? byte : kUnits[static_cast<size_t>(byte & 0x7F) % kUnits.size()];
    if (unit == 0) unit = u'%';
    digits = unit == '*' ? 2 : unit >= '0' && unit <= '9' ? digits + 1 : 0;
    if (digits > 3) unit = u'd';
    format += unit;
  }
  return format;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  const unsigned int room = in.Byte();
  const std::u16string format = TakeFormat(in, in.Byte() % (kLongestFormat + 1));
  static kest_fuzz::Guarded<unsigned short, kLongestFormat + 1> formatRoom;
  const unsigned short* guardedFormat = formatRoom.Copy(format.c_str(), format.size() + 1);

  Arguments arguments(in);
  const std::u16string expected = kest_test::FormatModel::Run(format, arguments);
  if (!arguments.Fit()) return 0;

  static kest_fuzz::Guarded<unsigned short, 256> outRoom;
  unsigned short* out = outRoom.Take(room);
  const int length = arguments.Call(
      [&](auto... words) { return KEST::snuprintf(out, room, guardedFormat, words...); });
  FUZZ_CHECK(length == static_cast<int>(expected.size()));
  FUZZ_CHECK(arguments.CountsAgree());
  const size_t stored = room == 0 ? 0 : std::min<size_t>(expected.size(), room - 1);
  FUZZ_CHECK(memcmp(out, expected.data(), 2 * stored) == 0);
  FUZZ_CHECK(room == 0 || out[stored] == 0);

  KEST::TBstr text;
  arguments.Call([&](auto... words) { text.Format(guardedFormat, words...); });
  FUZZ_CHECK(text.GetLength() == static_cast<int>(expected.size()));
  FUZZ_CHECK(memcmp(text.GetString(), expected.data(), 2 * expected.size()) == 0);
  return 0;
}
