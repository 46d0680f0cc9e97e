// Two TBstr and the BSTR calls against std::u16string: every member, with arguments from elsewhere
// and from the text of the string itself or of the other one.

#include <string.h>

#include <utility>

#include "fuzz/steps.h"
#include "kest/string.h"
#include "kest/text.h"
#include "support/text.h"

namespace {

using KEST::TBstr;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;
using kest_test::TextOf;
using kest_test::Units;
using std::u16string;

constexpr int kMostUnits = 256;  // a longer text is emptied before the next step
constexpr int kArgumentUnits = 12;

int Size(const u16string& text) { return static_cast<int>(text.size()); }

// What a reader that ends at the first zero unit sees.
u16string Cut(const u16string& text) { return text.substr(0, text.find(u'\0')); }

char16_t Upper(char16_t unit) {
  return unit >= u'a' && unit <= u'z' ? static_cast<char16_t>(unit - 32) : unit;
}
char16_t Lower(char16_t unit) {
  return unit >= u'A' && unit <= u'Z' ? static_cast<char16_t>(unit + 32) : unit;
}
template <typename TChange>
u16string Each(u16string text, TChange change) {
  std::transform(text.begin(), text.end(), text.begin(), change);
  return text;
}
// change applied to what is before the first zero unit.
template <typename TChange>
u16string InHead(const u16string& text, TChange change) {
  const u16string head = Cut(text);
  return change(head) + text.substr(head.size());
}

u16string Without(u16string text, char16_t unit) {
  text.erase(std::remove(text.begin(), text.end(), unit), text.end());
  return text;
}
u16string Normal(const u16string& text) { return Each(Without(text, u' '), Lower); }

int Difference(const u16string& a, const u16string& b) {
  size_t i = 0;
  while (i < a.size() && i < b.size() && a[i] == b[i]) ++i;
  return (i < a.size() ? a[i] : 0) - (i < b.size() ? b[i] : 0);
}

int TrimmedSize(const u16string& text) { return static_cast<int>(text.find_last_not_of(u' ') + 1); }

int NumberIn(const u16string& text) {
  size_t i = 0;
  while (i < text.size() && text[i] == u' ') ++i;
  const bool negative = i < text.size() && text[i] == u'-';
  if (i < text.size() && (text[i] == u'-' || text[i] == u'+')) ++i;
  long long number = 0;
  for (; i < text.size() && text[i] >= u'0' && text[i] <= u'9'; ++i) {
    number = std::min<long long>(number * 10 + text[i] - u'0', INT_MAX);
  }
  return static_cast<int>(negative ? -number : number);
}

// Replaces from in the text's head and counts.
int ReplaceAll(u16string& text, const u16string& from, const u16string& to) {
  int count = 0;
  if (from.empty()) return 0;
  u16string head = Cut(text);
  const u16string tail = text.substr(head.size());
  for (size_t at = 0; (at = head.find(from, at)) != u16string::npos; at += to.size(), ++count) {
    head.replace(at, from.size(), to);
  }
  text = head + tail;
  return count;
}

int Utf8Size(const u16string& text) {
  int size = 0;
  for (char16_t unit : text) size += unit < 0x80 ? 1 : unit < 0x800 ? 2 : 3;
  return size;
}

u16string Widened(const std::string& bytes) {
  u16string text;
  for (char byte : bytes) text += static_cast<unsigned char>(byte);
  return text;
}
std::string Narrowed(const u16string& text) {
  std::string bytes;
  for (char16_t unit : text) bytes += unit < 0x100 ? static_cast<char>(unit) : '?';
  return bytes;
}

// An argument: its units lie in a block of exactly its size or in the text of one of the strings,
// or are null. For 8-bit text, bytes is what is passed.
struct SText {
  const unsigned short* units;
  u16string text;
};
struct SBytes {
  const char* bytes;
  u16string text;
};

class Strings {
 public:
  Strings(StepInput&, Memory& all) : memory(all) {}

  void Step(int step, StepInput& in) {
    self = step % 2;
    if (Size(Model()) > kMostUnits) {
      Self().Empty();
      Model().clear();
    }
    static constexpr void (Strings::*kSteps[])(StepInput&) = {
        &Strings::Construct,      &Strings::ConstructFromBytes,
        &Strings::AdjustBuffer,   &Strings::Internals,
        &Strings::Multibyte,      &Strings::HandOver,
        &Strings::Assign,         &Strings::Append,
        &Strings::OneUnit,        &Strings::Compare,
        &Strings::FindUnit,       &Strings::FindText,
        &Strings::TakePart,       &Strings::ChangeUnits,
        &Strings::Trim,           &Strings::ReplaceUnit,
        &Strings::ReplaceText,    &Strings::Insert,
        &Strings::Delete,         &Strings::Encodings,
        &Strings::Format,         &Strings::Sum,
        &Strings::AllocStringLen, &Strings::AllocString,
        &Strings::ConvertBuffer};
    constexpr int kCount = sizeof(kSteps) / sizeof(kSteps[0]);
    (this->*kSteps[step / 2 % kCount])(in);
    FUZZ_CHECK(Self().GetLength() == Size(Model()));
    FUZZ_CHECK(Self().IsEmpty() == Model().empty());
    FUZZ_CHECK(Self().GetString()[Model().size()] == 0);
  }

 private:
  TBstr& Self() { return strings[self]; }
  TBstr& Other() { return strings[1 - self]; }
  u16string& Model() { return models[self]; }
  u16string& OtherModel() { return models[1 - self]; }

  // The string is as expected; without memory it is empty, never half done.
  void Became(const u16string& expected, bool possible = true) {
    Model() = possible && !memory.Refused() ? expected : u"";
    FUZZ_CHECK(TextOf(Self()) == Model());
  }
  // A string that was made is as expected, or empty without memory.
  void IsText(const TBstr& made, const u16string& expected) const {
    FUZZ_CHECK(TextOf(made) == (memory.Refused() ? u"" : expected));
  }

  SText InStrings(StepInput& in, int whose) {
    const int offset = in.Below(std::min(Size(models[whose]) + 1, 256));
    return {strings[whose].GetString() + offset, models[whose].substr(static_cast<size_t>(offset))};
  }
  // Units to be counted; zero units are like any other.
  SText TakeUnits(StepInput& in) {
    static kest_fuzz::Guarded<unsigned short, kArgumentUnits> room;
    const int source = in.Below(8);
    if (source == 0) return {nullptr, u""};
    if (source <= 3) return InStrings(in, source == 3 ? 1 - self : self);
    const u16string text = in.Text(kArgumentUnits);
    return {room.Copy(text.data(), text.size()), text};
  }
  // Text up to its terminator.
  SText TakeText(StepInput& in) {
    static kest_fuzz::Guarded<unsigned short, kArgumentUnits + 1> rooms[2];
    const int source = in.Below(8);
    if (source == 0) return {nullptr, u""};
    if (source <= 3) {
      const SText own = InStrings(in, source == 3 ? 1 - self : self);
      return {own.units, Cut(own.text)};
    }
    const u16string text = Cut(in.Text(kArgumentUnits));
    nextRoom = 1 - nextRoom;
    return {rooms[nextRoom].Copy(text.c_str(), text.size() + 1), text};
  }
  // 8-bit text up to its terminator.
  static SBytes TakeBytes(StepInput& in) {
    static kest_fuzz::Guarded<char, kArgumentUnits + 1> room;
    if (in.Below(8) == 0) return {nullptr, u""};
    const std::string bytes = Narrowed(Cut(in.Text(kArgumentUnits)));
    return {room.Copy(bytes.c_str(), bytes.size() + 1), Widened(bytes)};
  }

  void Construct(StepInput& in) {
    const SText units = TakeUnits(in), text = TakeText(in);
    const unsigned short unit = in.Letter();
    const int n = in.Number(140);
    switch (in.Below(6)) {
      case 0:
        Self() = TBstr();
        return Became(u"");
      case 1:
        Self() = TBstr(Other());
        return Became(OtherModel());
      case 2:
        Self() = TBstr(unit, n);
        return Became(unit != 0 && n > 0
                          ? u16string(static_cast<size_t>(memory.Refused() ? 0 : n), unit)
                          : u"");
      case 3:
        Self() = TBstr(text.units);
        return Became(text.text);
      case 4:
        Self() = TBstr(units.units, std::min(n, Size(units.text)));
        return Became(units.text.substr(0, static_cast<size_t>(std::max(n, 0))));
      default:
        TBstr moved(std::move(Other()));
        FUZZ_CHECK(Other().IsEmpty());
        Other() = std::move(moved);
        FUZZ_CHECK(TextOf(Other()) == OtherModel());
    }
  }

  void ConstructFromBytes(StepInput& in) {
    const SBytes from = TakeBytes(in);
    const int n = std::min(in.Number(kArgumentUnits), Size(from.text));
    if (in.Bool()) {
      Self() = TBstr(from.bytes);
      return Became(from.text);
    }
    Self() = TBstr(from.bytes, n);
    Became(n == -1 ? from.text : from.text.substr(0, static_cast<size_t>(std::max(n, 0))));
  }

  void AdjustBuffer(StepInput& in) {
    const int n = in.Number(100);
    const bool keep = in.Bool();
    const bool adjusted = Self().AdjustBuffer(n, keep);
    Self().DestroyMultibyteBuffer();
    if (!adjusted || n < 1) {
      FUZZ_CHECK(adjusted == (n < 1));
      FUZZ_CHECK(n < 1 || memory.Refused() || n > kMostUnits);
      return Became(u"");
    }
    u16string expected = keep ? Model().substr(0, static_cast<size_t>(n)) : u"";
    expected.resize(static_cast<size_t>(n), u'n');
    std::copy(expected.begin(), expected.end(), *Self().GetRawBstrPtr());
    Became(expected);
  }

  void Internals(StepInput& in) {
    const SText from = TakeUnits(in);
    const int n = std::min(in.Number(kArgumentUnits), Size(from.text));
    const u16string counted = from.text.substr(0, static_cast<size_t>(std::max(n, 0)));
    const bool append = in.Bool();
    const bool done =
        append ? Self().InternalAppend(from.units, n) : Self().InternalInit(from.units, n);
    const bool nothing = from.units == nullptr || n == 0;
    FUZZ_CHECK(done == (nothing || (n > 0 && !memory.Refused())));
    Became(append ? Model() + counted : n < 0 && !nothing ? Model() : counted);
  }

  void Multibyte(StepInput& in) {
    const std::string expected = Narrowed(Model());
    const int kind = in.Below(4);
    if (kind == 0) Self().DestroyMultibyteBuffer();
    const bool made = kind != 1 || Self().CreateMultibyteBuffer();
    FUZZ_CHECK(made == !memory.Refused());
    const char* bytes = Self().GetMultibyteString();
    const size_t count = memory.Refused() && *bytes == 0 ? 1 : expected.size() + 1;
    FUZZ_CHECK(memcmp(bytes, count == 1 ? "" : expected.c_str(), count) == 0);
  }

  // Whole texts that change their owner.
  void HandOver(StepInput& in) {
    const SText text = TakeText(in);
    unsigned short* bstr;
    switch (in.Below(6)) {
      case 0:
        Self().Empty();
        return Became(u"");
      case 1:
        bstr = Self().Detach();
        FUZZ_CHECK((bstr == nullptr) == Model().empty());
        FUZZ_CHECK(Self().IsEmpty() && *Self().GetMultibyteString() == 0);
        Self().Attach(bstr);
        return Became(Model());
      case 2:
        bstr = Self().Copy();
        FUZZ_CHECK((bstr == nullptr) == (Model().empty() || memory.Refused()));
        Self().Empty();
        Self().Attach(bstr);
        return Became(Model());
      case 3:
        bstr = KestAllocString(text.units);
        *Self().GetBstrPtr() = bstr;
        return Became(text.text);
      case 4:
        Self() = std::move(Other());
        FUZZ_CHECK(Other().IsEmpty());
        Model() = std::exchange(OtherModel(), u"");
        FUZZ_CHECK(TextOf(Self()) == Model());
        return;
      default: {
        TBstr& same = Self();
        Self() = std::move(same);
        FUZZ_CHECK(TextOf(Self()) == Model());
      }
    }
  }

  void Assign(StepInput& in) {
    const SText text = TakeText(in);
    const unsigned short unit = in.Letter();
    switch (in.Below(5)) {
      case 0:
        Self() = Other();
        return Became(OtherModel());
      case 1:
        Self() = *&Self();
        return Became(Model());
      case 2:
        Self() = unit;
        return Became(unit != 0 ? u16string(1, unit) : Model());
      case 3:
        Self() = text.units;
        return Became(text.text);
      default: {
        const SBytes bytes = TakeBytes(in);
        Self() = bytes.bytes;
        Became(bytes.text);
      }
    }
  }

  void Append(StepInput& in) {
    const SText text = TakeText(in);
    const unsigned short unit = in.Letter();
    switch (in.Below(5)) {
      case 0:
        Self() += Other();
        return Became(Model() + OtherModel());
      case 1:
        Self() += Self();
        return Became(Model() + Model());
      case 2:
        Self() += unit;
        return Became(unit != 0 ? Model() + static_cast<char16_t>(unit) : Model());
      case 3:
        Self() += text.units;
        return Became(Model() + text.text);
      default: {
        // Text that cannot be widened counts as null.
        const SBytes bytes = TakeBytes(in);
        Self() += bytes.bytes;
        if (memory.Refused() && TextOf(Self()) == Model()) return;
        Became(Model() + bytes.text);
      }
    }
  }

  void OneUnit(StepInput& in) {
    const int index = in.Number(40);
    const unsigned short unit = in.Letter();
    const bool inside = index >= 0 && index < Size(Model());
    const size_t at = static_cast<size_t>(index);
    FUZZ_CHECK(Self().GetAt(index) == (inside ? Model()[at] : 0));
    Self().SetAt(index, unit);
    if (inside && unit != 0) Model()[at] = unit;
    FUZZ_CHECK(TextOf(Self()) == Model());
  }

  void Compare(StepInput& in) {
    const SText other = TakeText(in);
    const u16string head = Cut(Model());
    const bool byLength = other.units == nullptr || Model().empty();
    const auto expected = [&](int lengths, int units) { return byLength ? lengths : units; };
    const int plain = expected(Size(Model()) - Size(other.text), Difference(head, other.text));
    FUZZ_CHECK(Self().Compare(other.units) == plain);
    FUZZ_CHECK(Self().CompareNoCase(other.units) ==
               expected(Size(Model()) - Size(other.text),
                        Difference(Each(head, Upper), Each(other.text, Upper))));
    FUZZ_CHECK(Self().CompareNormal(other.units) ==
               expected(TrimmedSize(Model()) - TrimmedSize(other.text),
                        Difference(Normal(head), Normal(other.text))));
    FUZZ_CHECK((Self() == other.units) == (plain == 0));
    FUZZ_CHECK((other.units != Self()) == (plain != 0));
    FUZZ_CHECK((Self() < other.units) == (plain < 0));
    FUZZ_CHECK((other.units < Self()) == (plain > 0));
    FUZZ_CHECK((Self() == Other()) == (head == Cut(OtherModel())));
    FUZZ_CHECK(Self().ToLong() == NumberIn(head));
  }

  void FindUnit(StepInput& in) {
    const int start = in.Number(20);
    const char16_t unit = in.Letter();
    const u16string head = Cut(Model());
    int expected = -1;
    if (start >= 0 && start < Size(Model())) {
      const u16string rest = Cut(Model().substr(static_cast<size_t>(start))) + u'\0';
      const size_t at = rest.find(unit);
      if (at != u16string::npos) expected = start + static_cast<int>(at);
    }
    FUZZ_CHECK(Self().Find(unit, start) == expected);
    const size_t last = Model().empty() ? u16string::npos : (head + u'\0').rfind(unit);
    FUZZ_CHECK(Self().ReverseFind(unit) == static_cast<int>(last));
  }

  void FindText(StepInput& in) {
    const SText what = TakeText(in);
    const int start = in.Number(20);
    int expected = -1;
    if (what.units != nullptr && start >= 0 && start < Size(Model())) {
      const size_t at = Cut(Model().substr(static_cast<size_t>(start))).find(what.text);
      if (at != u16string::npos) expected = start + static_cast<int>(at);
    }
    FUZZ_CHECK(Self().Find(what.units, start) == expected);
    FUZZ_CHECK(Self().FindOneOf(what.units) ==
               static_cast<int>(Cut(Model()).find_first_of(what.text)));
  }

  void TakePart(StepInput& in) {
    const int first = in.Number(20), count = in.Number(20);
    const size_t size = Model().size();
    const size_t from = std::min(static_cast<size_t>(std::max(first, 0)), size);
    const size_t n = static_cast<size_t>(std::max(count, 0));
    switch (in.Below(4)) {
      case 0:
        return IsText(Self().Mid(first, count), Model().substr(from, n));
      case 1:
        return IsText(Self().Mid(first), Model().substr(from));
      case 2:
        return IsText(Self().Left(count), Model().substr(0, n));
      default:
        return IsText(Self().Right(count), Model().substr(size - std::min(n, size)));
    }
  }

  void ChangeUnits(StepInput& in) {
    switch (in.Below(5)) {
      case 0:
        Self().MakeUpper();
        return Became(InHead(Model(), [](const u16string& head) { return Each(head, Upper); }));
      case 1:
        Self().MakeLower();
        return Became(InHead(Model(), [](const u16string& head) { return Each(head, Lower); }));
      case 2:
        Self().MakeReverse();
        return Became(InHead(
            Model(), [](const u16string& head) { return u16string(head.rbegin(), head.rend()); }));
      case 3:
        Self().MakeBigEndian();
        return Became(Each(
            Model(), [](char16_t unit) { return static_cast<char16_t>(unit << 8 | unit >> 8); }));
      default:
        Self().Normalize();
        return Became(Normal(Model()));
    }
  }

  void Trim(StepInput& in) {
    const char16_t unit = in.Letter();
    u16string expected = Model();
    if (in.Bool()) {
      Self().TrimLeft(unit);
      if (unit != 0) expected.erase(0, expected.find_first_not_of(unit));
    } else {
      Self().TrimRight(unit);
      if (unit != 0) expected.resize(expected.find_last_not_of(unit) + 1);
    }
    Became(expected);
  }

  void ReplaceUnit(StepInput& in) {
    const char16_t from = in.Letter(), to = in.Letter();
    const int count = static_cast<int>(std::count(Model().begin(), Model().end(), from));
    if (in.Bool()) {
      FUZZ_CHECK(Self().Remove(from) == count);
      return Became(Without(Model(), from));
    }
    FUZZ_CHECK(Self().Replace(from, to) == count);
    Became(Each(Model(), [=](char16_t unit) { return unit == from ? to : unit; }));
  }

  void ReplaceText(StepInput& in) {
    const SText from = TakeText(in), to = TakeText(in);
    u16string expected = Model();
    const int count = ReplaceAll(expected, from.text, to.text);
    const int replaced = Self().Replace(from.units, to.units);
    FUZZ_CHECK(replaced == (memory.Refused() ? 0 : count));
    Became(expected);
  }

  void Insert(StepInput& in) {
    const int index = in.Number(20);
    SText what = TakeText(in);
    const unsigned short unit = in.Letter();
    const bool one = in.Bool();
    if (one) what.text = unit != 0 ? u16string(1, unit) : u"";
    u16string expected = Model();
    if (index >= 0) {
      expected.insert(std::min(static_cast<size_t>(index), expected.size()), what.text);
    }
    const int length = one ? Self().Insert(index, unit) : Self().Insert(index, what.units);
    Became(expected);
    FUZZ_CHECK(length == Size(Model()));
  }

  void Delete(StepInput& in) {
    const int index = in.Number(20), count = in.Number(20);
    u16string expected = Model();
    if (index >= 0 && index < Size(expected) && count > 0) {
      expected.erase(static_cast<size_t>(index), static_cast<size_t>(count));
    }
    const int length = Self().Delete(index, count);
    Became(expected);
    FUZZ_CHECK(length == Size(Model()));
  }

  void Encodings(StepInput&) {
    FUZZ_CHECK(Self().GetEncodedByteLength(nullptr) == Size(Model()));
    FUZZ_CHECK(Self().GetEncodedByteLength(KEST::kAsciiEncoding) == Size(Model()));
    FUZZ_CHECK(Self().GetEncodedByteLength(KEST_TEXT("ISO-8859-1")) == Size(Model()));
    FUZZ_CHECK(Self().GetEncodedByteLength(KEST::kUtf8Encoding) == Utf8Size(Cut(Model())));
    FUZZ_CHECK(Self().GetEncodedByteLength(KEST::kUnicodeEncoding) == 2 * Size(Model()));
    FUZZ_CHECK(Self().GetEncodedByteLength(KEST_TEXT("none")) == 0);
    const auto largest = std::max_element(Model().begin(), Model().end());
    const bool ascii = Model().empty() || *largest < 0x80;
    IsText(Self().GetBestEncoding(), ascii              ? u"us-ascii"
                                     : *largest < 0x100 ? u"iso-8859-1"
                                                        : u"utf-8");
  }

  void Format(StepInput& in) {
    const SText a = TakeText(in), b = TakeText(in);
    const u16string aShown = a.units != nullptr ? a.text : u"(null)";
    const u16string bShown = b.units != nullptr ? b.text : u"(null)";
    const int n = in.Number(20);
    const std::string number = std::to_string(n);
    const char16_t unit = in.Letter();
    switch (in.Below(3)) {
      case 0:
        Self().Format(KEST_TEXT("%s|%d|%c|%s"), a.units, n, unit, b.units);
        return Became(aShown + u'|' + Widened(number) + u'|' + unit + u'|' + bShown);
      case 1:
        Self().Format(KEST_TEXT("%.*s<%5s>"), n, a.units, b.units);
        return Became(aShown.substr(0, n < 0 ? u16string::npos : static_cast<size_t>(n)) + u'<' +
                      u16string(bShown.size() < 5 ? 5 - bShown.size() : 0, u' ') + bShown + u'>');
      default:
        if (a.text.find(u'%') != u16string::npos) return;
        Self().Format(a.units);
        return Became(a.text);
    }
  }

  // What the operators make is empty or lacks a part when there is no memory.
  void Sum(StepInput& in) {
    const SText text = TakeText(in);
    const char16_t unit = in.Letter();
    const auto isSum = [this](const TBstr& sum, const u16string& a, const u16string& b) {
      const u16string made = TextOf(sum);
      FUZZ_CHECK(made == a + b || (memory.Refused() && (made.empty() || made == b)));
    };
    switch (in.Below(4)) {
      case 0:
        return isSum(Self() + Other(), Model(), OtherModel());
      case 1:
        return isSum(Self() + text.units, Model(), text.text);
      case 2:
        return isSum(text.units + Self(), text.text, Model());
      default:
        return isSum(Self() + static_cast<unsigned short>(unit), Model(),
                     unit != 0 ? u16string(1, unit) : u"");
    }
  }

  void AllocStringLen(StepInput& in) {
    const SText units = TakeUnits(in);
    const int n = in.Number(kArgumentUnits);
    const bool counted = in.Bool();
    const bool huge = counted && (n < 0 || n > kArgumentUnits + 2);
    const int length = huge ? n : std::min(n, Size(units.text));
    const bool unset = units.units == nullptr || in.Below(4) == 0;
    unsigned short* bstr =
        KestAllocStringLen(unset ? nullptr : units.units, static_cast<unsigned int>(length));
    if (huge || length <= 0 || memory.Refused()) {
      FUZZ_CHECK(bstr == nullptr);
    } else {
      FUZZ_CHECK(bstr != nullptr && bstr[length] == 0);
      FUZZ_CHECK(unset || memcmp(bstr, units.units, 2 * static_cast<size_t>(length)) == 0);
    }
    const unsigned int expected = bstr != nullptr ? static_cast<unsigned int>(length) : 0;
    FUZZ_CHECK(KestStringLen(bstr) == expected);
    FUZZ_CHECK(KestStringByteLen(bstr) == 2 * expected);
    KestFreeString(bstr);
  }

  void AllocString(StepInput& in) {
    const SText text = TakeText(in);
    FUZZ_CHECK(KestStringUtf8ByteLen(text.units) == static_cast<unsigned int>(Utf8Size(text.text)));
    unsigned short* bstr = KestAllocString(text.units);
    FUZZ_CHECK((bstr == nullptr) == (text.text.empty() || memory.Refused()));
    FUZZ_CHECK(bstr == nullptr || memcmp(bstr, text.units, 2 * text.text.size() + 2) == 0);
    KestFreeString(bstr);
  }

  void ConvertBuffer(StepInput& in) {
    const SBytes from = TakeBytes(in);
    const int given = in.Number(kArgumentUnits);
    const bool huge = given > kArgumentUnits + 2;  // which there is no memory for
    const int n = huge ? given : std::min(given, Size(from.text));
    const KEST::TConvertBuffer wide(from.bytes, n);
    const u16string expected =
        n == -1 ? from.text : from.text.substr(0, static_cast<size_t>(std::max(n, 0)));
    if (expected.empty() || huge || memory.Refused()) {
      FUZZ_CHECK(wide.GetBuffer() == nullptr && wide.GetLength() == 0);
      return;
    }
    FUZZ_CHECK(wide.GetLength() == Size(expected));
    FUZZ_CHECK(memcmp(wide.GetBuffer(), expected.c_str(), 2 * expected.size() + 2) == 0);
  }

  Memory& memory;
  TBstr strings[2];
  u16string models[2];
  int self = 0;
  int nextRoom = 0;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Strings>(data, size, 40);
}
