// The calls of kest/string.h.

#include "kest/string.h"

#include <string.h>

#include "check.h"
#include "kest/frame.h"

using KEST::TBstr;
using KEST::TConvertBuffer;

static void Bstrs() {
  //! [bstr]
  unsigned short* bstr = KestAllocString(KEST_TEXT("Hello"));
  Check(bstr != nullptr);                // null without memory
  Check(KestStringLen(bstr) == 5);       // units
  Check(KestStringByteLen(bstr) == 10);  // bytes
  KestFreeString(bstr);

  bstr = KestAllocStringLen(KEST_TEXT("a\0b"), 3);  // zero units count as any other
  Check(KestStringLen(bstr) == 3 && bstr[2] == u'b' && bstr[3] == 0);
  KestFreeString(bstr);
  //! [bstr]
}

static void Conversions() {
  //! [utf8]
  const unsigned short* text = KEST_TEXT("10 \u20AC");    // three units of one byte, one of three
  const unsigned int size = KestStringUtf8ByteLen(text);  // without a terminator
  Check(size == 6);
  char bytes[6 + 2];  // the converter may write 2 bytes past its size
  Check(KestStringToUtf8(text, 4, bytes, 6) == 6);
  unsigned short back[4];
  Check(KestUtf8ToString(bytes, 6, back, 4) == 4);
  Check(back[3] == 0x20AC);
  //! [utf8]

  //! [multibyte]
  char latin[8];
  Check(KestUnicodeToMultibyte(KEST_TEXT("d\u00E9j\u20AC"), -1, latin, 8) == 5);  // with its zero
  Check(strcmp(latin, "d\xE9j?") == 0);  // what has no byte becomes '?'
  unsigned short wide[8];
  Check(KestMultibyteToUnicode(latin, -1, wide, 8) == 5);
  Check(wide[1] == 0x00E9 && wide[4] == 0);
  //! [multibyte]

  //! [convert-buffer]
  {
    const TConvertBuffer name("report.txt");  // for a call that takes 16-bit text
    Check(name.GetBuffer() != nullptr);       // null without memory
    Check(name.GetLength() == 10);
  }  // the buffer is freed here
  //! [convert-buffer]
}

static void Characters() {
  //! [character-tests]
  Check(kest_isalnum('q') != 0 && kest_isalnum('-') == 0);
  Check(kest_isdigit('7') != 0 && kest_isdigit('x') == 0);
  Check(kest_isspace('\t') != 0);                                 // as the C library has it
  Check(kest_isualnum(u'q') != 0 && kest_isualnum(0x00E9) == 0);  // ASCII alone
  Check(kest_isudigit(u'7') != 0);
  //! [character-tests]

  //! [unit-classes]
  Check(KEST::isuctype(u'F', 0x01) != 0);   // upper case
  Check(KEST::isuctype(u'F', 0x80) != 0);   // a hexadecimal digit
  Check(KEST::isuctype(u' ', 0x107) == 0);  // neither a letter nor a digit
  Check(KEST::touupper(u'a') == u'A');
  Check(KEST::toulower(0x00C9) == 0x00C9);  // ASCII case alone
  //! [unit-classes]
}

static void WideStrings() {
  //! [wide-copy]
  unsigned short path[32];
  Check(KEST::ucscpy(path, KEST_TEXT("/tmp")) == path);
  unsigned short* name = KEST::ucscat(path, KEST_TEXT("/"));  // where it was appended
  KEST::ucscat(name, KEST_TEXT("a.txt"));
  Check(KEST::ucslen(path) == 10);

  unsigned short field[8];
  KEST::ucsncpy(field, KEST_TEXT("abc"), 8);  // filled with zeros, not always terminated
  Check(field[3] == 0 && field[7] == 0);
  //! [wide-copy]

  //! [wide-compare]
  Check(KEST::ucscmp(KEST_TEXT("abc"), KEST_TEXT("abd")) < 0);
  Check(KEST::ucsncmp(KEST_TEXT("abc"), KEST_TEXT("abd"), 2) == 0);
  Check(KEST::ucsicmp(KEST_TEXT("ABC"), KEST_TEXT("abc")) == 0);
  Check(KEST::ucsnicmp(KEST_TEXT("ABC"), KEST_TEXT("abd"), 2) == 0);
  Check(KEST::ucscmp(nullptr, KEST_TEXT("")) == 0);  // null is empty text
  //! [wide-compare]

  //! [wide-search]
  const unsigned short* text = KEST_TEXT("key=a=b");
  Check(KEST::ucschr(text, u'=') == text + 3);
  Check(KEST::ucsrchr(text, u'=') == text + 5);
  Check(KEST::ucspbrk(text, KEST_TEXT(":=")) == text + 3);
  Check(KEST::ucsstr(text, KEST_TEXT("a=")) == text + 4);
  Check(KEST::ucsstr(text, KEST_TEXT("c")) == nullptr);
  //! [wide-search]

  //! [wide-numbers]
  unsigned short* end;
  const unsigned short* number = KEST_TEXT("-12px");
  Check(KEST::ucstol(number, &end, 10) == -12 && end == number + 3);
  Check(KEST::ucstoul(KEST_TEXT("0xFF"), nullptr, 0) == 255);
  Check(KEST::ucstol(KEST_TEXT("99999999999"), nullptr, 10) == 2147483647);  // the largest
  Check(KEST::ucstoxl(KEST_TEXT("077"), nullptr, 0, 1) == 63);               // 1: unsigned
  //! [wide-numbers]

  //! [wide-case]
  unsigned short word[] = {u'K', u'e', u's', u't', 0};
  Check(KEST::ucscmp(KEST::ucsupr(word), KEST_TEXT("KEST")) == 0);
  Check(KEST::ucscmp(KEST::ucslwr(word), KEST_TEXT("kest")) == 0);
  Check(KEST::ucscmp(KEST::ucsrev(word), KEST_TEXT("tsek")) == 0);
  //! [wide-case]

  //! [bounded-copy]
  unsigned short small[6];
  Check(KEST::ucslcpy(small, KEST_TEXT("abc"), 6) == 3);
  Check(KEST::ucslcat(small, KEST_TEXT("defg"), 6) == 7);  // 6 or more: it was cut off
  Check(KEST::ucscmp(small, KEST_TEXT("abcde")) == 0);
  Check(KEST::s2ulcpy(small, "bytes", 6) == 5);

  char bytes[6];
  Check(KEST::strlcpy(bytes, "abc", sizeof(bytes)) == 3);
  Check(KEST::strlcat(bytes, "defg", sizeof(bytes)) == 7 && strcmp(bytes, "abcde") == 0);
  //! [bounded-copy]
}

//! [vsnuprintf]
// A function of your own that formats.
static int Format(unsigned short* dest, unsigned int size, const unsigned short* format, ...) {
  va_list args;
  va_start(args, format);
  const int length = KEST::vsnuprintf(dest, size, format, args);
  va_end(args);
  return length;
}
//! [vsnuprintf]

//! [formatter]
// "[" text "]", with the numbers that are among the arguments first.
static int Bracket(KEST::xFILE* out, int numbers, ...) {
  int count = 0;
  va_list args;
  va_start(args, numbers);
  KEST::write_char(u'[', out, &count);
  for (int i = 0; i < numbers; ++i)
    KEST::write_multi_char(u'#', KEST::get_int_arg(&args), out, &count);
  count += KEST::unichar_output(out, KEST_TEXT(" %d"), args);
  KEST::write_string(KEST_TEXT(" ]"), 2, out, &count);
  va_end(args);
  return count;
}
//! [formatter]

static void Formatting() {
  //! [snuprintf]
  unsigned short line[16];
  const int length = KEST::snuprintf(line, 16, KEST_TEXT("%s: %5d"), KEST_TEXT("size"), 42);
  Check(length == 11);  // 16 or more would tell that it was cut off
  Check(KEST::ucscmp(line, KEST_TEXT("size:    42")) == 0);
  Check(KEST::snuprintf(nullptr, 0, KEST_TEXT("%08X"), 0xBEEF) == 8);  // how long would it be?
  //! [snuprintf]
  Check(Format(line, 16, KEST_TEXT("%c"), u'x') == 1 && line[0] == u'x');
  KEST::xFILE out = {line, 16};
  Check(Bracket(&out, 2, 1, 3, 7) == 9 && out.remaining == 7);
  *out.position = 0;
  Check(KEST::ucscmp(line, KEST_TEXT("[#### 7 ]")) == 0);
}

static void Making() {
  //! [bstr-make]
  const TBstr empty;
  const TBstr dashes(u'-', 3);
  const TBstr name(KEST_TEXT("Kest"));
  const TBstr first(KEST_TEXT("Kest"), 2);  // "Ke"
  const TBstr latin("d\xE9j\xE0");          // 8-bit text, a unit for each byte
  TBstr copy(name);
  const TBstr moved(static_cast<TBstr&&>(copy));  // copy is empty now
  Check(empty.IsEmpty() && copy.IsEmpty() && !moved.IsEmpty());
  Check(dashes.GetLength() == 3 && first.GetLength() == 2 && latin.GetAt(1) == 0x00E9);
  //! [bstr-make]

  //! [bstr-assign]
  TBstr text;
  text.Assign(KEST_TEXT("one"));
  text.Append(u',').Append(KEST_TEXT(" two"));
  text += " three";  // 8-bit text
  TBstr other = text;
  other = KEST_TEXT("else");  // without memory: empty
  Check(text.GetLength() == 14 && other != text);
  text.Empty();
  Check(text.IsEmpty());
  //! [bstr-assign]

  //! [bstr-operators]
  const TBstr a(KEST_TEXT("abc")), b(KEST_TEXT("abd"));
  Check(a == KEST_TEXT("abc"));
  Check(a != b);
  Check(a < b);
  const TBstr both = a + KEST_TEXT("-") + b;
  Check(both == KEST_TEXT("abc-abd"));
  //! [bstr-operators]
}

static void Storage() {
  //! [bstr-access]
  TBstr text(KEST_TEXT("caf\u00E9 \u20AC"));
  Check(text.GetString()[3] == 0x00E9);                        // never null
  Check(strcmp(text.GetMultibyteString(), "caf\xE9 ?") == 0);  // in bytes
  text.SetAt(0, u'C');
  Check(text.GetAt(0) == u'C' && text.GetAt(99) == 0);
  //! [bstr-access]

  //! [bstr-owner]
  TBstr text2;
  text2.Attach(KestAllocString(KEST_TEXT("mine")));  // text2 frees it
  unsigned short* copy = text2.Copy();               // the caller frees these two
  unsigned short* bstr = text2.Detach();
  Check(text2.IsEmpty() && KestStringLen(bstr) == 4 && KestStringLen(copy) == 4);
  KestFreeString(copy);
  KestFreeString(bstr);

  *text2.GetBstrPtr() = KestAllocString(KEST_TEXT("out"));  // as an output parameter
  Check(*text2.GetRawBstrPtr() == text2.GetString());
  //! [bstr-owner]

  //! [bstr-storage]
  TBstr buffer;
  Check(buffer.AdjustBuffer(4, false));  // four units, to be filled
  for (int i = 0; i < 4; ++i) (*buffer.GetRawBstrPtr())[i] = u'x';
  buffer.DestroyMultibyteBuffer();  // the store was not noticed
  Check(buffer.CreateMultibyteBuffer() && strcmp(buffer.GetMultibyteString(), "xxxx") == 0);
  Check(buffer.InternalInit(KEST_TEXT("a\0b"), 3) && buffer.InternalAppend(KEST_TEXT("cd"), 2));
  Check(buffer.GetLength() == 5);
  //! [bstr-storage]
}

static void Searching() {
  //! [bstr-compare]
  const TBstr text(KEST_TEXT("Hello World"));
  Check(text.Compare(KEST_TEXT("Hello")) > 0);
  Check(text.CompareNoCase(KEST_TEXT("HELLO WORLD")) == 0);
  Check(text.CompareNormal(KEST_TEXT("helloworld")) == 0);
  Check(TBstr(KEST_TEXT("42 apples")).ToLong() == 42);
  //! [bstr-compare]

  //! [bstr-find]
  const TBstr line(KEST_TEXT("key = value"));
  Check(line.Find(u'=') == 4);
  Check(line.Find(KEST_TEXT("val"), 5) == 6);  // from index 5 on
  Check(line.ReverseFind(u' ') == 5);
  Check(line.FindOneOf(KEST_TEXT("=: ")) == 3);
  Check(line.Find(u'!') == -1);
  //! [bstr-find]

  //! [bstr-parts]
  const TBstr path(KEST_TEXT("key = value"));
  Check(path.Left(3) == KEST_TEXT("key"));
  Check(path.Right(5) == KEST_TEXT("value"));
  Check(path.Mid(4, 1) == KEST_TEXT("="));
  Check(path.Mid(6) == KEST_TEXT("value"));
  //! [bstr-parts]
}

static void Changing() {
  //! [bstr-case]
  TBstr text(KEST_TEXT("Kest"));
  text.MakeUpper();
  Check(text == KEST_TEXT("KEST"));
  text.MakeLower();
  text.MakeReverse();
  Check(text == KEST_TEXT("tsek"));
  text.MakeBigEndian();  // for a file in UTF-16BE
  Check(text.GetAt(0) == 0x7400);
  //! [bstr-case]

  //! [bstr-trim]
  TBstr padded(KEST_TEXT("  a B  "));
  padded.TrimLeft();
  padded.TrimRight();
  Check(padded == KEST_TEXT("a B"));
  padded.Normalize();
  Check(padded == KEST_TEXT("ab"));
  //! [bstr-trim]

  //! [bstr-edit]
  TBstr list(KEST_TEXT("a,b,c"));
  Check(list.Replace(u',', u';') == 2);
  Check(list.Replace(KEST_TEXT(";"), KEST_TEXT(", ")) == 2);  // "a, b, c"
  Check(list.Remove(u' ') == 2);
  Check(list.Insert(0, KEST_TEXT("0,")) == 7);  // the length afterwards
  Check(list.Delete(0, 2) == 5 && list == KEST_TEXT("a,b,c"));
  //! [bstr-edit]
}

//! [bstr-format-v]
// A function of your own that formats.
static TBstr Message(const unsigned short* format, ...) {
  TBstr text;
  va_list args;
  va_start(args, format);
  text.FormatV(format, args);
  va_end(args);
  return text;
}
//! [bstr-format-v]

static void Texts() {
  //! [bstr-format]
  TBstr text;
  text.Format(KEST_TEXT("%d of %s"), 3, KEST_TEXT("ten"));
  Check(text == KEST_TEXT("3 of ten"));  // empty without memory
  //! [bstr-format]
  Check(Message(KEST_TEXT("%d"), 7) == KEST_TEXT("7"));

  //! [bstr-encoding]
  const TBstr price(KEST_TEXT("10 \u20AC"));
  const TBstr encoding = price.GetBestEncoding();
  Check(encoding == KEST_TEXT("utf-8"));
  Check(price.GetEncodedByteLength(encoding.GetString()) == 6);
  //! [bstr-encoding]
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  Bstrs();
  Conversions();
  Characters();
  WideStrings();
  Formatting();
  Making();
  Storage();
  Searching();
  Changing();
  Texts();
  KestUninitialize();
  puts("as shown");
  return 0;
}
