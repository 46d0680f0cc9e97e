// char16_t and UTF-8 for the library's text: u"..." and std::u16string_view in and out of TBstr and
// of the flat functions, std::string in UTF-8, streams, hashing and ordering.
//
// True of all of it:
//   Text       "16-bit text" below is what is made of char16_t: a u"..." literal, a pointer to
//              terminated text (null is empty text), a std::u16string, a std::u16string_view, or a
//              class that converts to one. nullptr and 0 are none: they mean what they mean without
//              this header, so no call becomes ambiguous. A view counts its zero units.
//   Failure    Nothing here throws by itself; what makes a std::string throws what that throws.
//              Without memory a TBstr ends up empty.
//   Threads    As a TBstr: one thread at a time.
//   Aliasing   The library's unit is unsigned short, which has the form of char16_t but is another
//              type. Copies are made bytewise. A pointer that changes its type goes through an
//              empty assembler statement, before which the compiler finishes all accesses to memory
//              and behind which it knows nothing of it, so none is moved across.
//   Example    examples/event_loop/event_loop.cpp

#ifndef KEST_BRIDGE_CHAR16_H
#define KEST_BRIDGE_CHAR16_H

#include <limits.h>
#include <stddef.h>
#include <string.h>

#include <functional>
#include <ostream>
#include <string>
#include <string_view>
#include <type_traits>

#include "kest/string.h"
#include "kest/text.h"

namespace KEST {

namespace bridge_detail {

static_assert(sizeof(char16_t) == sizeof(unsigned short) &&
              alignof(char16_t) == alignof(unsigned short));

template <typename To, typename From>
To* Recast(From* from) {
  To* to = reinterpret_cast<To*>(from);
  __asm__ __volatile__("" : "+r"(to) : : "memory");
  return to;
}

// Behind a call that has stored units in a place that is read as char16_t.
inline void AfterStores() { __asm__ __volatile__("" : : : "memory"); }

template <typename T>
struct TIsString16 : std::false_type {};
template <typename TTraits, typename TAllocator>
struct TIsString16<std::basic_string<char16_t, TTraits, TAllocator>> : std::true_type {};

template <typename T>
constexpr bool kIsPointer16 =
    std::is_same_v<std::decay_t<T>, char16_t*> || std::is_same_v<std::decay_t<T>, const char16_t*>;
template <typename T>
constexpr bool kIsTerminated16 = kIsPointer16<T> || TIsString16<T>::value;
template <typename T>
constexpr bool kIsText16 = kIsTerminated16<T> ||
                           (std::is_convertible_v<const T&, std::u16string_view> &&
                            !std::is_null_pointer_v<T>);

template <typename... T>
using TIfText16 = std::enable_if_t<(kIsText16<T> && ...), int>;

// A flat call is taken over when one of its texts is 16-bit text and the others are texts too.
template <typename T>
constexpr bool kIsUnits = std::is_convertible_v<const T&, const unsigned short*>;
template <typename... T>
using TIfTexts =
    std::enable_if_t<(kIsText16<T> || ...) && ((kIsText16<T> || kIsUnits<T>)&&...), int>;

// The same where the result points into the first text, which therefore is no copy.
template <typename T>
constexpr bool kIsPlace = kIsPointer16<T> || (kIsUnits<T> && !kIsText16<T>);
template <typename T, typename... TOthers>
using TIfPlace = std::enable_if_t<kIsPlace<T> && (kIsText16<T> || ... || kIsText16<TOthers>)&&((
                                                     kIsText16<TOthers> || kIsUnits<TOthers>)&&...),
                                  int>;

// A copy into char16_t, or of 16-bit text into units.
template <typename C, typename T>
using TIfCopy = std::enable_if_t<(std::is_same_v<C, char16_t> && (kIsText16<T> || kIsUnits<T>)) ||
                                     (std::is_same_v<C, unsigned short> && kIsText16<T>),
                                 int>;
template <typename C>
using TIfChar16 = std::enable_if_t<std::is_same_v<C, char16_t>, int>;
template <typename T>
using TIfPointer16 = std::enable_if_t<kIsPointer16<T>, int>;
// Text that may be gone when the call returns.
template <typename T>
using TIfPassing = std::enable_if_t<kIsText16<T> && !kIsPointer16<T>, int>;

template <typename T>
std::u16string_view ViewOf(const T& text) {
  if constexpr (kIsPointer16<T>) {
    const char16_t* const s = text;
    return s != nullptr ? std::u16string_view(s) : std::u16string_view();
  } else {
    return text;
  }
}

inline std::u16string_view UpToZero(std::u16string_view text) {
  return text.substr(0, text.find(u'\0'));
}

}  // namespace bridge_detail

// ---- Pointers and views

// The same text as the library's units, for any call that takes them; null for null. Nothing is
// copied: the result is valid as long as the argument is.
inline const unsigned short* Units(const char16_t* s) {
  return bridge_detail::Recast<const unsigned short>(s);
}
inline unsigned short* Units(char16_t* s) { return bridge_detail::Recast<unsigned short>(s); }
inline const unsigned short* Units(const std::u16string& s) { return Units(s.c_str()); }
inline const unsigned short* Units(std::nullptr_t) { return nullptr; }

// A terminated copy of a view, since the library reads up to a terminator. Empty without memory. It
// stands for its units where they are expected and lives to the end of the full expression, or as
// long as the object that it is kept in.
class TUnits {
 public:
  explicit TUnits(std::u16string_view s);

  // The text, never null, with a terminator.
  operator const unsigned short*() const { return copy.GetString(); }

 private:
  TBstr copy;
};
inline TUnits Units(std::u16string_view s) { return TUnits(s); }

// The other way: the library's units as char16_t, terminated; null for null. Of a TBstr never null,
// and valid until that is changed.
inline const char16_t* Chars(const unsigned short* s) {
  return bridge_detail::Recast<const char16_t>(s);
}
inline char16_t* Chars(unsigned short* s) { return bridge_detail::Recast<char16_t>(s); }
inline const char16_t* Chars(const TBstr& s) { return Chars(s.GetString()); }
inline const char16_t* Chars(std::nullptr_t) { return nullptr; }
void Chars(const char*) = delete;  // the TBstr that it would make is gone before its text is used

// The whole text of a TBstr, zero units included, or terminated text without its terminator; null
// is empty. Nothing is copied: it is valid until the TBstr is changed.
inline std::u16string_view View(const TBstr& s) {
  return std::u16string_view(Chars(s), static_cast<size_t>(s.GetLength()));
}
inline std::u16string_view View(const unsigned short* s) { return bridge_detail::ViewOf(Chars(s)); }
inline std::u16string_view View(std::nullptr_t) { return {}; }
void View(const char*) = delete;

// A copy.
inline std::u16string ToU16String(const TBstr& s) { return std::u16string(View(s)); }
inline std::u16string ToU16String(const unsigned short* s) { return std::u16string(View(s)); }
inline std::u16string ToU16String(std::nullptr_t) { return {}; }

// ---- Into a TBstr

// text becomes the text of s, or is added to it. It may lie in s. False, with s empty, without
// memory and for more than INT_MAX units.
template <typename T, bridge_detail::TIfText16<T> = 0>
bool Assign(TBstr& s, const T& text) {
  const std::u16string_view view = bridge_detail::ViewOf(text);
  if (view.size() <= INT_MAX) {
    return s.InternalInit(Units(view.data()), static_cast<int>(view.size()));
  }
  s.Empty();
  return false;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool Append(TBstr& s, const T& text) {
  const std::u16string_view view = bridge_detail::ViewOf(text);
  if (view.size() <= INT_MAX) {
    return s.InternalAppend(Units(view.data()), static_cast<int>(view.size()));
  }
  s.Empty();
  return false;
}

// A TBstr with that text; empty without memory.
template <typename T, bridge_detail::TIfText16<T> = 0>
TBstr ToBstr(const T& text) {
  TBstr s;
  Assign(s, text);
  return s;
}
inline TBstr ToBstr(std::nullptr_t) { return TBstr(); }

inline TUnits::TUnits(std::u16string_view s) : copy(ToBstr(s)) {}

inline namespace literals {

// u"..."_bstr: the whole literal, zero units included.
inline TBstr operator""_bstr(const char16_t* s, size_t length) {
  return ToBstr(std::u16string_view(s, length));
}

}  // namespace literals

// As the members of TBstr that take unsigned short*. A single u'x' is one unit, as before.
template <typename T, bridge_detail::TIfText16<T> = 0>
TBstr& operator+=(TBstr& s, const T& text) {
  Append(s, text);
  return s;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
TBstr operator+(const TBstr& a, const T& b) {
  TBstr sum(a);
  Append(sum, b);
  return sum;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
TBstr operator+(const T& a, const TBstr& b) {
  TBstr sum = ToBstr(a);
  sum.Append(b);
  return sum;
}

// ---- Comparing

// As TBstr's own comparisons: unit by unit, up to the first zero unit. So "a\0b" equals "a";
// compare View(a) with View(b) where zero units count. Units do not order as characters do: those
// beyond U+FFFF come before U+E000.
template <typename T, bridge_detail::TIfText16<T> = 0>
int Compare(const TBstr& a, const T& b) {
  return bridge_detail::UpToZero(View(a)).compare(
      bridge_detail::UpToZero(bridge_detail::ViewOf(b)));
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator==(const TBstr& a, const T& b) {
  return Compare(a, b) == 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator==(const T& a, const TBstr& b) {
  return Compare(b, a) == 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator!=(const TBstr& a, const T& b) {
  return Compare(a, b) != 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator!=(const T& a, const TBstr& b) {
  return Compare(b, a) != 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator<(const TBstr& a, const T& b) {
  return Compare(a, b) < 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator<(const T& a, const TBstr& b) {
  return Compare(b, a) > 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator>(const TBstr& a, const T& b) {
  return Compare(a, b) > 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator>(const T& a, const TBstr& b) {
  return Compare(b, a) < 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator<=(const TBstr& a, const T& b) {
  return Compare(a, b) <= 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator<=(const T& a, const TBstr& b) {
  return Compare(b, a) >= 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator>=(const TBstr& a, const T& b) {
  return Compare(a, b) >= 0;
}
template <typename T, bridge_detail::TIfText16<T> = 0>
bool operator>=(const T& a, const TBstr& b) {
  return Compare(b, a) <= 0;
}

// The three that kest/string.h leaves out.
inline bool operator>(const TBstr& a, const TBstr& b) { return b < a; }
inline bool operator>(const TBstr& a, const unsigned short* b) { return b < a; }
inline bool operator>(const unsigned short* a, const TBstr& b) { return b < a; }
inline bool operator<=(const TBstr& a, const TBstr& b) { return !(b < a); }
inline bool operator<=(const TBstr& a, const unsigned short* b) { return !(b < a); }
inline bool operator<=(const unsigned short* a, const TBstr& b) { return !(b < a); }
inline bool operator>=(const TBstr& a, const TBstr& b) { return !(a < b); }
inline bool operator>=(const TBstr& a, const unsigned short* b) { return !(a < b); }
inline bool operator>=(const unsigned short* a, const TBstr& b) { return !(a < b); }

// ---- UTF-8

namespace bridge_detail {

constexpr char32_t kReplacement = 0xFFFD;

constexpr bool IsHighHalf(char32_t unit) { return unit >= 0xD800 && unit <= 0xDBFF; }
constexpr bool IsLowHalf(char32_t unit) { return unit >= 0xDC00 && unit <= 0xDFFF; }

// The character at the index, which moves behind it.
inline char32_t TakeCharacter(std::u16string_view text, size_t& index) {
  const char32_t unit = text[index++];
  if (!IsHighHalf(unit) && !IsLowHalf(unit)) return unit;
  if (IsLowHalf(unit) || index == text.size() || !IsLowHalf(text[index])) return kReplacement;
  const char32_t low = text[index++];
  return 0x10000 + ((unit - 0xD800) << 10) + (low - 0xDC00);
}

// The same in UTF-8. A replacement stands for the longest beginning of a character that there is,
// or for one byte, as the Unicode Standard recommends (table 3-7 has the ranges).
inline char32_t TakeCharacter(std::string_view bytes, size_t& index) {
  const auto lead = static_cast<unsigned char>(bytes[index++]);
  if (lead < 0x80) return lead;
  const int more = lead >= 0xF0 ? 3 : lead >= 0xE0 ? 2 : 1;
  if (lead < 0xC2 || lead > 0xF4) return kReplacement;
  unsigned int lowest = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
  unsigned int highest = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
  char32_t character = lead & (0x3Fu >> more);
  for (int i = 0; i < more; ++i) {
    if (index == bytes.size()) return kReplacement;
    const auto next = static_cast<unsigned char>(bytes[index]);
    if (next < lowest || next > highest) return kReplacement;
    ++index;
    character = character << 6 | (next & 0x3Fu);
    lowest = 0x80;
    highest = 0xBF;
  }
  return character;
}

inline void AppendUtf8(std::string& out, char32_t character) {
  const auto put = [&out](char32_t byte) {
    out.push_back(static_cast<char>(static_cast<unsigned char>(byte)));
  };
  if (character < 0x80) return put(character);
  if (character < 0x800) {
    put(0xC0 | character >> 6);
  } else {
    if (character < 0x10000) {
      put(0xE0 | character >> 12);
    } else {
      put(0xF0 | character >> 18);
      put(0x80 | (character >> 12 & 0x3F));
    }
    put(0x80 | (character >> 6 & 0x3F));
  }
  put(0x80 | (character & 0x3F));
}

}  // namespace bridge_detail

// The text in UTF-8, zero units included. A surrogate pair is one sequence of four bytes; a half
// without its other half is U+FFFD, EF BF BD. TBstr, units (null is empty) and 16-bit text.
template <typename T, bridge_detail::TIfText16<T> = 0>
std::string ToUtf8(const T& text) {
  const std::u16string_view view = bridge_detail::ViewOf(text);
  std::string out;
  out.reserve(view.size());
  for (size_t i = 0; i < view.size();) {
    bridge_detail::AppendUtf8(out, bridge_detail::TakeCharacter(view, i));
  }
  return out;
}
inline std::string ToUtf8(const TBstr& s) { return ToUtf8(View(s)); }
inline std::string ToUtf8(const unsigned short* s) { return ToUtf8(View(s)); }
inline std::string ToUtf8(std::nullptr_t) { return {}; }

// UTF-8 as text, zero bytes included; a null pointer is empty. A character beyond U+FFFF is a
// surrogate pair. What is no UTF-8 becomes U+FFFD: one for each byte that begins nothing, and one
// for each beginning that is not carried on; so do overlong forms, encoded surrogates and what lies
// beyond U+10FFFF, byte for byte. Empty without memory and for more than INT_MAX units.
inline TBstr FromUtf8(std::string_view bytes) {
  size_t length = 0;
  for (size_t i = 0; i < bytes.size();) {
    length += bridge_detail::TakeCharacter(bytes, i) > 0xFFFF ? 2 : 1;
  }
  TBstr text;
  if (length == 0 || length > INT_MAX || !text.AdjustBuffer(static_cast<int>(length), false)) {
    return text;
  }
  unsigned short* unit = *text.GetRawBstrPtr();
  for (size_t i = 0; i < bytes.size();) {
    char32_t character = bridge_detail::TakeCharacter(bytes, i);
    if (character > 0xFFFF) {
      character -= 0x10000;
      *unit++ = static_cast<unsigned short>(0xD800 + (character >> 10));
      character = 0xDC00 + (character & 0x3FF);
    }
    *unit++ = static_cast<unsigned short>(character);
  }
  return text;
}
inline TBstr FromUtf8(const char* s) {
  return s != nullptr ? FromUtf8(std::string_view(s)) : TBstr();
}
#ifdef __cpp_char8_t
inline TBstr FromUtf8(std::u8string_view bytes) {
  return FromUtf8(std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
}
inline TBstr FromUtf8(const char8_t* s) { return FromUtf8(reinterpret_cast<const char*>(s)); }
#endif
inline TBstr FromUtf8(std::nullptr_t) { return TBstr(); }

// The library's own conversions, unit by unit: for data that its other users write and read. Each
// half of a pair is three bytes, and nothing is validated; kest/string.h says what comes out. The
// bytes of a text of more than INT_MAX / 3 units do not fit: empty.
inline std::string ToUtf8ByUnit(const TBstr& s) {
  const int length = s.GetLength();
  if (length > INT_MAX / 3) return {};
  std::string out(static_cast<size_t>(length) * 3, '\0');
  const int size = KestStringToUtf8(s.GetString(), length, out.data(), length * 3);
  out.resize(static_cast<size_t>(size));
  return out;
}
inline TBstr FromUtf8ByUnit(std::string_view bytes) {
  TBstr text;
  if (bytes.empty() || bytes.size() > INT_MAX) return text;
  const int size = static_cast<int>(bytes.size());
  if (!text.AdjustBuffer(size, false)) return text;
  const int length = KestUtf8ToString(bytes.data(), size, *text.GetRawBstrPtr(), size);
  text.AdjustBuffer(length, true);
  return text;
}

// The text in UTF-8, as ToUtf8 gives it. The width of the stream counts bytes.
template <typename TTraits>
std::basic_ostream<char, TTraits>& operator<<(std::basic_ostream<char, TTraits>& out,
                                              const TBstr& s) {
  const std::string bytes = ToUtf8(s);
  return out << std::basic_string_view<char, TTraits>(bytes.data(), bytes.size());
}

}  // namespace KEST

// Agrees with operator==: up to the first zero unit. The value is of this process alone.
template <>
struct std::hash<KEST::TBstr> {
  size_t operator()(const KEST::TBstr& s) const {
    return std::hash<std::u16string_view>()(KEST::bridge_detail::UpToZero(KEST::View(s)));
  }
};

// ---- Flat functions

// The functions of kest/string.h and kest/text.h under their own names, for 16-bit text; each does
// what its namesake says. A view is copied for the call where a terminator is needed, and counts as
// empty when there is no memory for that. A function that gives a place in the text takes no view
// and no std::u16string, which may be gone by then, and gives units, which Chars turns back.
//
// A name that has overloads has no address without a type: write
// static_cast<unsigned int (*)(const unsigned short*)>(&KEST::ucslen).

namespace KEST::bridge_detail {

// What a flat function is called with: units as they are, 16-bit text as units. What comes of a
// view lives to the end of the full expression.
class TArgument {
 public:
  template <typename T>
  explicit TArgument(const T& text) : units(nullptr) {
    if constexpr (TIsString16<T>::value) {
      units = Units(text.c_str());
    } else if constexpr (kIsPointer16<T>) {
      const char16_t* const s = text;
      units = Units(s);
    } else if constexpr (kIsText16<T>) {
      copy = ToBstr(text);
      units = copy.GetString();
    } else {
      units = text;
    }
  }
  TArgument(const TArgument&) = delete;
  TArgument& operator=(const TArgument&) = delete;
  operator const unsigned short*() const { return units; }

 private:
  TBstr copy;
  const unsigned short* units;
};

inline unsigned short* Place(char16_t* dest) { return Units(dest); }
inline unsigned short* Place(unsigned short* dest) { return dest; }
template <typename C>
C* PlaceOf(unsigned short* place) {
  return Recast<C>(place);
}

}  // namespace KEST::bridge_detail

// A BSTR of the whole text, zero units of a view included; null when it is empty, longer than
// 0x7FFFFFFC units, or without memory. Freed with KestFreeString.
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
unsigned short* KestAllocString(const T& text) {
  const std::u16string_view view = KEST::bridge_detail::ViewOf(text);
  if (view.empty() || view.size() > 0x7FFFFFFC) return nullptr;
  return KestAllocStringLen(KEST::Units(view.data()), static_cast<unsigned int>(view.size()));
}

// A BSTR of the first length units, of which there must be that many; a null pointer leaves them
// for the caller to fill.
template <typename T, KEST::bridge_detail::TIfPointer16<T> = 0>
unsigned short* KestAllocStringLen(const T& text, unsigned int length) {
  return KestAllocStringLen(KEST::bridge_detail::TArgument(text), length);
}

// Bytes in UTF-8, unit by unit: up to the first zero unit.
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
unsigned int KestStringUtf8ByteLen(const T& text) {
  return KestStringUtf8ByteLen(KEST::bridge_detail::TArgument(text));
}

// Between text and bytes, by length.
template <typename T, KEST::bridge_detail::TIfPointer16<T> = 0>
int KestStringToUtf8(const T& text, int length, char* dest, int size) {
  return KestStringToUtf8(KEST::bridge_detail::TArgument(text), length, dest, size);
}
template <typename T, KEST::bridge_detail::TIfPointer16<T> = 0>
int KestUnicodeToMultibyte(const T& text, int length, char* dest, int size) {
  return KestUnicodeToMultibyte(KEST::bridge_detail::TArgument(text), length, dest, size);
}
template <typename C, KEST::bridge_detail::TIfChar16<C> = 0>
int KestUtf8ToString(const char* src, int length, C* dest, int size) {
  const int written = KestUtf8ToString(src, length, KEST::Units(dest), size);
  KEST::bridge_detail::AfterStores();
  return written;
}
template <typename C, KEST::bridge_detail::TIfChar16<C> = 0>
int KestMultibyteToUnicode(const char* src, int length, C* dest, int size) {
  const int written = KestMultibyteToUnicode(src, length, KEST::Units(dest), size);
  KEST::bridge_detail::AfterStores();
  return written;
}

// Text interchange.
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
void KestEntityEscape(const T& text, KEST::TBstr& out) {
  KestEntityEscape(KEST::bridge_detail::TArgument(text), out);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
void KestEntityUnescape(const T& text, KEST::TBstr& out) {
  KestEntityUnescape(KEST::bridge_detail::TArgument(text), out);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
void KestPlainToHtml(const T& plain, KEST::TBstr& html) {
  KestPlainToHtml(KEST::bridge_detail::TArgument(plain), html);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
void KestHtmlToPlain(const T& html, KEST::TBstr& plain) {
  KestHtmlToPlain(KEST::bridge_detail::TArgument(html), plain);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
bool KestInetAtoN(const T& text, unsigned int* address, unsigned int* port) {
  return KestInetAtoN(KEST::bridge_detail::TArgument(text), address, port);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
int KestIsoToZelEncoding(const T& name, int* encoding) {
  return KestIsoToZelEncoding(KEST::bridge_detail::TArgument(name), encoding);
}
template <typename T, KEST::bridge_detail::TIfText16<T> = 0>
int KestIsoToZelLang(const T& code, int* language) {
  return KestIsoToZelLang(KEST::bridge_detail::TArgument(code), language);
}

namespace KEST {

// Length and comparison: up to the first zero unit or the end of the view.
template <typename T, bridge_detail::TIfText16<T> = 0>
unsigned int ucslen(const T& s) {
  return static_cast<unsigned int>(bridge_detail::UpToZero(bridge_detail::ViewOf(s)).size());
}
template <typename T, typename U, bridge_detail::TIfTexts<T, U> = 0>
int ucscmp(const T& a, const U& b) {
  return ucscmp(bridge_detail::TArgument(a), bridge_detail::TArgument(b));
}
template <typename T, typename U, bridge_detail::TIfTexts<T, U> = 0>
int ucsncmp(const T& a, const U& b, unsigned int n) {
  return ucsncmp(bridge_detail::TArgument(a), bridge_detail::TArgument(b), n);
}
template <typename T, typename U, bridge_detail::TIfTexts<T, U> = 0>
int ucsicmp(const T& a, const U& b) {
  return ucsicmp(bridge_detail::TArgument(a), bridge_detail::TArgument(b));
}
template <typename T, typename U, bridge_detail::TIfTexts<T, U> = 0>
int ucsnicmp(const T& a, const U& b, unsigned int n) {
  return ucsnicmp(bridge_detail::TArgument(a), bridge_detail::TArgument(b), n);
}

// Places in s, null when there is none.
template <typename T, bridge_detail::TIfPlace<T> = 0>
unsigned short* ucschr(const T& s, unsigned short ch) {
  return ucschr(bridge_detail::TArgument(s), ch);
}
template <typename T, bridge_detail::TIfPlace<T> = 0>
unsigned short* ucsrchr(const T& s, unsigned short ch) {
  return ucsrchr(bridge_detail::TArgument(s), ch);
}
template <typename T, typename U, bridge_detail::TIfPlace<T, U> = 0>
unsigned short* ucspbrk(const T& s, const U& set) {
  return ucspbrk(bridge_detail::TArgument(s), bridge_detail::TArgument(set));
}
template <typename T, typename U, bridge_detail::TIfPlace<T, U> = 0>
unsigned short* ucsstr(const T& haystack, const U& needle) {
  return ucsstr(bridge_detail::TArgument(haystack), bridge_detail::TArgument(needle));
}

// Numbers. Where the number ends is told of pointers alone; pass a null end with other text.
template <typename T, bridge_detail::TIfPlace<T> = 0>
int ucstol(const T& s, unsigned short** end, int base) {
  return ucstol(bridge_detail::TArgument(s), end, base);
}
template <typename T, bridge_detail::TIfPassing<T> = 0>
int ucstol(const T& s, std::nullptr_t, int base) {
  return ucstol(bridge_detail::TArgument(s), static_cast<unsigned short**>(nullptr), base);
}
template <typename T, bridge_detail::TIfPlace<T> = 0>
unsigned int ucstoul(const T& s, unsigned short** end, int base) {
  return ucstoul(bridge_detail::TArgument(s), end, base);
}
template <typename T, bridge_detail::TIfPassing<T> = 0>
unsigned int ucstoul(const T& s, std::nullptr_t, int base) {
  return ucstoul(bridge_detail::TArgument(s), static_cast<unsigned short**>(nullptr), base);
}

// Copies into char16_t, or of 16-bit text into units. The unbounded ones need room for the result.
// They give dest, or for ucscat the place of the first appended unit.
template <typename C, typename T, bridge_detail::TIfCopy<C, T> = 0>
C* ucscpy(C* dest, const T& src) {
  return bridge_detail::PlaceOf<C>(
      ucscpy(bridge_detail::Place(dest), bridge_detail::TArgument(src)));
}
template <typename C, typename T, bridge_detail::TIfCopy<C, T> = 0>
C* ucsncpy(C* dest, const T& src, unsigned int n) {
  return bridge_detail::PlaceOf<C>(
      ucsncpy(bridge_detail::Place(dest), bridge_detail::TArgument(src), n));
}
template <typename C, typename T, bridge_detail::TIfCopy<C, T> = 0>
C* ucscat(C* dest, const T& src) {
  return bridge_detail::PlaceOf<C>(
      ucscat(bridge_detail::Place(dest), bridge_detail::TArgument(src)));
}
template <typename C, typename T, bridge_detail::TIfCopy<C, T> = 0>
unsigned int ucslcpy(C* dest, const T& src, unsigned int size) {
  const unsigned int length =
      ucslcpy(bridge_detail::Place(dest), bridge_detail::TArgument(src), size);
  bridge_detail::AfterStores();
  return length;
}
template <typename C, typename T, bridge_detail::TIfCopy<C, T> = 0>
unsigned int ucslcat(C* dest, const T& src, unsigned int size) {
  const unsigned int length =
      ucslcat(bridge_detail::Place(dest), bridge_detail::TArgument(src), size);
  bridge_detail::AfterStores();
  return length;
}

// In place.
template <typename C, bridge_detail::TIfChar16<C> = 0>
C* ucsupr(C* s) {
  return Chars(ucsupr(Units(s)));
}
template <typename C, bridge_detail::TIfChar16<C> = 0>
C* ucslwr(C* s) {
  return Chars(ucslwr(Units(s)));
}
template <typename C, bridge_detail::TIfChar16<C> = 0>
C* ucsrev(C* s) {
  return Chars(ucsrev(Units(s)));
}

}  // namespace KEST

#endif  // KEST_BRIDGE_CHAR16_H
