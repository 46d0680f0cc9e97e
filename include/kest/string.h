// Text: length-prefixed buffers (BSTRs), the string class TBstr, conversion to and from bytes, wide
// C strings and formatted output.
//
// True of all of it:
//   Units      Text is 16-bit code units, UTF-16 without its pairs: a surrogate half is a unit like
//              any other. Lengths and indexes count units, byte lengths say so.
//   Letters    Case is ASCII case, and a space is U+0020 alone.
//   Null       The null pointer is the empty text: there is no empty BSTR, and text that is only
//              read may be null.
//   Failure    Nothing throws. Without memory a function gives null, and a TBstr ends up empty.
//   Ownership  Arguments stay the caller's and are not kept. What a function gives in memory of its
//              own is a BSTR, which the caller frees with KestFreeString.
//   Threads    The functions share nothing but the allocator. A TBstr belongs to one thread at a
//              time, even for reading: its 8-bit copy is made by a const member.
//   Blocking   Never, save for what the allocator hooks do.
//   Cost       Linear in the text.
//   Example    examples/strings/strings.cpp
//   See        docs/strings.md
#ifndef KEST_STRING_H
#define KEST_STRING_H

#include <stdarg.h>
#include "kest/export.h"

// A literal as text: KEST_TEXT("abc"). It lives as long as the program and cannot initialise an
// array. A single unit is written u'x'.
#define KEST_TEXT(s) (reinterpret_cast<const unsigned short*>(u"" s))

extern "C" {

// A BSTR is a pointer to the first unit of a text that ends with a zero unit and carries its length
// in front: one block of an unsigned 32-bit byte count (native order), the units, the zero unit. It
// may be passed wherever a wide C string is expected, and may hold zero units of its own.
//
// Whoever gets a BSTR from one of these, or from TBstr::Copy or Detach, frees it with
// KestFreeString. Blocks come from KestMemAlloc, and are released under the hooks that gave them.
//
//   bstr     a BSTR, or null
//   Failure  null without memory; what only reads or frees cannot fail
//   Cost     a request for memory and a copy of the text

// A new BSTR with a copy of s up to its terminator.
//   s       text, or null
//   Result  the BSTR, which the caller frees; null when s is null or empty, or there is no memory
KEST_API unsigned short* KestAllocString(const unsigned short* s);

// A new BSTR with a copy of the first length units of s, zero units included.
//   s       at least length units; with null the units are left for the caller to fill
//   length  in units, without the terminator, which is added
//   Result  the BSTR, which the caller frees; null when length is 0 or above 0x7FFFFFFC, or there
//           is no memory
KEST_API unsigned short* KestAllocStringLen(const unsigned short* s, unsigned int length);

// Frees a BSTR; null is ignored.
//   Ownership  the text is gone afterwards, whoever else has its address
//   Cost       one call of the allocator's free
KEST_API void KestFreeString(unsigned short* bstr);

// The length of a BSTR in units, read from its prefix; 0 for null. Not for pointers to other text.
//   Cost  constant
KEST_API unsigned int KestStringLen(const unsigned short* bstr);

// The length of a BSTR in bytes, read from its prefix; 0 for null. Not for pointers to other text.
//   Cost  constant
KEST_API unsigned int KestStringByteLen(const unsigned short* bstr);

// UTF-8 after RFC 3629, for sequences of up to three bytes. Each unit is converted on its own, so a
// character beyond U+FFFF becomes two sequences of three bytes instead of one of four.
//
// Both converters take the source's length, write no terminator unless the source holds one, and
// return the number of elements written. A length or size below 1, or a null pointer, converts
// nothing; here -1 is not short for the whole text. Nothing is reported as an error.
//
//   src      the text to convert; null converts nothing
//   dest     where the result goes, in memory of the caller's; null converts nothing
//   Failure  none is reported; nothing is allocated
//   See      KestStringUtf8ByteLen, KestStringToUtf8, KestUtf8ToString, docs/strings.md

// The bytes that s needs as UTF-8 up to its terminator, which is not counted.
//   s       text up to its terminator; null is empty
//   Result  in bytes; 0 when they are too many for 32 bits
KEST_API unsigned int KestStringUtf8ByteLen(const unsigned short* s);

// Writes length units of src to dest as UTF-8. The size is compared before each unit only: A
// SEQUENCE THAT BEGINS BELOW size IS WRITTEN WHOLE, up to 2 bytes past it, and counted. Allow for 2
// bytes of slack, or size dest with KestStringUtf8ByteLen. Returns the bytes written.
//   length  units to convert; nothing below 1
//   size    room in bytes, less 2 for the slack; nothing is written below 1
KEST_API int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size);

// Decodes length bytes of src into at most size units of dest, WITHOUT VALIDATION. A lead of 0x80
// or more takes two bytes after it when its bit 0x20 is set, else one, whatever they are. Overlong
// forms and surrogates decode to their value, leads from 0xF0 on count with their low four bits,
// and a sequence that is cut off at the end is dropped. Check input from elsewhere first. Returns
// the units written.
//   length  bytes to convert; nothing below 1
//   size    room in units; nothing is written below 1
KEST_API int KestUtf8ToString(const char* src, int length, unsigned short* dest, int size);

// One byte a unit, ISO 8859-1: called multibyte here. A length of -1 stands for the whole text and
// its terminator; any other below 1, a size below 1, or a null pointer converts nothing. Both stop
// at the length or the size, whichever comes first, and return the number of elements written.
//
//   src      the text to convert; null converts nothing
//   dest     where the result goes, in memory of the caller's; null converts nothing
//   Failure  none is reported; nothing is allocated
//   See      KestUnicodeToMultibyte, KestMultibyteToUnicode, TConvertBuffer, docs/strings.md

// Writes units as bytes; those above 255 become '?'.
//   length  units to convert, or -1 for all and the terminator
//   size    room in bytes
//   Result  the bytes written, a terminator included where there was one to convert
KEST_API int KestUnicodeToMultibyte(const unsigned short* src, int length, char* dest, int size);

// Writes bytes as the units of the same value, 0 to 255.
//   length  bytes to convert, or -1 for all and the terminator
//   size    room in units
//   Result  the units written, a terminator included where there was one to convert
KEST_API int KestMultibyteToUnicode(const char* src, int length, unsigned short* dest, int size);

// Character tests. Three take a byte, as char (down to -128) or as unsigned char (up to 255), and
// ask the C library's tables of the current locale; any other code is in no class. The two with a u
// take a unit and know ASCII alone, see isuctype.
//
//   ch       the character, by value
//   Failure  none
//   Threads  any, as long as none changes the locale
//   Cost     constant
//   Result   not 0 for yes
//   See      KEST::isuctype, kest_isalnum, kest_isdigit, kest_isspace, kest_isualnum,
//            kest_isudigit

// Whether a byte is a letter or a digit in the current locale.
KEST_API int kest_isalnum(int ch);

// Whether a byte is a decimal digit.
KEST_API int kest_isdigit(int ch);

// Whether a byte is white space in the current locale, TAB and line ends included.
KEST_API int kest_isspace(int ch);

// Whether a unit is an ASCII letter or digit.
KEST_API int kest_isualnum(unsigned short ch);

// Whether a unit is an ASCII digit.
KEST_API int kest_isudigit(unsigned short ch);
}
namespace KEST {

// Wide C strings: arrays of 16-bit units that end at the first zero unit.
//
// True of all of them:
//   Units    Lengths, sizes and counts are 16-bit units. A surrogate half is a unit like any other.
//   Null     Text that is only read may be null, which is empty text, as an empty BSTR is. What is
//            written to must not be null, save where its size is 0.
//   Room     Except for the bounded copies, dest must have room for the result; nothing checks.
//            Source and destination may overlap: the result is that of a copy made first.
//   Letters  Case means ASCII case: U+00E9 and U+00C9 are two different letters everywhere.
//   Results  A result that points into const text is non-const, as in C. Write only to your own.
//   Failure  None: nothing is allocated, and nothing is checked that is not said.
//   Threads  No state: as safe as the text itself.
//   Cost     Linear in the text that is read, with vector instructions where there are some.
//   See      docs/wide-strings.md
//
//   s, a, b       text; null is empty
//   src           text to copy; null is empty
//   dest          where the result goes, with room for it and its terminator; not null
//   ch            the unit, by value; 0 stands for the terminator
//   n             at most so many units count
//   end           receives a place in s; null when that is not wanted
//   base          2 to 36, or 0 for what the prefix says
//   size          the whole room of dest, terminator included, in units

// The number of units before the terminator.
KEST_API unsigned int ucslen(const unsigned short* s);

// Copies src and its terminator. Returns dest.
KEST_API unsigned short* ucscpy(unsigned short* dest, const unsigned short* src);

// Writes exactly n units: those of src, then zeros. No terminator when src has n units or more.
// Returns dest.
KEST_API unsigned short* ucsncpy(unsigned short* dest, const unsigned short* src, unsigned int n);

// Appends src to dest.
//   dest    text with room for both and a terminator; not null
//   Result  unlike strcat, the place of the first appended unit, where the terminator was, so that
//           calls can be chained without walking the text again
KEST_API unsigned short* ucscat(unsigned short* dest, const unsigned short* src);

// Compares by unit value.
//   Result  the difference (a's minus b's) of the first units that differ, 0 when none do
//   See     KEST::ucsncmp, KEST::ucsicmp, KEST::ucsnicmp
KEST_API int ucscmp(const unsigned short* a, const unsigned short* b);

// Compares at most n units by value.
//   Result  the difference (a's minus b's) of the first units that differ, 0 when none do
//   See     KEST::ucscmp, KEST::ucsicmp, KEST::ucsnicmp
KEST_API int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n);

// Compares without regard to the case of ASCII letters.
//   Result  the difference (a's minus b's) of the first units that differ in upper case, 0 when
//           none do
//   See     KEST::ucscmp, KEST::ucsncmp, KEST::ucsnicmp
KEST_API int ucsicmp(const unsigned short* a, const unsigned short* b);

// Compares at most n units without regard to the case of ASCII letters.
//   Result  the difference (a's minus b's) of the first units that differ in upper case, 0 when
//           none do
//   See     KEST::ucscmp, KEST::ucsncmp, KEST::ucsicmp
KEST_API int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n);

// The first ch in s; null when there is none. A ch of 0 finds the terminator.
KEST_API unsigned short* ucschr(const unsigned short* s, unsigned short ch);

// The last ch in s; null when there is none. A ch of 0 finds the terminator.
KEST_API unsigned short* ucsrchr(const unsigned short* s, unsigned short ch);

// The first unit of s that is in set; null when none is.
//   set   the units to look for; null is empty
//   Cost  the length of s times that of set
KEST_API unsigned short* ucspbrk(const unsigned short* s, const unsigned short* set);

// The first place of needle in haystack; null when there is none. An empty needle is found at the
// start, but nothing is found in an empty haystack, not even an empty needle.
//   haystack  the text to search; null is empty
//   needle    the text to find; null is empty
//   Cost      linear in both texts, whatever they hold
KEST_API unsigned short* ucsstr(const unsigned short* haystack, const unsigned short* needle);

// The number that s starts with: spaces (U+0020 alone), at most one sign, digits.
//
// Base 0 takes 16 after "0x", 8 after "0", else 10; base 16 allows a "0x" in front. Without a
// digit, or with an impossible base, the result is 0 and end receives s.
//
// What is too large becomes the largest value, and only then the sign applies; no error is
// reported. So "-99999999999" gives -2147483647 as a signed number (as -2147483648 does) and 1 as
// an unsigned one, and "-1" gives 4294967295 as an unsigned one.
//
//   end     receives the place behind the last digit; null when that is not wanted
//   Result  the number, signed from ucstol and unsigned from ucstoul; 0 when there is none
KEST_API int ucstol(const unsigned short* s, unsigned short** end, int base);
KEST_API unsigned int ucstoul(const unsigned short* s, unsigned short** end, int base);

// Reads a number; ucstol and ucstoul are made of it, and say how text is read.
//   flags   0 for a signed number, 1 for an unsigned one; the other bits are working state (2
//           negative, 4 overflow, 8 digit read) and start at 0
//   Result  the number, a negative one in two's complement; 0 when there is none
//   See     KEST::ucstol, KEST::ucstoul
KEST_API unsigned int ucstoxl(const unsigned short* s, unsigned short** end, int base,
                              unsigned int flags);

// Turns the ASCII letters of s to upper case, in place. Returns s.
//   s  text to change; null is left alone
KEST_API unsigned short* ucsupr(unsigned short* s);

// Turns the ASCII letters of s to lower case, in place. Returns s.
//   s  text to change; null is left alone
KEST_API unsigned short* ucslwr(unsigned short* s);

// Reverses the order of the units of s, in place. Returns s.
//   s  text to change; null is left alone
KEST_API unsigned short* ucsrev(unsigned short* s);

// Bounded copy and append. What does not fit is cut off, and the result is terminated whenever size
// is not 0; with size 0 nothing is written and dest may be null.
//
// The appending forms do not bound the text that dest already holds. With a size equal to its
// length they append nothing; with a smaller size the room wraps around and THE COPY IS UNBOUNDED.
// Never pass a size below the length of the contents.
//
//   dest      room for size elements, of the caller's; may be null when size is 0
//   src       text up to its terminator; null is empty
//   size      the whole room of dest, terminator included, in units of dest
//   Result    the length that the complete text has, in units of dest, so that a result of size or
//             more tells of truncation
//   Failure   none: nothing is allocated
//   Threads   No state: as safe as the text itself.
//   See       KEST::ucslcpy, KEST::ucslcat, KEST::s2ulcpy, KEST::strlcpy, KEST::strlcat,
//             docs/wide-strings.md

// Copies src to dest as far as it fits.
KEST_API unsigned int ucslcpy(unsigned short* dest, const unsigned short* src, unsigned int size);

// Appends src to dest as far as it fits.
KEST_API unsigned int ucslcat(unsigned short* dest, const unsigned short* src, unsigned int size);

// Copies 8-bit text to dest as far as it fits, each byte the unit of the same value.
//   src  bytes up to a zero byte, not overlapping dest; null is empty
KEST_API unsigned int s2ulcpy(unsigned short* dest, const char* src, unsigned int size);

// Copies 8-bit text to dest as far as it fits, counted in bytes.
//   size  the whole room of dest in bytes, terminator included
KEST_API unsigned int strlcpy(char* dest, const char* src, unsigned int size);

// Appends 8-bit text to dest as far as it fits, counted in bytes.
//   size  the whole room of dest in bytes, terminator included
KEST_API unsigned int strlcat(char* dest, const char* src, unsigned int size);

// Single units, after ASCII alone.
//
//   ch       the unit, by value
//   Failure  none
//   Threads  any
//   Cost     constant
//   See      KEST::isuctype, KEST::touupper, KEST::toulower, docs/wide-strings.md

// The classes of ch that are in mask, 0 for none.
//
// 0x01 is upper case, 0x02 lower case, 0x04 decimal digit, 0x08 space (U+0020 alone), 0x10
// punctuation, 0x20 control (TAB and line ends included), 0x80 hexadecimal digit. A letter is
// 0x103, a letter or digit 0x107. Units above 127 have no class.
//   mask  the classes that are asked for, ORed
KEST_API int isuctype(unsigned short ch, unsigned short mask);

// The upper case of ch; whatever is no ASCII letter stays.
KEST_API unsigned short touupper(unsigned short ch);

// The lower case of ch; whatever is no ASCII letter stays.
KEST_API unsigned short toulower(unsigned short ch);

// Formatted output of 16-bit text. The format, its strings and its characters are 16-bit; there is
// no floating point.
//
//     %[flags][width][size]type, or %[flags][width].*[size]type with a precision
//
//     flags  '-' left-justified, '0' filled with zeros, '+' or ' ' in front of numbers that are
//            not negative; '#' is accepted and ignored
//     width  digits, or '*': an int argument, where a negative one means '-' as well
//     .*     precision, an int argument, where a negative one means none: the fewest digits of a
//            number (which also drops '0'), the most units of a string. A PRECISION IN DIGITS, as
//            in "%.2s", IS IGNORED.
//     size   'h' takes the low 16 bits of a number; F I L N l w are accepted and ignored
//     type   d i  signed decimal      u o x X  unsigned decimal, octal, hexadecimal
//            c    one unit            s        const unsigned short*; null prints "(null)"
//            p    the low 32 bits as eight upper-case hexadecimal digits
//            n    int* (short* with 'h'), receives the count of units so far; null receives nothing
//
// Whatever does not continue a conversion is written as it is, so "%%" is one '%' and no format is
// an error. The type letters B C E G S Z e f g are reserved: they take no argument and write the
// text of the call's previous conversion again, byte by byte. Do not use them.
//
// Every number takes one 32-bit argument: a 64-bit integer is not supported, and in the 32-bit
// target shifts the arguments behind it. Widths, precisions and counts stop at INT_MAX instead of
// overflowing. A null format is an empty one. Nothing is allocated. Arguments must not be changed
// by another thread during the call.
//
//   dest      receives the text; null when size is 0
//   size      room in units, terminator included
//   format    the format; null is empty
//   args      the arguments that the format asks for
//   ...       the arguments that the format asks for
//   Failure   None: nothing is allocated, and no format is an error.
//   Threads   No state: as safe as the text itself.
//   Cost      Linear in what is produced, whether it is stored or not.
//   See       docs/formatted-output.md

// Where formatted units go. One is stored only while remaining is above 0.
struct KEST_API xFILE {
  unsigned short* position;  // Where the next unit goes; moves on with each that is stored.
  int remaining;             // Units that there is room for; may fall below 0.
};

// Formats into dest, which has room for size units. What does not fit is cut off and the text is
// terminated; with size 0 nothing is written. The room is a signed number: a size above 0x80000000
// stores the terminator alone. Returns the length of the complete text in units, so a result of
// size or more tells of truncation.
//   See  KEST::TBstr::Format, KEST::unichar_output, docs/formatted-output.md
KEST_API int snuprintf(unsigned short* dest, unsigned int size, const unsigned short* format, ...);
KEST_API int vsnuprintf(unsigned short* dest, unsigned int size, const unsigned short* format,
                        va_list args);

// The formatter: writes to out, without a terminator.
//   out     where to write, moved on behind what is stored; not null
//   args    the arguments, with no defined position afterwards
//   Result  the count of units produced, stored or not
KEST_API int unichar_output(xFILE* out, const unsigned short* format, va_list args);

// What the formatter is made of: each call stores what has room.
//
//   ch       the unit to write
//   out      where to write, moved on behind what is stored; not null
//   count    a count of units, to which all that was asked for is added, stored or not; it stops at
//            INT_MAX; not null
//   Failure  none: nothing is allocated
//   Threads  No state: as safe as the text itself.
//   Cost     Linear in the units written.
//   See      KEST::unichar_output, KEST::write_char, KEST::write_multi_char, KEST::write_string,
//            KEST::get_int_arg

// Writes ch once.
KEST_API void write_char(unsigned short ch, xFILE* out, int* count);

// Writes ch n times.
//   n  how many units; nothing below 1
KEST_API void write_multi_char(unsigned short ch, int n, xFILE* out, int* count);

// Writes the n units at s.
//   s  the units, zero units included; null only for an n below 1
//   n  how many units; nothing below 1
KEST_API void write_string(const unsigned short* s, int n, xFILE* out, int* count);

// Takes the next 32-bit argument.
//   args    the arguments, moved on by one; not null
//   Result  the argument, whose type must have been passed as 32 bits
//   Cost    constant
KEST_API int get_int_arg(va_list* args);

// A temporary wide copy of 8-bit text, for a call that takes 16-bit text. Each byte is one unit of
// the same value.
//
//   Failure    Without memory the buffer is null.
//   Ownership  The source is not kept. The buffer belongs to the object and goes with it.
//   See        KestMultibyteToUnicode, docs/strings.md
class KEST_API TConvertBuffer {
 public:
  // Widens the first length bytes of s, or all of it for -1.
  //   s       8-bit text; null leaves the buffer null
  //   length  bytes to convert, -1 for all up to a zero byte; the buffer stays null when there is
  //           nothing to convert
  //   Cost    one request for memory, and linear in the text
  explicit TConvertBuffer(const char* s, int length = -1);
  TConvertBuffer(const TConvertBuffer&) = delete;
  TConvertBuffer& operator=(const TConvertBuffer&) = delete;

  // Frees the buffer.
  //   Cost  one call of the allocator's free
  ~TConvertBuffer();

  // The text and a terminator, or null. It belongs to this object.
  //   Cost  constant
  const unsigned short* GetBuffer() const { return buffer; }

  // The units converted; 0 when the buffer is null.
  //   Cost  constant
  int GetLength() const { return length; }

 private:
  unsigned short* buffer;
  int length;
};

// A string by value: one BSTR that it owns alone, and an 8-bit copy made on demand.
//
// True of all members:
//   Size       The buffer is exactly as long as the text, and every change of length takes one new
//              block and copies: text that grows in a loop is better assembled elsewhere. With the
//              default hooks it grows in place where it can, and may have room to spare.
//   Failure    A change that gets no memory leaves the string EMPTY, never half done. Only the
//              members with a bool result tell; the others are followed by IsEmpty.
//   Ownership  The text and its 8-bit copy are the string's. Arguments are copied, never kept.
//   Threads    A string belongs to one thread at a time, even for reading: its 8-bit copy is made
//              by a const member.
//   Cost       Linear in the text; a change of the length takes one request for memory as well.
//   Aliasing   Arguments may lie in the string's own text; they are taken as they were before.
//   Indexes    Out of range they are clamped or make the member do nothing, as each one says.
//   Zero       Text may hold zero units. Members work by the counted length, except those that say
//              that they end at the first zero unit.
//   Literal 0  is a unit and a null pointer: write u'\0' or a typed null.
//
// There is no conversion to a pointer: pass GetString(). AdjustBuffer, InternalInit and
// InternalAppend are what all other members are built on.
//
//   s          text up to its terminator; null is empty
//   set        the units to look for, up to the terminator
//   src        at least length units
//   other      the string to take the text from; it may be this one
//   ch         one unit
//   length     in units
//   index      counts units from 0
//   start      the index of the first unit to look at
//   format     the format, see snuprintf; null is empty
//   args       the arguments that the format asks for
//   ...        the arguments that the format asks for
//   Example    bstr-make
//   See        docs/strings.md
class KEST_API TBstr {
 public:
  // An empty string, which has no memory.
  //   Cost  constant
  TBstr();

  // A copy; empty without memory.
  TBstr(const TBstr& other);

  // Takes the text out of other, which is then empty.
  //   other    the string to take the text from
  //   Failure  none
  //   Cost     constant
  TBstr(TBstr&& other) noexcept : string(other.string), multibyte(other.multibyte) {
    other.string = nullptr;
    other.multibyte = nullptr;
  }

  // The unit ch count times. More than 128 units take a temporary block as well.
  //   ch     the unit; the string is empty when it is 0
  //   count  how many units; the string is empty when it is below 1
  TBstr(unsigned short ch, int count);

  // A copy of the text at s up to its terminator; null is empty.
  TBstr(const unsigned short* s);

  // A copy of the first length units at s, zero units included.
  //   s       at least length units; null is empty
  //   length  in units; the string is empty when it is below 1
  TBstr(const unsigned short* s, int length);

  // A copy of 8-bit text, each byte the unit of the same value. Goes through a TConvertBuffer,
  // which takes a temporary block.
  //   s       bytes up to a zero byte; null is empty
  //   length  bytes to convert, -1 for all
  TBstr(const char* s);
  TBstr(const char* s, int length);

  // Frees the text and its 8-bit copy.
  //   Cost  one or two calls of the allocator's free
  ~TBstr();

  // Makes the buffer length units long. Does nothing when the length is right already. Leaves the
  // 8-bit copy.
  //   length  in units; below 1 empties the string
  //   keep    whether units that fit are kept; otherwise, and beyond them, units are unset
  //   Result  true; false, and an empty string, without memory
  bool AdjustBuffer(int length, bool keep);

  // Makes the text length units of src.
  //   src     at least length units; null empties the string
  //   length  in units; 0 empties the string
  //   Result  true; false for a negative length, with the text as it was, and without memory
  bool InternalInit(const unsigned short* src, int length);

  // Appends length units of src.
  //   src     at least length units; null appends nothing
  //   length  in units; 0 appends nothing
  //   Result  true; false for a negative length, with the text as it was, and without memory
  bool InternalAppend(const unsigned short* src, int length);

  // Makes the 8-bit copy anew, which GetMultibyteString gives.
  //   Result   true; false without memory, and for a text whose copy of 2 * length + 1 bytes would
  //            pass INT_MAX
  //   Failure  without memory there is no copy; the text stays
  //   See      KEST::TBstr::GetMultibyteString
  bool CreateMultibyteBuffer() const;

  // Frees the 8-bit copy, if there is one. The text stays.
  //   Failure  none
  //   Cost     one call of the allocator's free
  void DestroyMultibyteBuffer();

  // The number of units in the text, inner zero units included, without the terminator.
  //   Failure  none
  //   Cost     constant
  int GetLength() const;

  // Whether the length is 0.
  //   Failure  none
  //   Cost     constant
  bool IsEmpty() const;

  // Empties the string: frees the text and its 8-bit copy.
  //   Failure  none
  //   Cost     one or two calls of the allocator's free
  void Empty();

  // The text, never null, with a terminator. Valid until the string is changed.
  //   Failure  none
  //   Cost     constant
  const unsigned short* GetString() const;

  // The text in bytes, never null: units above 255 are '?'. Made at the first call and kept until
  // the string is changed, which ends what the result points to.
  //   Failure  without memory the result is the empty text; the string stays
  //   Cost     the first call takes a request for memory and is linear, further ones are constant
  const char* GetMultibyteString() const;

  // An output parameter: empties the string and gives the place where a callee may store a BSTR.
  //   Result     the place, never null
  //   Ownership  a BSTR that is stored there is this object's
  //   Failure    none
  //   Cost       one or two calls of the allocator's free
  unsigned short** GetBstrPtr();

  // The place of the BSTR, with the text as it is. A store through it, or into the text, is not
  // noticed: call DestroyMultibyteBuffer then.
  //   Result   the place, never null; it holds null when the string is empty
  //   Failure  none
  //   Cost     constant
  unsigned short** GetRawBstrPtr();

  // Takes ownership of bstr. The previous text is NOT freed: empty or detach first.
  //   bstr       a BSTR, or null for the empty text
  //   Ownership  bstr is this object's from now on
  //   Failure    none
  //   Cost       constant
  void Attach(unsigned short* bstr);

  // Gives the text to the caller, who frees it with KestFreeString. The string is then empty.
  //   Result     the BSTR, or null when the string is empty
  //   Ownership  the caller frees it with KestFreeString
  //   Failure    none
  //   Cost       constant
  unsigned short* Detach();

  // A copy of the text as a BSTR, which the caller frees with KestFreeString.
  //   Result     the BSTR; null when the string is empty or without memory
  //   Ownership  the caller frees it with KestFreeString
  //   Failure    null without memory; the string stays
  unsigned short* Copy() const;

  // Replaces the text. Null and empty text empties the string. THE UNIT 0 IS IGNORED: Assign(u'\0')
  // keeps the old text. 8-bit text goes through a TConvertBuffer; when that gets no memory it
  // counts as null.
  //   Result  this object
  TBstr& Assign(const TBstr& other);
  TBstr& Assign(unsigned short ch);
  TBstr& Assign(const unsigned short* s);
  TBstr& Assign(const char* s);

  // Extends the text. Null and empty text, and the unit 0, append nothing. 8-bit text goes through
  // a TConvertBuffer; when that gets no memory it counts as null.
  //   Result  this object
  TBstr& Append(const TBstr& other);
  TBstr& Append(unsigned short ch);
  TBstr& Append(const unsigned short* s);
  TBstr& Append(const char* s);

  // The unit at index; 0 outside the text.
  //   Failure  none
  //   Cost     constant
  unsigned short GetAt(int index) const;

  // Stores ch at index. Ignores an index outside the text and the unit 0.
  //   Failure  none
  //   Cost     constant, and the 8-bit copy is freed
  void SetAt(int index, unsigned short ch);

  // Compares by unit value, up to the first zero unit.
  //   Result   the difference of the first units that differ, 0 when none do; when s is null or
  //            this string is empty, the difference of the lengths
  //   Failure  none
  //   See      KEST::TBstr::CompareNoCase, KEST::TBstr::CompareNormal
  int Compare(const unsigned short* s) const;

  // Compares without regard to the case of ASCII letters, up to the first zero unit.
  //   Result   the difference of the first units that differ in upper case, 0 when none do; when s
  //            is null or this string is empty, the difference of the lengths
  //   Failure  none
  int CompareNoCase(const unsigned short* s) const;

  // Compares the forms that Normalize gives: "a b" equals "AB".
  //   Result   as for Compare; when s is null or this string is empty, the difference of the
  //            lengths without trailing spaces: other spaces count there
  //   Failure  text that gets no memory for its normal form counts as empty; the string stays
  //   Cost     linear, with up to two copies, a request for memory each
  int CompareNormal(const unsigned short* s) const;

  // The decimal number that the text starts with, as ucstol reads it; 0 when there is none.
  //   Failure  none
  //   Cost     linear in the spaces and digits
  int ToLong() const;

  // The index of the first ch, or s, at or after start. The search ends at the first zero unit;
  // that one, or the terminator, is what a search for 0 finds.
  //   s        text to find, found at start when it is empty; null is found nowhere
  //   Result   the index; -1 when there is none, start is outside the text, or s is null
  //   Failure  none
  int Find(unsigned short ch, int start = 0) const;
  int Find(const unsigned short* s, int start = 0) const;

  // The index of the last ch. The search ends at the first zero unit.
  //   Result   the index; -1 when there is none
  //   Failure  none
  int ReverseFind(unsigned short ch) const;

  // The index of the first unit that is in set. The search ends at the first zero unit.
  //   set      the units to look for, up to the terminator; in null there are none
  //   Result   the index; -1 when there is none
  //   Failure  none
  //   Cost     the length of the text times that of set
  int FindOneOf(const unsigned short* set) const;

  // A part: count units from first, or all from there. What lies outside the text is cut off.
  //   first    the index of the first unit; a negative one means 0
  //   count    in units; below 1 gives empty text
  //   Failure  the part is empty without memory; the string stays
  TBstr Mid(int first, int count) const;
  TBstr Mid(int first) const;

  // The first n units, or all when there are fewer.
  //   n        how many units; below 1 gives empty text
  //   Failure  the part is empty without memory; the string stays
  TBstr Left(int n) const;

  // The last n units, or all when there are fewer.
  //   n        how many units; below 1 gives empty text
  //   Failure  the part is empty without memory; the string stays
  TBstr Right(int n) const;

  // Turns ASCII letters to upper case, up to the first zero unit.
  //   Failure  none
  void MakeUpper();

  // Turns ASCII letters to lower case, up to the first zero unit.
  //   Failure  none
  void MakeLower();

  // Reverses the order of the units, up to the first zero unit.
  //   Failure  none
  void MakeReverse();

  // Swaps the bytes of every unit: UTF-16BE on a little-endian host, and back.
  //   Failure  none
  void MakeBigEndian();

  // Removes the run of ch at the start.
  //   ch  the unit to remove; nothing happens for 0
  void TrimLeft(unsigned short ch = 0x20);

  // Removes the run of ch at the end.
  //   ch  the unit to remove; nothing happens for 0
  void TrimRight(unsigned short ch = 0x20);

  // Removes all spaces and lowers ASCII letters.
  void Normalize();

  // Replaces every unit from by to. Returns how many there were.
  //   from     the unit to look for
  //   to       the unit to put in, which may be 0
  //   Failure  none
  int Replace(unsigned short from, unsigned short to);

  // Replaces every occurrence of from by to, left to right and without overlap. What was put in is
  // not searched. Ends at the first zero unit and keeps what follows it. Returns how many
  // occurrences; 0 when memory fails.
  //   from  text to look for; null and empty text is found nowhere
  //   to    text to put in; null is empty
  int Replace(const unsigned short* from, const unsigned short* to);

  // Removes every ch. Returns how many there were.
  int Remove(unsigned short ch);

  // Inserts before the unit at index. Returns the length afterwards.
  //   index  counts units, and is clamped to the length; a negative one inserts nothing
  //   ch     one unit; 0 inserts nothing
  //   s      text; null and empty text inserts nothing
  int Insert(int index, unsigned short ch);
  int Insert(int index, const unsigned short* s);

  // Removes count units from index on, at most to the end. Returns the length afterwards.
  //   index  counts units; outside the text nothing is removed
  //   count  how many units; below 1 removes nothing
  int Delete(int index, int count = 1);

  // The number of bytes that this text has in an encoding.
  //
  // A byte a unit in "us-ascii" and "iso-8859-1", even where a unit does not fit; UTF-8 up to the
  // first zero unit; two bytes a unit in "unicode-2-0".
  //   encoding  its name, one of kest/text.h in any case of letters; null counts a byte a unit
  //   Result    in bytes; 0 for any other name, and for more bytes than an int counts
  //   Failure   none
  //   See       KEST::TBstr::GetBestEncoding, docs/encodings.md
  int GetEncodedByteLength(const unsigned short* encoding) const;

  // The name of the narrowest encoding that holds every unit.
  //   Result   "us-ascii" (also of empty text), "iso-8859-1", or "utf-8"
  //   Failure  without memory the name is empty; the string stays
  //   See      KEST::TBstr::GetEncodedByteLength
  TBstr GetBestEncoding() const;

  // Makes the text what snuprintf would write with room enough; its rules hold. Format and
  // arguments may lie in this object's own text. Without memory, and at INT_MAX units, the text is
  // empty. "%n" may store its count twice, the same value each time.
  //   Cost  linear in what is produced, which may be done twice; one request for memory
  //   See   KEST::snuprintf, docs/formatted-output.md
  void Format(const unsigned short* format, ...);
  void FormatV(const unsigned short* format, va_list args);

  // Replaces the text, as Assign does. A move leaves its source empty, and needs no memory.
  //   Result  this object
  TBstr& operator=(const TBstr& other) { return Assign(other); }
  TBstr& operator=(TBstr&& other) noexcept {
    if (this != &other) {
      Empty();
      Attach(other.Detach());
    }
    return *this;
  }
  TBstr& operator=(const unsigned short* s) { return Assign(s); }
  TBstr& operator=(const char* s) { return Assign(s); }
  TBstr& operator=(unsigned short ch) { return Assign(ch); }

  // Extends the text, as Append does.
  //   Result  this object
  TBstr& operator+=(const TBstr& other) { return Append(other); }
  TBstr& operator+=(const unsigned short* s) { return Append(s); }
  TBstr& operator+=(const char* s) { return Append(s); }
  TBstr& operator+=(unsigned short ch) { return Append(ch); }

 private:
  unsigned short* string;
  mutable char* multibyte;
};

// Operators on whole strings.
//
//   a, b       strings, or text up to its terminator; null is empty
//   Threads    As a TBstr: both are used by one thread at a time.
//   Example    bstr-operators
//   See        KEST::TBstr::Compare, KEST::TBstr

// Whether two texts are equal up to the first zero unit, by TBstr::Compare; null equals empty.
//   Failure  none
inline bool operator==(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) == 0; }
inline bool operator==(const TBstr& a, const unsigned short* b) { return a.Compare(b) == 0; }
inline bool operator==(const unsigned short* a, const TBstr& b) { return b.Compare(a) == 0; }

// Whether two texts differ up to the first zero unit, by TBstr::Compare; null equals empty.
//   Failure  none
inline bool operator!=(const TBstr& a, const TBstr& b) { return !(a == b); }
inline bool operator!=(const TBstr& a, const unsigned short* b) { return !(a == b); }
inline bool operator!=(const unsigned short* a, const TBstr& b) { return !(a == b); }

// Whether a comes before b by unit value, up to the first zero unit, by TBstr::Compare.
//   Failure  none
inline bool operator<(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) < 0; }
inline bool operator<(const TBstr& a, const unsigned short* b) { return a.Compare(b) < 0; }
inline bool operator<(const unsigned short* a, const TBstr& b) { return b.Compare(a) > 0; }

// The text of a followed by that of b.
//   ch       one unit; 0 adds nothing
//   Failure  when memory fails the sum is empty or lacks a part
//   Cost     a copy and an append: two requests for memory
inline TBstr operator+(const TBstr& a, const TBstr& b) {
  TBstr sum(a);
  sum.Append(b);
  return sum;
}
inline TBstr operator+(const TBstr& a, const unsigned short* b) {
  TBstr sum(a);
  sum.Append(b);
  return sum;
}
inline TBstr operator+(const unsigned short* a, const TBstr& b) {
  TBstr sum(a);
  sum.Append(b);
  return sum;
}
inline TBstr operator+(const TBstr& a, unsigned short ch) {
  TBstr sum(a);
  sum.Append(ch);
  return sum;
}
}  // namespace KEST

#endif  // KEST_STRING_H
