// TBstr, of kest/string.h, at the edges of its arguments.

#include <stdarg.h>

#include "sweep/argument_text.h"

namespace kest_test {

namespace {

using namespace KEST;

// The text after change has worked on "abc".
template <typename Change>
void ExpectChanged(const std::u16string& expected, Change change) {
  TBstr text(Abc(true));
  text.GetMultibyteString();
  change(text);
  ExpectText(expected, text);
}

void ExpectMade(const std::u16string& expected, TBstr text) { ExpectText(expected, text); }

// "abc", and its part from first on, at most count units long.
TBstr AbcString() { return TBstr(Abc(true)); }
std::u16string Part(long long first, long long count) {
  first = std::clamp<long long>(first, 0, kLength);
  return kText.substr(static_cast<size_t>(first), static_cast<size_t>(std::max(count, 0LL)));
}

// "abc" without ch at the given end.
std::u16string Trimmed(char16_t ch, size_t end) {
  return ch != 0 && kText[end] == ch ? std::u16string(kText).erase(end, 1) : kText;
}

// The unit as text; 0 is none.
std::u16string One(unsigned short ch) {
  return ch != 0 ? std::u16string(1, static_cast<char16_t>(ch)) : u"";
}

// The units of a text of this length, as far as the allocator has room. What has none is not read.
GuardedBlock<unsigned short> Source(int length) {
  return Units16(Fits(static_cast<unsigned int>(std::max(length, 0))) ? length : 0);
}

// Whether text of that many units can be made.
bool CanHold(long long length) {
  return length >= 0 && Fits(static_cast<unsigned long long>(length));
}

void FormatBstr(TBstr* text, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  text->FormatV(format, args);
  va_end(args);
}

// What "%*.*d" gives for 1; empty when there is no room for it.
std::u16string Formatted(int width, int precision) {
  const long long padded = std::abs(1LL * width);
  if (!CanHold(padded) || !CanHold(std::max(precision, 0))) return u"";
  const std::u16string number(static_cast<size_t>(std::max(precision, 1) - 1), u'0');
  std::u16string text = number + u'1';
  const size_t missing =
      static_cast<size_t>(std::max<long long>(padded - static_cast<long long>(text.size()), 0));
  return text.insert(width < 0 ? text.size() : 0, missing, u' ');
}

void AddBstrRows(Table& table) {
  table.Row("KEST::TBstr::TBstr(unsigned short, int)", Around(128, kLength),
            [](unsigned short ch, int count) {
              const bool made = ch != 0 && count > 0 && CanHold(count);
              ExpectMade(std::u16string(made ? static_cast<size_t>(count) : 0, ch),
                         TBstr(ch, count));
            });
  table.Row("KEST::TBstr::TBstr(unsigned short const*)",
            [](bool given) { ExpectMade(Given(given), TBstr(Abc(given))); });
  table.Row("KEST::TBstr::TBstr(unsigned short const*, int)", Around(kLength),
            [](bool given, int length) {
              const auto source = Source(length);
              TBstr text(given ? source.Get() : nullptr, length);
              const bool asks = given && length > 0 && length <= kLongestBstr;
              if (asks) {
                ExpectRequested(2ull * static_cast<unsigned int>(length) + 6);
              }
              ExpectText(
                  std::u16string(asks && CanHold(length) ? static_cast<size_t>(length) : 0, u'\0'),
                  text);
            });
  table.Row("KEST::TBstr::TBstr(char const*)",
            [](bool given) { ExpectMade(Given(given), TBstr(AbcBytes(given))); });
  table.Row("KEST::TBstr::TBstr(char const*, int)", Around(kLength), [](bool given, int length) {
    // The text is as long as the length says; where there is no memory it is not read.
    const int count = length == -1 ? kLength : CanHold(length) ? length : 0;
    const Bytes8 bytes(std::string(static_cast<size_t>(count), 'a') +
                       (length == -1 ? std::string(1, '\0') : ""));
    ExpectMade(std::u16string(given ? static_cast<size_t>(count) : 0, u'a'),
               TBstr(given ? bytes.Get() : nullptr, length));
  });
  table.Row("KEST::TBstr::AdjustBuffer(int, bool)", Around(kLength, kLongestBstr),
            [](int length, bool keep) {
              TBstr text(AbcString());
              const bool done = length < 1 || CanHold(length);
              EXPECT_EQ(done, text.AdjustBuffer(length, keep));
              if (length > kLength && length <= kLongestBstr) {
                ExpectRequested(2ull * static_cast<unsigned int>(length) + 6);
              }
              EXPECT_EQ(done ? std::max(length, 0) : 0, text.GetLength());
              if (done && keep) {
                EXPECT_EQ(Part(0, length),
                          TextOf(text.Left(kLength)).substr(0, Part(0, length).size()));
              }
              text.Append(u'!');
              EXPECT_EQ('!', text.GetAt(text.GetLength() - 1));
            });
  table.Row("KEST::TBstr::InternalInit(unsigned short const*, int)", Around(kLength),
            [](bool given, int length) {
              const auto source = Source(length);
              const bool empties = !given || length == 0;
              const std::u16string expected =
                  empties ? u""
                  : length < 0
                      ? kText
                      : std::u16string(CanHold(length) ? static_cast<size_t>(length) : 0, u'\0');
              ExpectChanged(expected, [&](TBstr& text) {
                EXPECT_EQ(empties || CanHold(length),
                          text.InternalInit(given ? source.Get() : nullptr, length));
              });
            });
  table.Row("KEST::TBstr::InternalAppend(unsigned short const*, int)", Around(kLength),
            [](bool given, int length) {
              const auto source = Source(length);
              const bool keeps = !given || length <= 0;
              const bool grows = !keeps && CanHold(length);
              const std::u16string expected =
                  keeps   ? kText
                  : grows ? kText + std::u16string(static_cast<size_t>(length), u'\0')
                          : u"";
              ExpectChanged(expected, [&](TBstr& text) {
                EXPECT_EQ(!given || length == 0 || grows,
                          text.InternalAppend(given ? source.Get() : nullptr, length));
              });
            });
  table.Row("KEST::TBstr::Attach(unsigned short*)", [] {
    ExpectChanged(u"", [](TBstr& text) {
      text.Empty();
      text.Attach(nullptr);
    });
  });
  table.Row("KEST::TBstr::Assign(unsigned short)", Around('a'), [](unsigned short ch) {
    ExpectChanged(ch != 0 ? One(ch) : kText, [=](TBstr& text) { text.Assign(ch); });
  });
  table.Row("KEST::TBstr::Assign(unsigned short const*)", [](bool given) {
    ExpectChanged(Given(given), [=](TBstr& text) { text.Assign(Abc(given)); });
  });
  table.Row("KEST::TBstr::Assign(char const*)", [](bool given) {
    ExpectChanged(Given(given), [=](TBstr& text) { text.Assign(AbcBytes(given)); });
  });
  table.Row("KEST::TBstr::Append(unsigned short)", Around('a'), [](unsigned short ch) {
    ExpectChanged(kText + One(ch), [=](TBstr& text) { text.Append(ch); });
  });
  table.Row("KEST::TBstr::Append(unsigned short const*)", [](bool given) {
    ExpectChanged(kText + Given(given), [=](TBstr& text) { text.Append(Abc(given)); });
  });
  table.Row("KEST::TBstr::Append(char const*)", [](bool given) {
    ExpectChanged(kText + Given(given), [=](TBstr& text) { text.Append(AbcBytes(given)); });
  });
  table.Row("KEST::TBstr::GetAt(int) const", Around(kLength), [](int index) {
    const bool inside = index >= 0 && index < kLength;
    EXPECT_EQ(inside ? kText[static_cast<size_t>(index)] : 0, AbcString().GetAt(index));
    EXPECT_EQ(0, TBstr().GetAt(index));
  });
  table.Row("KEST::TBstr::SetAt(int, unsigned short)", Around(kLength),
            [](int index, unsigned short ch) {
              std::u16string expected = kText;
              if (index >= 0 && index < kLength && ch != 0)
                expected[static_cast<size_t>(index)] = ch;
              ExpectChanged(expected, [=](TBstr& text) { text.SetAt(index, ch); });
              TBstr empty;
              empty.SetAt(index, ch);
              EXPECT_TRUE(empty.IsEmpty());
            });
  table.Row("KEST::TBstr::Compare(unsigned short const*) const", [](bool given) {
    EXPECT_EQ(given ? 0 : kLength, AbcString().Compare(Abc(given)));
    EXPECT_EQ(given ? -kLength : 0, TBstr().Compare(Abc(given)));
  });
  table.Row("KEST::TBstr::CompareNoCase(unsigned short const*) const", [](bool given) {
    EXPECT_EQ(given ? 0 : kLength, AbcString().CompareNoCase(Abc(given)));
    EXPECT_EQ(given ? -kLength : 0, TBstr().CompareNoCase(Abc(given)));
  });
  table.Row("KEST::TBstr::CompareNormal(unsigned short const*) const", [](bool given) {
    EXPECT_EQ(given ? 0 : kLength, AbcString().CompareNormal(Abc(given)));
    EXPECT_EQ(given ? -kLength : 0, TBstr().CompareNormal(Abc(given)));
  });
  table.Row("KEST::TBstr::Find(unsigned short, int) const", Around(kLength, 'b'),
            [](unsigned short ch, int start) {
              const size_t at =
                  start < 0 ? std::u16string::npos
                            : std::u16string(u"abc", 4).find(ch, static_cast<size_t>(start));
              const bool found = start < kLength && at != std::u16string::npos;
              EXPECT_EQ(found ? static_cast<int>(at) : -1, AbcString().Find(ch, start));
              EXPECT_EQ(-1, TBstr().Find(ch, start));
            });
  table.Row("KEST::TBstr::Find(unsigned short const*, int) const", Around(kLength),
            [](bool given, int start) {
              EXPECT_EQ(given && start == 0 ? 0 : -1, AbcString().Find(Abc(given), start));
              const int inside = start >= 0 && start < kLength ? start : -1;
              EXPECT_EQ(inside, AbcString().Find(KEST_TEXT(""), start));
              EXPECT_EQ(-1, TBstr().Find(Abc(given), start));
            });
  table.Row("KEST::TBstr::ReverseFind(unsigned short) const", Around('b'), [](unsigned short ch) {
    const size_t at = std::u16string(u"abc", 4).find(ch);
    EXPECT_EQ(at != std::u16string::npos ? static_cast<int>(at) : -1, AbcString().ReverseFind(ch));
    EXPECT_EQ(-1, TBstr().ReverseFind(ch));
  });
  table.Row("KEST::TBstr::FindOneOf(unsigned short const*) const", [](bool given) {
    EXPECT_EQ(given ? 0 : -1, AbcString().FindOneOf(Abc(given)));
    EXPECT_EQ(-1, TBstr().FindOneOf(Abc(given)));
  });
  table.Row("KEST::TBstr::Mid(int, int) const", Around(kLength), [](int first, int count) {
    ExpectMade(Part(first, count), AbcString().Mid(first, count));
    ExpectMade(u"", TBstr().Mid(first, count));
  });
  table.Row("KEST::TBstr::Mid(int) const", Around(kLength), [](int first) {
    ExpectMade(Part(first, kLength), AbcString().Mid(first));
    ExpectMade(u"", TBstr().Mid(first));
  });
  table.Row("KEST::TBstr::Left(int) const", Around(kLength), [](int n) {
    ExpectMade(Part(0, n), AbcString().Left(n));
    ExpectMade(u"", TBstr().Left(n));
  });
  table.Row("KEST::TBstr::Right(int) const", Around(kLength), [](int n) {
    ExpectMade(n > 0 ? Part(kLength - std::min(n, kLength), n) : u"", AbcString().Right(n));
    ExpectMade(u"", TBstr().Right(n));
  });
  table.Row("KEST::TBstr::TrimLeft(unsigned short)", Around('a', 'c'), [](unsigned short ch) {
    ExpectChanged(Trimmed(ch, 0), [=](TBstr& text) { text.TrimLeft(ch); });
  });
  table.Row("KEST::TBstr::TrimRight(unsigned short)", Around('a', 'c'), [](unsigned short ch) {
    ExpectChanged(Trimmed(ch, 2), [=](TBstr& text) { text.TrimRight(ch); });
  });
  table.Row("KEST::TBstr::Replace(unsigned short, unsigned short)", Around('b'),
            [](unsigned short from, unsigned short to) {
              std::u16string expected = kText;
              std::replace(expected.begin(), expected.end(), static_cast<char16_t>(from),
                           static_cast<char16_t>(to));
              ExpectChanged(expected, [=](TBstr& text) {
                EXPECT_EQ(kText.find(from) != std::u16string::npos ? 1 : 0, text.Replace(from, to));
              });
            });
  table.Row("KEST::TBstr::Replace(unsigned short const*, unsigned short const*)",
            [](bool from, bool to) {
              ExpectChanged(from ? Given(to) : kText, [=](TBstr& text) {
                EXPECT_EQ(from ? 1 : 0, text.Replace(Abc(from), Abc(to)));
              });
            });
  table.Row("KEST::TBstr::Remove(unsigned short)", Around('b'), [](unsigned short ch) {
    const size_t at = kText.find(ch);
    std::u16string expected = kText;
    if (at != std::u16string::npos) expected.erase(at, 1);
    ExpectChanged(expected, [&](TBstr& text) {
      EXPECT_EQ(kLength - static_cast<int>(expected.size()), text.Remove(ch));
    });
  });
  table.Row("KEST::TBstr::Insert(int, unsigned short)", Around(kLength),
            [](int index, unsigned short ch) {
              std::u16string expected = kText;
              if (index >= 0)
                expected.insert(static_cast<size_t>(std::min(index, kLength)), One(ch));
              ExpectChanged(expected, [&](TBstr& text) {
                EXPECT_EQ(static_cast<int>(expected.size()), text.Insert(index, ch));
              });
            });
  table.Row("KEST::TBstr::Insert(int, unsigned short const*)", Around(kLength),
            [](int index, bool given) {
              std::u16string expected = kText;
              if (index >= 0)
                expected.insert(static_cast<size_t>(std::min(index, kLength)), Given(given));
              ExpectChanged(expected, [&](TBstr& text) {
                EXPECT_EQ(static_cast<int>(expected.size()), text.Insert(index, Abc(given)));
              });
            });
  table.Row("KEST::TBstr::Delete(int, int)", Around(kLength), [](int index, int count) {
    std::u16string expected = kText;
    if (index >= 0 && index < kLength && count > 0) {
      expected.erase(static_cast<size_t>(index), static_cast<size_t>(count));
    }
    ExpectChanged(expected, [&](TBstr& text) {
      EXPECT_EQ(static_cast<int>(expected.size()), text.Delete(index, count));
    });
  });
  table.Row("KEST::TBstr::GetEncodedByteLength(unsigned short const*) const", [](bool given) {
    // "abc" is the name of no encoding, and null is ASCII.
    EXPECT_EQ(given ? 0 : kLength, AbcString().GetEncodedByteLength(Abc(given)));
  });
  table.Row("KEST::TBstr::Format(unsigned short const*, ...)", [](bool given, int value) {
    const std::string digits = std::to_string(value);
    ExpectChanged(given ? std::u16string(digits.begin(), digits.end()) : u"",
                  [=](TBstr& text) { text.Format(given ? KEST_TEXT("%d") : nullptr, value); });
  });
  table.Row("KEST::TBstr::FormatV(unsigned short const*, char*)", Around(kLength),
            [](bool given, int width, int precision) {
              ExpectChanged(given ? Formatted(width, precision) : u"", [=](TBstr& text) {
                FormatBstr(&text, given ? KEST_TEXT("%*.*d") : nullptr, width, precision, 1);
              });
            });

  table.Row("inline TBstr::operator=", Around('a'), [](bool given, unsigned short ch) {
    ExpectChanged(ch != 0 ? One(ch) : kText, [=](TBstr& text) { text = ch; });
    ExpectChanged(Given(given), [=](TBstr& text) { text = Abc(given); });
    ExpectChanged(Given(given), [=](TBstr& text) { text = AbcBytes(given); });
  });
  table.Row("inline TBstr::operator+=", Around('a'), [](bool given, unsigned short ch) {
    ExpectChanged(kText + One(ch), [=](TBstr& text) { text += ch; });
    ExpectChanged(kText + Given(given), [=](TBstr& text) { text += Abc(given); });
    ExpectChanged(kText + Given(given), [=](TBstr& text) { text += AbcBytes(given); });
  });
  table.Row("inline operator+", Around('a'), [](bool given, unsigned short ch) {
    ExpectMade(kText + One(ch), AbcString() + ch);
    ExpectMade(kText + Given(given), AbcString() + Abc(given));
    ExpectMade(Given(given) + kText, Abc(given) + AbcString());
  });
  table.Row("inline operator==, != and <", [](bool given) {
    EXPECT_EQ(given, AbcString() == Abc(given));
    EXPECT_EQ(given, Abc(given) == AbcString());
    EXPECT_EQ(!given, AbcString() != Abc(given));
    EXPECT_EQ(!given, Abc(given) != AbcString());
    EXPECT_FALSE(AbcString() < Abc(given));
    EXPECT_EQ(!given, Abc(given) < AbcString());
  });
}

const Table kBstr(AddBstrRows);

TEST(ArgumentSweep, Bstr) { kBstr.Run(); }

}  // namespace

}  // namespace kest_test
