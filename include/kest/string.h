#ifndef KEST_STRING_H
#define KEST_STRING_H

#include <stdarg.h>
#include "kest/export.h"
#define KEST_TEXT(s) (reinterpret_cast<const unsigned short*>(u"" s))
extern "C" {
KEST_API unsigned short* KestAllocString(const unsigned short* s);
KEST_API unsigned short* KestAllocStringLen(const unsigned short* s, unsigned int length);
KEST_API void KestFreeString(unsigned short* bstr);
KEST_API unsigned int KestStringLen(const unsigned short* bstr);
KEST_API unsigned int KestStringByteLen(const unsigned short* bstr);
KEST_API unsigned int KestStringUtf8ByteLen(const unsigned short* s);
KEST_API int KestStringToUtf8(const unsigned short* src, int length, char* dest, int size);
KEST_API int KestUtf8ToString(const char* src, int length, unsigned short* dest, int size);
KEST_API int KestUnicodeToMultibyte(const unsigned short* src, int length, char* dest, int size);
KEST_API int KestMultibyteToUnicode(const char* src, int length, unsigned short* dest, int size);
KEST_API int kest_isalnum(int ch);
KEST_API int kest_isdigit(int ch);
KEST_API int kest_isspace(int ch);
KEST_API int kest_isualnum(unsigned short ch);
KEST_API int kest_isudigit(unsigned short ch);
}
namespace KEST {
KEST_API unsigned int ucslen(const unsigned short* s);
KEST_API unsigned short* ucscpy(unsigned short* dest, const unsigned short* src);
KEST_API unsigned short* ucsncpy(unsigned short* dest, const unsigned short* src, unsigned int n);
KEST_API unsigned short* ucscat(unsigned short* dest, const unsigned short* src);
KEST_API int ucscmp(const unsigned short* a, const unsigned short* b);
KEST_API int ucsncmp(const unsigned short* a, const unsigned short* b, unsigned int n);
KEST_API int ucsicmp(const unsigned short* a, const unsigned short* b);
KEST_API int ucsnicmp(const unsigned short* a, const unsigned short* b, unsigned int n);
KEST_API unsigned short* ucschr(const unsigned short* s, unsigned short ch);
KEST_API unsigned short* ucsrchr(const unsigned short* s, unsigned short ch);
KEST_API unsigned short* ucspbrk(const unsigned short* s, const unsigned short* set);
KEST_API unsigned short* ucsstr(const unsigned short* haystack, const unsigned short* needle);
KEST_API int ucstol(const unsigned short* s, unsigned short** end, int base);
KEST_API unsigned int ucstoul(const unsigned short* s, unsigned short** end, int base);
KEST_API unsigned int ucstoxl(const unsigned short* s, unsigned short** end, int base,
                              unsigned int flags);
KEST_API unsigned short* ucsupr(unsigned short* s);
KEST_API unsigned short* ucslwr(unsigned short* s);
KEST_API unsigned short* ucsrev(unsigned short* s);
KEST_API unsigned int ucslcpy(unsigned short* dest, const unsigned short* src, unsigned int size);
KEST_API unsigned int ucslcat(unsigned short* dest, const unsigned short* src, unsigned int size);
KEST_API unsigned int s2ulcpy(unsigned short* dest, const char* src, unsigned int size);
KEST_API unsigned int strlcpy(char* dest, const char* src, unsigned int size);
KEST_API unsigned int strlcat(char* dest, const char* src, unsigned int size);
KEST_API int isuctype(unsigned short ch, unsigned short mask);
KEST_API unsigned short touupper(unsigned short ch);
KEST_API unsigned short toulower(unsigned short ch);
struct KEST_API xFILE {
  unsigned short* position;
  int remaining;
};
KEST_API int snuprintf(unsigned short* dest, unsigned int size, const unsigned short* format, ...);
KEST_API int vsnuprintf(unsigned short* dest, unsigned int size, const unsigned short* format,
                        va_list args);
KEST_API int unichar_output(xFILE* out, const unsigned short* format, va_list args);
KEST_API void write_char(unsigned short ch, xFILE* out, int* count);
KEST_API void write_multi_char(unsigned short ch, int n, xFILE* out, int* count);
KEST_API void write_string(const unsigned short* s, int n, xFILE* out, int* count);
KEST_API int get_int_arg(va_list* args);
class KEST_API TConvertBuffer {
 public:
  explicit TConvertBuffer(const char* s, int length = -1);
  TConvertBuffer(const TConvertBuffer&) = delete;
  TConvertBuffer& operator=(const TConvertBuffer&) = delete;
  ~TConvertBuffer();
  const unsigned short* GetBuffer() const { return buffer; }
  int GetLength() const { return length; }

 private:
  unsigned short* buffer;
  int length;
};
class KEST_API TBstr {
 public:
  TBstr();
  TBstr(const TBstr& other);
  TBstr(TBstr&& other) noexcept : string(other.string), multibyte(other.multibyte) {
    other.string = nullptr;
    other.multibyte = nullptr;
  }
  TBstr(unsigned short ch, int count);
  TBstr(const unsigned short* s);
  TBstr(const unsigned short* s, int length);
  TBstr(const char* s);
  TBstr(const char* s, int length);
  ~TBstr();
  bool AdjustBuffer(int length, bool keep);
  bool InternalInit(const unsigned short* src, int length);
  bool InternalAppend(const unsigned short* src, int length);
  bool CreateMultibyteBuffer() const;
  void DestroyMultibyteBuffer();
  int GetLength() const;
  bool IsEmpty() const;
  void Empty();
  const unsigned short* GetString() const;
  const char* GetMultibyteString() const;
  unsigned short** GetBstrPtr();
  unsigned short** GetRawBstrPtr();
  void Attach(unsigned short* bstr);
  unsigned short* Detach();
  unsigned short* Copy() const;
  TBstr& Assign(const TBstr& other);
  TBstr& Assign(unsigned short ch);
  TBstr& Assign(const unsigned short* s);
  TBstr& Assign(const char* s);
  TBstr& Append(const TBstr& other);
  TBstr& Append(unsigned short ch);
  TBstr& Append(const unsigned short* s);
  TBstr& Append(const char* s);
  unsigned short GetAt(int index) const;
  void SetAt(int index, unsigned short ch);
  int Compare(const unsigned short* s) const;
  int CompareNoCase(const unsigned short* s) const;
  int CompareNormal(const unsigned short* s) const;
  int ToLong() const;
  int Find(unsigned short ch, int start = 0) const;
  int Find(const unsigned short* s, int start = 0) const;
  int ReverseFind(unsigned short ch) const;
  int FindOneOf(const unsigned short* set) const;
  TBstr Mid(int first, int count) const;
  TBstr Mid(int first) const;
  TBstr Left(int n) const;
  TBstr Right(int n) const;
  void MakeUpper();
  void MakeLower();
  void MakeReverse();
  void MakeBigEndian();
  void TrimLeft(unsigned short ch = 0x20);
  void TrimRight(unsigned short ch = 0x20);
  void Normalize();
  int Replace(unsigned short from, unsigned short to);
  int Replace(const unsigned short* from, const unsigned short* to);
  int Remove(unsigned short ch);
  int Insert(int index, unsigned short ch);
  int Insert(int index, const unsigned short* s);
  int Delete(int index, int count = 1);
  int GetEncodedByteLength(const unsigned short* encoding) const;
  TBstr GetBestEncoding() const;
  void Format(const unsigned short* format, ...);
  void FormatV(const unsigned short* format, va_list args);
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
inline bool operator==(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) == 0; }
inline bool operator==(const TBstr& a, const unsigned short* b) { return a.Compare(b) == 0; }
inline bool operator==(const unsigned short* a, const TBstr& b) { return b.Compare(a) == 0; }
inline bool operator!=(const TBstr& a, const TBstr& b) { return !(a == b); }
inline bool operator!=(const TBstr& a, const unsigned short* b) { return !(a == b); }
inline bool operator!=(const unsigned short* a, const TBstr& b) { return !(a == b); }
inline bool operator<(const TBstr& a, const TBstr& b) { return a.Compare(b.GetString()) < 0; }
inline bool operator<(const TBstr& a, const unsigned short* b) { return a.Compare(b) < 0; }
inline bool operator<(const unsigned short* a, const TBstr& b) { return b.Compare(a) > 0; }
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
