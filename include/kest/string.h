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
//   Threads    The functions share nothing but the allocator. A TBstr belongs to one thread at a
//              time, even for reading: its 8-bit copy is made by a const member.
//   Example    examples/strings/strings.cpp
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

// A copy of s up to its terminator. Null when s is null or empty, or there is no memory.
KEST_API unsigned short* KestAllocString(const unsigned short* s);

// A copy of the first length units of s, zero units included. With a null s the units are left
// for the caller to fill. Null when length is 0 or above 0x7FFFFFFC, or there is no memory.
KEST_API unsigned short* KestAllocStringLen(const unsigned short* s, unsigned int length);

// Frees a BSTR; null is ignored.
KEST_API void KestFreeString(unsigned short* bstr);

// The length of a BSTR in units and in bytes, read from its prefix; 0 for null. Not for pointers
// to other text.
KEST_API unsigned int KestStringLen(const unsigned short* bstr);
KEST_API unsigned int KestStringByteLen(const unsigned short* bstr);

// UTF-8 after RFC 3629, for sequences of up to three bytes. Each unit is converted on its own, so a
// character beyond U+FFFF becomes two sequences of three bytes instead of one of four.
//
// Both converters take the source's length, write no terminator unless the source holds one, and
// return the number of elements written. A length or size below 1, or a null pointer, converts
// nothing; here -1 is not short for the whole text. Nothing is reported as an error.

// The bytes that s needs up to its terminator, which is not counted. 0 when they are too many for
// 32 bits.
KEST_API unsigned int KestStringUtf8ByteLen(const unsigned short* s);

// Writes length units of src to dest. The size is compared before each unit only: A SEQUENCE THAT
// BEGINS BELOW size IS WRITTEN WHOLE, up to 2 bytes past it, and counted. Allow for 2 bytes of
// slack, or size dest with KestStringUtf8ByteLen. Returns the bytes written.
KEST_API int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size);

// Decodes length bytes of src into at most size units of dest, WITHOUT VALIDATION: a lead of 0x80
// or more takes two bytes after it when its bit 0x20 is set, else one, whatever they are. Overlong
// forms and surrogates decode to their value, leads from 0xF0 on count with their low four bits,
// and a sequence that is cut off at the end is dropped. Check input from elsewhere first. Returns
// the units written.
KEST_API int KestUtf8ToString(const char* src, int length, unsigned short* dest, int size);

// One byte a unit, ISO 8859-1: called multibyte here. A length of -1 stands for the whole text and
// its terminator; any other below 1, a size below 1, or a null pointer converts nothing. Both stop
// at the length or the size, whichever comes first, and return the number of elements written.

// Units above 255 become '?'.
KEST_API int KestUnicodeToMultibyte(const unsigned short* src, int length, char* dest, int size);

// Bytes become the units of the same value, 0 to 255.
KEST_API int KestMultibyteToUnicode(const char* src, int length, unsigned short* dest, int size);

// Character tests. The first three take a byte, as char (down to -128) or as unsigned char (up to
// 255), and ask the C library's tables of the current locale; any other code is in no class. The
// last two take a unit and know ASCII alone, see isuctype below. Nonzero means yes.
KEST_API int kest_isalnum(int ch);
KEST_API int kest_isdigit(int ch);
KEST_API int kest_isspace(int ch);
KEST_API int kest_isualnum(unsigned short ch);
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
//   Memory   Nothing is allocated and nothing fails.
//   Threads  No state: as safe as the text itself.

// Units before the terminator.
KEST_API unsigned int ucslen(const unsigned short* s);

// Copies src and its terminator. Returns dest.
KEST_API unsigned short* ucscpy(unsigned short* dest, const unsigned short* src);

// Writes exactly n units: those of src, then zeros. No terminator when src has n units or more.
// Returns dest.
KEST_API unsigned short* ucsncpy(unsigned short* dest, const unsigned short* src, unsigned int n);

// Appends src to dest. Unlike strcat, returns the place of the first appended unit, where the
// terminator was, so that calls can be chained without walking the text again.
KEST_API unsigned short* ucscat(unsigned short* dest, const unsigned short* src);

// Comparison by unit value: the difference (a's minus b's) of the first units that differ, 0 when
// none do. The n forms look at no more than n units, the i forms at upper-case ASCII.
KEST_API int ucscmp(const unsigned short* a, const unsigned short* b);
KEST_API int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n);
KEST_API int ucsicmp(const unsigned short* a, const unsigned short* b);
KEST_API int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n);

// The first, or the last, ch in s; null when there is none. A ch of 0 finds the terminator.
KEST_API unsigned short* ucschr(const unsigned short* s, unsigned short ch);
KEST_API unsigned short* ucsrchr(const unsigned short* s, unsigned short ch);

// The first unit of s that is in set; null when none is.
KEST_API unsigned short* ucspbrk(const unsigned short* s, const unsigned short* set);

// The first place of needle in haystack; null when there is none. An empty needle is found at the
// start, but nothing is found in an empty haystack, not even an empty needle. The time is linear in
// both texts, whatever they hold.
KEST_API unsigned short* ucsstr(const unsigned short* haystack, const unsigned short* needle);

// The number that s starts with: spaces (U+0020 alone), at most one sign, digits of base 2 to 36.
// Base 0 takes 16 after "0x", 8 after "0", else 10; base 16 allows a "0x" in front.
//
// end, unless null, receives the place behind the last digit. Without a digit, or with an
// impossible base, the result is 0 and end receives s.
//
// What is too large becomes the largest value, and only then the sign applies; no error is
// reported. So "-99999999999" gives -2147483647 as a signed number (as -2147483648 does) and 1 as
// an unsigned one, and "-1" gives 4294967295 as an unsigned one.
KEST_API int ucstol(const unsigned short* s, unsigned short** end, int base);
KEST_API unsigned int ucstoul(const unsigned short* s, unsigned short** end, int base);

// What both are made of: flags is 0 for a signed number, 1 for an unsigned one. The other bits are
// working state (2 negative, 4 overflow, 8 digit read) and start at 0.
KEST_API unsigned int ucstoxl(const unsigned short* s, unsigned short** end, int base,
                              unsigned int flags);

// In place: ASCII letters to upper or lower case, all units in reverse order. They return s, and
// null for null.
KEST_API unsigned short* ucsupr(unsigned short* s);
KEST_API unsigned short* ucslwr(unsigned short* s);
KEST_API unsigned short* ucsrev(unsigned short* s);

// Bounded copy and append. size is the whole room of dest, terminator included, in units of dest.
// What does not fit is cut off, and the result is terminated whenever size is not 0; with size 0
// nothing is written and dest may be null. The result is the length that the complete text has, so
// a result of size or more tells of truncation.
//
// The appending forms do not bound the text that dest already holds. With a size equal to its
// length they append nothing; with a smaller size the room wraps around and THE COPY IS UNBOUNDED.
// Never pass a size below the length of the contents.
//
// s2ulcpy widens bytes as ISO 8859-1; its two places must not overlap. strlcpy and strlcat count in
// bytes.
KEST_API unsigned int ucslcpy(unsigned short* dest, const unsigned short* src, unsigned int size);
KEST_API unsigned int ucslcat(unsigned short* dest, const unsigned short* src, unsigned int size);
KEST_API unsigned int s2ulcpy(unsigned short* dest, const char* src, unsigned int size);
KEST_API unsigned int strlcpy(char* dest, const char* src, unsigned int size);
KEST_API unsigned int strlcat(char* dest, const char* src, unsigned int size);

// The classes of ch that are in mask: 0x01 upper case, 0x02 lower case, 0x04 decimal digit, 0x08
// space (U+0020 alone), 0x10 punctuation, 0x20 control (TAB and line ends included), 0x80
// hexadecimal digit. A letter is 0x103, a letter or digit 0x107. Units above 127 have no class.
KEST_API int isuctype(unsigned short ch, unsigned short mask);

// ch in upper or lower case; whatever is no ASCII letter stays.
KEST_API unsigned short touupper(unsigned short ch);
KEST_API unsigned short toulower(unsigned short ch);

// Formatted output of 16-bit text. The format, its strings and its characters are 16-bit; there is
// no floating point.
//
//   %[flags][width][size]type, or %[flags][width].*[size]type with a precision
//
//   flags  '-' left-justified, '0' filled with zeros, '+' or ' ' in front of numbers not negative;
//          '#' is accepted and ignored
//   width  digits, or '*': an int argument, where a negative one means '-' as well
//   .*     precision, an int argument, where a negative one means none: the fewest digits of a
//          number (which also drops '0'), the most units of a string. A PRECISION IN DIGITS, as in
//          "%.2s", IS IGNORED.
//   size   'h' takes the low 16 bits of a number; F I L N l w are accepted and ignored
//   type   d i  signed decimal      u o x X  unsigned decimal, octal, hexadecimal
//          c    one unit            s        const unsigned short*; null prints "(null)"
//          p    the low 32 bits as eight upper-case hexadecimal digits
//          n    int* (short* with 'h'), receives the count of units so far; null receives nothing
//
// Whatever does not continue a conversion is written as it is, so "%%" is one '%' and no format is
// an error. The type letters B C E G S Z e f g are reserved: they take no argument and write the
// text of the call's previous conversion again, byte by byte. Do not use them.
//
// Every number takes one 32-bit argument: a 64-bit integer is not supported, and in the 32-bit
// target shifts the arguments behind it. Widths, precisions and counts stop at INT_MAX instead of
// overflowing. A null format is an empty one. Nothing is allocated. Arguments must not be changed
// by another thread during the call.

// Where formatted units go. position is the place of the next one; one is stored only while
// remaining is above 0.
struct KEST_API xFILE {
  unsigned short* position;
  int remaining;
};

// Writes to dest, which has room for size units. What does not fit is cut off and the text is
// terminated; with size 0 nothing is written and dest may be null. Returns the length of the
// complete text, so a result of size or more tells of truncation. The room is a signed number: a
// size above 0x80000000 stores the terminator alone.
KEST_API int snuprintf(unsigned short* dest, unsigned int size, const unsigned short* format, ...);
KEST_API int vsnuprintf(unsigned short* dest, unsigned int size, const unsigned short* format,
                        va_list args);

// The formatter. Writes to out, without a terminator, and returns the count of units produced,
// stored or not. args has no defined position afterwards.
KEST_API int unichar_output(xFILE* out, const unsigned short* format, va_list args);

// What the formatter is made of: ch once, ch n times (nothing for n below 1), the n units at s.
// They store what has room and add all of it to *count, which stops at INT_MAX.
KEST_API void write_char(unsigned short ch, xFILE* out, int* count);
KEST_API void write_multi_char(unsigned short ch, int n, xFILE* out, int* count);
KEST_API void write_string(const unsigned short* s, int n, xFILE* out, int* count);

// Takes the next 32-bit argument.
KEST_API int get_int_arg(va_list* args);

// A temporary wide copy of 8-bit text, for a call that takes 16-bit text. Each byte is one unit of
// the same value.
class KEST_API TConvertBuffer {
 public:
  // Widens the first length bytes of s, or all of it for -1. The buffer stays null when s is null,
  // there is nothing to convert, or there is no memory.
  explicit TConvertBuffer(const char* s, int length = -1);
  TConvertBuffer(const TConvertBuffer&) = delete;
  TConvertBuffer& operator=(const TConvertBuffer&) = delete;
  ~TConvertBuffer();

  // The text and a terminator, or null. It belongs to this object.
  const unsigned short* GetBuffer() const { return buffer; }

  // The units converted; 0 when the buffer is null.
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
//   Aliasing   Arguments may lie in the string's own text; they are taken as they were before.
//   Indexes    Out of range they are clamped or make the member do nothing, as each one says.
//   Zero       Text may hold zero units. Members work by the counted length, except those that say
//              that they end at the first zero unit.
//   Literal 0  is a unit and a null pointer: write u'\0' or a typed null.
//
// There is no conversion to a pointer: pass GetString().
class KEST_API TBstr {
 public:
  TBstr();
  TBstr(const TBstr& other);
  TBstr(TBstr&& other) noexcept : string(other.string), multibyte(other.multibyte) {
    other.string = nullptr;
    other.multibyte = nullptr;
  }

  // count times ch; empty when ch is 0 or count below 1. More than 128 units take a temporary
  // block as well.
  TBstr(unsigned short ch, int count);

  // Up to the terminator; null is empty.
  TBstr(const unsigned short* s);

  // The first length units, zero units included; empty for a null s or a length below 1.
  TBstr(const unsigned short* s, int length);

  // 8-bit text, each byte the unit of the same value: all of it, or the first length bytes (-1 is
  // all). Goes through a TConvertBuffer, which takes a temporary block.
  TBstr(const char* s);
  TBstr(const char* s, int length);

  ~TBstr();

  // The storage, on which all other members are built.

  // Makes the buffer length units long; below 1 empties. With keep, units that fit are kept;
  // otherwise, and beyond them, units are unset. Does nothing when the length is right already.
  // Leaves the 8-bit copy. False, and an empty string, without memory.
  bool AdjustBuffer(int length, bool keep);

  // The text becomes length units of src. A null src or a length of 0 empties. False for a
  // negative length, with the text as it was, and without memory.
  bool InternalInit(const unsigned short* src, int length);

  // Appends length units of src. A null src or a length of 0 appends nothing and is true. False
  // for a negative length, with the text as it was, and without memory.
  bool InternalAppend(const unsigned short* src, int length);

  // Makes the 8-bit copy anew. False without memory, and for a text whose copy of 2 * length + 1
  // bytes would pass INT_MAX.
  bool CreateMultibyteBuffer() const;

  // Frees the 8-bit copy, if there is one. The text stays.
  void DestroyMultibyteBuffer();

  // Units in the text, inner zero units included, without the terminator.
  int GetLength() const;

  // Whether the length is 0.
  bool IsEmpty() const;

  // Frees the text and its 8-bit copy.
  void Empty();

  // The text, never null, with a terminator. Valid until the string is changed.
  const unsigned short* GetString() const;

  // The text in bytes, never null: units above 255 are '?'. Made at the first call and kept until
  // the string is changed. Empty without memory.
  const char* GetMultibyteString() const;

  // An output parameter: empties the string and gives the place where a callee may store a BSTR,
  // which this object then owns.
  unsigned short** GetBstrPtr();

  // The same place with the text as it is. A store through it, or into the text, is not noticed:
  // call DestroyMultibyteBuffer then.
  unsigned short** GetRawBstrPtr();

  // Takes ownership of bstr. The previous text is NOT freed: empty or detach first.
  void Attach(unsigned short* bstr);

  // Gives the text to the caller, who frees it with KestFreeString; null when empty.
  unsigned short* Detach();

  // A copy that the caller frees with KestFreeString; null when empty or without memory.
  unsigned short* Copy() const;

  // Replace or extend the text and return this object. Null and empty text empties or appends
  // nothing. THE UNIT 0 IS IGNORED: Assign(u'\0') keeps the old text. 8-bit text goes through a
  // TConvertBuffer; when that gets no memory it counts as null.
  TBstr& Assign(const TBstr& other);
  TBstr& Assign(unsigned short ch);
  TBstr& Assign(const unsigned short* s);
  TBstr& Assign(const char* s);
  TBstr& Append(const TBstr& other);
  TBstr& Append(unsigned short ch);
  TBstr& Append(const unsigned short* s);
  TBstr& Append(const char* s);

  // 0 outside the text.
  unsigned short GetAt(int index) const;

  // Ignores an index outside the text and the unit 0.
  void SetAt(int index, unsigned short ch);

  // The difference of the first units that differ, as they are or in upper case, up to the first
  // zero unit. When s is null or this string is empty: the difference of the lengths.
  int Compare(const unsigned short* s) const;
  int CompareNoCase(const unsigned short* s) const;

  // As Compare, of the forms that Normalize gives: "a b" equals "AB". When s is null or this string
  // is empty, the difference of the lengths without trailing spaces; other spaces count there.
  int CompareNormal(const unsigned short* s) const;

  // The decimal number that the text starts with, as ucstol reads it; 0 when there is none.
  int ToLong() const;

  // The index of the first ch, or s, at or after start; -1 when there is none, start is outside the
  // text, or s is null. An empty s is found at start. The search ends at the first zero unit; that
  // one, or the terminator, is what a search for 0 finds.
  int Find(unsigned short ch, int start = 0) const;
  int Find(const unsigned short* s, int start = 0) const;

  // The last ch, and the first unit that is in set; otherwise as Find.
  int ReverseFind(unsigned short ch) const;
  int FindOneOf(const unsigned short* set) const;

  // Parts: count units from first (or all from there), the first n, the last n. What lies outside
  // the text is cut off, so a negative first means 0, and a count or n below 1 gives empty text.
  TBstr Mid(int first, int count) const;
  TBstr Mid(int first) const;
  TBstr Left(int n) const;
  TBstr Right(int n) const;

  // Up to the first zero unit.
  void MakeUpper();
  void MakeLower();
  void MakeReverse();

  // Swaps the bytes of every unit: UTF-16BE on a little-endian host, and back.
  void MakeBigEndian();

  // Remove the run of ch at the start or the end; nothing for the unit 0.
  void TrimLeft(unsigned short ch = 0x20);
  void TrimRight(unsigned short ch = 0x20);

  // Removes all spaces and lowers ASCII letters.
  void Normalize();

  // Every unit from becomes to, which may be 0. Returns how many did.
  int Replace(unsigned short from, unsigned short to);

  // Every occurrence of from, left to right and without overlap, becomes to. What was put in is not
  // searched. Ends at the first zero unit and keeps what follows it. Returns how many occurrences;
  // 0 when memory fails.
  int Replace(const unsigned short* from, const unsigned short* to);

  // Removes every ch. Returns how many there were.
  int Remove(unsigned short ch);

  // Inserts before the unit at index, which is clamped to the length. A negative index, the unit 0,
  // null and empty text insert nothing. Returns the length afterwards.
  int Insert(int index, unsigned short ch);
  int Insert(int index, const unsigned short* s);

  // Removes count units from index on, at most to the end. An index outside the text or a count
  // below 1 removes nothing. Returns the length afterwards.
  int Delete(int index, int count = 1);

  // The bytes of this text in the encoding of that name, one of kest/text.h in any case of letters:
  // a byte a unit for "us-ascii", "iso-8859-1" and null, even where a unit does not fit; UTF-8 up
  // to the first zero unit; two bytes a unit for "unicode-2-0". 0 for any other name, and for more
  // bytes than an int counts.
  int GetEncodedByteLength(const unsigned short* encoding) const;

  // The name of the narrowest encoding that holds every unit: "us-ascii" (also of empty text),
  // "iso-8859-1", or "utf-8".
  TBstr GetBestEncoding() const;

  // The text becomes what snuprintf would write with room enough; its rules hold. Format and
  // arguments may lie in this object's own text. Without memory, and at INT_MAX units, the text is
  // empty. "%n" may store its count twice, the same value each time.
  void Format(const unsigned short* format, ...);
  void FormatV(const unsigned short* format, va_list args);

  // Assign and Append. A move leaves its source empty.
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
  TBstr& operator+=(const TBstr& other) { return Append(other); }
  TBstr& operator+=(const unsigned short* s) { return Append(s); }
  TBstr& operator+=(const char* s) { return Append(s); }
  TBstr& operator+=(unsigned short ch) { return Append(ch); }

 private:
  unsigned short* string;
  mutable char* multibyte;
};

// As Compare: up to the first zero unit, null equal to empty.
inline bool operator==(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) == 0; }
inline bool operator==(const TBstr& a, const unsigned short* b) { return a.Compare(b) == 0; }
inline bool operator==(const unsigned short* a, const TBstr& b) { return b.Compare(a) == 0; }
inline bool operator!=(const TBstr& a, const TBstr& b) { return !(a == b); }
inline bool operator!=(const TBstr& a, const unsigned short* b) { return !(a == b); }
inline bool operator!=(const unsigned short* a, const TBstr& b) { return !(a == b); }
inline bool operator<(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) < 0; }
inline bool operator<(const TBstr& a, const unsigned short* b) { return a.Compare(b) < 0; }
inline bool operator<(const unsigned short* a, const TBstr& b) { return b.Compare(a) > 0; }

// Each makes a copy and appends: two blocks. When memory fails the sum is empty or lacks a part.
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
