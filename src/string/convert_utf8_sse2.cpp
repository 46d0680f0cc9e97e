// UTF-8 where it is ASCII, in vectors of 16 units. The rest is left to the plain version, in pieces
// long enough that looking for ASCII costs little in text that has none.

#include <immintrin.h>
#include <stddef.h>

#include <algorithm>

#include "cpu/level.h"
#include "string/convert_levels.h"
#include "string/overlap.h"

namespace KEST {

namespace {

constexpr int kBlock = 16;
constexpr int kPlainPiece = 64;
constexpr int kWorthwhile = 2 * kBlock;

KEST_FOR_SSE2 __m128i Load(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

KEST_FOR_SSE2 void Store(void* p, __m128i vector) {
  _mm_storeu_si128(static_cast<__m128i*>(p), vector);
}

KEST_FOR_SSE2 bool AreAscii(__m128i bytes) { return _mm_movemask_epi8(bytes) == 0; }

// Of both vectors of units.
KEST_FOR_SSE2 bool AreAscii(__m128i a, __m128i b) {
  const __m128i others =
      _mm_and_si128(_mm_or_si128(a, b), _mm_set1_epi16(static_cast<short>(~kLastOfOneByte)));
  return _mm_movemask_epi8(_mm_cmpeq_epi16(others, _mm_setzero_si128())) == 0xFFFF;
}

int NextPiece(int read, int length) {
  return length - read > kPlainPiece ? read + kPlainPiece : length;
}

}  // namespace

KEST_FOR_SSE2 KEST_REALIGN int EncodeUtf8Sse2(const unsigned short* src, int length, char* dest,
                                              int size) {
  if (length < kWorthwhile ||
      Overlap(src, 2 * static_cast<size_t>(length), dest, MostUtf8Bytes(length, size))) {
    return EncodeUtf8Plain(src, length, dest, size);
  }
  SConverted done = {0, 0};
  while (length - done.read >= kBlock && size - done.written >= kBlock) {
    const __m128i a = Load(src + done.read);
    const __m128i b = Load(src + done.read + kBlock / 2);
    if (AreAscii(a, b)) {
      Store(dest + done.written, _mm_packus_epi16(a, b));
      done.read += kBlock;
      done.written += kBlock;
    } else {
      EncodeUtf8Until(NextPiece(done.read, length), src, dest, size, done);
    }
  }
  EncodeUtf8Until(length, src, dest, size, done);
  return done.written;
}

KEST_FOR_SSE2 KEST_REALIGN int DecodeUtf8Sse2(const char* src, int length, unsigned short* dest,
                                              int size) {
  const size_t most = static_cast<size_t>(std::min(length, size));
  if (length < kWorthwhile || Overlap(src, static_cast<size_t>(length), dest, 2 * most)) {
    return DecodeUtf8Plain(src, length, dest, size);
  }
  SConverted done = {0, 0};
  while (length - done.read >= kBlock && size - done.written >= kBlock) {
    const __m128i bytes = Load(src + done.read);
    if (AreAscii(bytes)) {
      Store(dest + done.written, _mm_unpacklo_epi8(bytes, _mm_setzero_si128()));
      Store(dest + done.written + kBlock / 2, _mm_unpackhi_epi8(bytes, _mm_setzero_si128()));
      done.read += kBlock;
      done.written += kBlock;
    } else {
      DecodeUtf8Until(NextPiece(done.read, length), src, length, dest, size, done);
    }
  }
  DecodeUtf8Until(length, src, length, dest, size, done);
  return done.written;
}

}  // namespace KEST
