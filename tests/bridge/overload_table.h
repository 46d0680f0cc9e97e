// What calls compile with char16.h, and what they give: checked wherever this is included. A row
// names the types of its arguments a and b; NONE is a row that must not compile.

#ifndef KEST_TESTS_BRIDGE_OVERLOAD_TABLE_H
#define KEST_TESTS_BRIDGE_OVERLOAD_TABLE_H

#include <type_traits>
#include <utility>

#include "kest/bridge/char16.h"

namespace overload_table {

using KEST::TBstr;
using KEST::TUnits;
using namespace KEST;

using Literal = const char16_t (&)[4];
using Chars16 = const char16_t*;
using Buffer = char16_t*;
using String = const std::u16string&;
using ViewOf16 = std::u16string_view;
using Text = const unsigned short*;
using Room = unsigned short*;
using Bytes = const char*;
using Null = std::nullptr_t;
using Const = const TBstr&;
using Mutable = TBstr&;

// A client's own text.
struct Own {
  operator std::u16string_view() const;
};

struct NONE {};

template <typename TCall, typename... TArguments>
constexpr auto Result(TCall) {
  if constexpr (std::is_invocable_v<TCall, TArguments...>) {
    return static_cast<std::invoke_result_t<TCall, TArguments...>*>(nullptr);
  } else {
    return static_cast<NONE*>(nullptr);
  }
}

template <typename TExpected, typename... TArguments, typename TCall>
constexpr bool Is(TCall call) {
  return std::is_same_v<decltype(Result<TCall, TArguments...>(call)),
                        std::remove_reference_t<TExpected>*>;
}

// A result that is a reference is compared without it. The bodies are never made.
#define ONE(expected, A, expression)                                                      \
  static_assert(                                                                          \
      __COUNTER__ >= 0 &&                                                                 \
          Is<expected, A>([](auto&& a) -> std::remove_reference_t<decltype(expression)> { \
            return expression;                                                            \
          }),                                                                             \
      #expression " with " #A)
#define TWO(expected, A, B, expression)                                                           \
  static_assert(__COUNTER__ >= 0 &&                                                               \
                    Is<expected, A, B>(                                                           \
                        [](auto&& a, auto&& b) -> std::remove_reference_t<decltype(expression)> { \
                          return expression;                                                      \
                        }),                                                                       \
                #expression " with " #A " and " #B)

constexpr int kBefore = __COUNTER__;

// Into the library's units, and back.
ONE(const unsigned short*, Literal, Units(a));
ONE(const unsigned short*, Chars16, Units(a));
ONE(unsigned short*, Buffer, Units(a));
ONE(const unsigned short*, String, Units(a));
ONE(TUnits, ViewOf16, Units(a));
ONE(TUnits, Own, Units(a));
ONE(const unsigned short*, Null, Units(a));
ONE(NONE, Bytes, Units(a));
ONE(NONE, Text, Units(a));
ONE(NONE, int, Units(a));
ONE(const char16_t*, Text, Chars(a));
ONE(char16_t*, Room, Chars(a));
ONE(const char16_t*, Const, Chars(a));
ONE(const char16_t*, Null, Chars(a));
ONE(NONE, Bytes, Chars(a));
ONE(NONE, Chars16, Chars(a));
ONE(std::u16string_view, Const, View(a));
ONE(std::u16string_view, Text, View(a));
ONE(std::u16string_view, Null, View(a));
ONE(NONE, Bytes, View(a));
ONE(std::u16string, Const, ToU16String(a));
ONE(std::u16string, Null, ToU16String(a));

// Into a TBstr.
ONE(TBstr, Literal, ToBstr(a));
ONE(TBstr, Buffer, ToBstr(a));
ONE(TBstr, String, ToBstr(a));
ONE(TBstr, ViewOf16, ToBstr(a));
ONE(TBstr, Own, ToBstr(a));
ONE(TBstr, Null, ToBstr(a));
ONE(NONE, char16_t, ToBstr(a));
ONE(NONE, int, ToBstr(a));
ONE(NONE, Bytes, ToBstr(a));
ONE(NONE, std::u32string_view, ToBstr(a));
ONE(NONE, Literal, TBstr(a));
TWO(bool, Mutable, ViewOf16, Assign(a, b));
TWO(bool, Mutable, Literal, Append(a, b));
TWO(NONE, Const, Literal, Append(a, b));
TWO(TBstr, Mutable, Literal, a += b);
TWO(TBstr, Mutable, char16_t, a += b);
TWO(TBstr, Mutable, Text, a += b);
TWO(NONE, Mutable, Null, a += b);
TWO(NONE, Const, ViewOf16, a += b);
TWO(TBstr, Const, Literal, a + b);
TWO(TBstr, ViewOf16, Const, a + b);
TWO(TBstr, Const, char16_t, a + b);
TWO(TBstr, Text, Const, a + b);

// Comparing. What compiled before means what it meant.
TWO(bool, Const, Literal, a == b);
TWO(bool, Literal, Const, a == b);
TWO(bool, ViewOf16, Const, a != b);
TWO(bool, Const, Own, a < b);
TWO(bool, String, Const, a > b);
TWO(bool, Const, Const, a >= b);
TWO(bool, Const, Text, a <= b);
TWO(bool, Const, Null, a == b);
TWO(bool, Null, Const, a != b);
TWO(bool, Const, Bytes, a == b);
TWO(NONE, Const, char16_t, a == b);
TWO(NONE, Const, std::u32string_view, a == b);

// UTF-8.
ONE(std::string, Const, ToUtf8(a));
ONE(std::string, Literal, ToUtf8(a));
ONE(std::string, Null, ToUtf8(a));
ONE(TBstr, Bytes, FromUtf8(a));
ONE(TBstr, const std::string&, FromUtf8(a));
ONE(TBstr, Null, FromUtf8(a));
ONE(NONE, Literal, FromUtf8(a));

// Flat functions.
ONE(unsigned short*, Literal, KestAllocString(a));
ONE(unsigned short*, ViewOf16, KestAllocString(a));
ONE(unsigned short*, Text, KestAllocString(a));
ONE(unsigned short*, Null, KestAllocString(a));
ONE(NONE, Bytes, KestAllocString(a));
ONE(unsigned int, Literal, ucslen(a));
ONE(unsigned int, String, ucslen(a));
ONE(unsigned int, Null, ucslen(a));
ONE(NONE, Const, ucslen(a));
TWO(int, Literal, Text, ucscmp(a, b));
TWO(int, Text, ViewOf16, ucscmp(a, b));
TWO(int, Literal, Null, ucscmp(a, b));
TWO(int, Text, Text, ucscmp(a, b));
TWO(int, Null, Null, ucscmp(a, b));
TWO(NONE, Literal, Bytes, ucscmp(a, b));
ONE(unsigned short*, Chars16, ucschr(a, u'x'));
ONE(NONE, ViewOf16, ucschr(a, u'x'));  // the place would be in a copy
ONE(NONE, std::u16string, ucschr(a, u'x'));
TWO(unsigned short*, Chars16, ViewOf16, ucsstr(a, b));
TWO(unsigned short*, Text, Literal, ucsstr(a, b));
TWO(NONE, ViewOf16, Literal, ucsstr(a, b));
ONE(int, Literal, ucstol(a, nullptr, 10));
ONE(int, ViewOf16, ucstol(a, nullptr, 10));
ONE(int, Chars16, ucstol(a, 0, 10));
ONE(int, Null, ucstol(a, nullptr, 10));
TWO(int, Chars16, unsigned short**, ucstol(a, b, 10));
TWO(NONE, ViewOf16, unsigned short**, ucstol(a, b, 10));
TWO(char16_t*, Buffer, Literal, ucscpy(a, b));
TWO(char16_t*, Buffer, Text, ucscpy(a, b));
TWO(unsigned short*, Room, Literal, ucscpy(a, b));
TWO(unsigned short*, Room, Text, ucscpy(a, b));
TWO(NONE, Chars16, Literal, ucscpy(a, b));
TWO(NONE, Literal, Text, ucscpy(a, b));
TWO(unsigned int, Buffer, ViewOf16, ucslcpy(a, b, 4));
TWO(void, Literal, Mutable, KestEntityEscape(a, b));
TWO(void, Null, Mutable, KestEntityEscape(a, b));
TWO(NONE, Literal, Const, KestEntityEscape(a, b));

constexpr int kRows = __COUNTER__ - kBefore - 1;
static_assert(kRows >= 60);

#undef ONE
#undef TWO

}  // namespace overload_table

#endif  // KEST_TESTS_BRIDGE_OVERLOAD_TABLE_H
