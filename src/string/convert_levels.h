// Conversions between 16-bit units and bytes, in versions for the levels of the processor, and the
// single steps of UTF-8 that they share. Arguments have been checked: there is no null, and what is
// read and what is written do not overlap, save in the plain versions.

#ifndef KEST_SRC_STRING_CONVERT_LEVELS_H
#define KEST_SRC_STRING_CONVERT_LEVELS_H

#include <stddef.h>
#include <stdint.h>

namespace KEST {

constexpr unsigned int kLastOfOneByte = 0x7F;
constexpr unsigned int kLastOfTwoBytes = 0x7FF;
constexpr unsigned int kLastOfBytes = 0xFF;

constexpr unsigned int EncodedSize(unsigned int unit) {
  return unit <= kLastOfOneByte ? 1 : unit <= kLastOfTwoBytes ? 2 : 3;
}

// By the lead byte alone: any other byte counts as a continuation.
constexpr int SequenceSize(unsigned char lead) {
  return lead < 0x80 ? 1 : (lead & 0x20) == 0 ? 2 : 3;
}

// What encoding writes at most.
constexpr size_t MostUtf8Bytes(int units, int size) {
  const size_t count = static_cast<size_t>(units), room = static_cast<size_t>(size) + 2;
  return count <= room / 3 ? 3 * count : room;
}

// How far a conversion has come, in elements of its source and of its destination.
struct SConverted {
  int read, written;
};

// The conversions to and from UTF-8. Both return what is written in all.
int EncodeUtf8Plain(const unsigned short* src, int length, char* dest, int size);
int EncodeUtf8Sse2(const unsigned short* src, int length, char* dest, int size);
int EncodeUtf8Avx512(const unsigned short* src, int length, char* dest, int size);
int DecodeUtf8Plain(const char* src, int length, unsigned short* dest, int size);
int DecodeUtf8Sse2(const char* src, int length, unsigned short* dest, int size);
int DecodeUtf8Avx512(const char* src, int length, unsigned short* dest, int size);

// The plain versions of a part: from where done stands until the source is read up to end, or the
// conversion is over before. For the vector versions at places that are not for them.
void EncodeUtf8Until(int end, const unsigned short* src, char* dest, int size, SConverted& done);
void DecodeUtf8Until(int end, const char* src, int length, unsigned short* dest, int size,
                     SConverted& done);

// The bytes that encoding writes of text up to its terminator.
uint64_t Utf8LengthPlain(const unsigned short* s);
uint64_t Utf8LengthAvx2(const unsigned short* s);
uint64_t Utf8LengthAvx512(const unsigned short* s);

// To and from ISO 8859-1: exactly count elements.
void NarrowPlain(const unsigned short* src, int count, char* dest);
void NarrowSse2(const unsigned short* src, int count, char* dest);
void NarrowAvx2(const unsigned short* src, int count, char* dest);
void NarrowAvx512(const unsigned short* src, int count, char* dest);
void WidenPlain(const char* src, int count, unsigned short* dest);
void WidenSse2(const char* src, int count, unsigned short* dest);
void WidenAvx2(const char* src, int count, unsigned short* dest);
void WidenAvx512(const char* src, int count, unsigned short* dest);

}  // namespace KEST

#endif  // KEST_SRC_STRING_CONVERT_LEVELS_H
