// Base64, 4 groups at once.

#include <immintrin.h>
#include <string.h>

#include "cpu/level.h"
#include "crypto/base64_levels.h"
#include "crypto/base64_ranges.h"

namespace KEST {

namespace {

constexpr int kAtOnce = 4;
// Encoding loads 16 bytes for the 12 that it takes.
constexpr int kLoadedWhole = 6;

KEST_FOR_SSSE3 __m128i Table(const SLookup& lookup) {
  return _mm_load_si128(reinterpret_cast<const __m128i*>(lookup.of));
}

KEST_FOR_SSSE3 __m128i LoadData(const unsigned char* data) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(data));
}

KEST_FOR_SSSE3 void Store(unsigned short* text, __m128i units) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(text), units);
}

// The values of whole groups.
KEST_FOR_SSSE3 __m128i Split(__m128i data) {
  const __m128i spread = _mm_shuffle_epi8(data, Table(kSpreadGroups));
  const __m128i odd =
      _mm_mulhi_epu16(_mm_and_si128(spread, _mm_set1_epi32(kOddValues)), _mm_set1_epi32(kMoveDown));
  const __m128i even =
      _mm_mullo_epi16(_mm_and_si128(spread, _mm_set1_epi32(kEvenValues)), _mm_set1_epi32(kMoveUp));
  return _mm_or_si128(odd, even);
}

KEST_FOR_SSSE3 __m128i Letters(__m128i values) {
  const __m128i notCapitals = _mm_cmpgt_epi8(values, _mm_set1_epi8(kLastCapital));
  const __m128i ranges =
      _mm_sub_epi8(_mm_subs_epu8(values, _mm_set1_epi8(kLastLetter)), notCapitals);
  return _mm_add_epi8(values, _mm_shuffle_epi8(Table(kToLetters), ranges));
}

// 16 units in bytes: those above 255 saturate, to 0 when their highest bit is set.
KEST_FOR_SSSE3 KEST_READS_PAST_END __m128i LoadText(const unsigned short* text) {
  const auto* units = reinterpret_cast<const __m128i*>(text);
  return _mm_packus_epi16(_mm_loadu_si128(units), _mm_loadu_si128(units + 1));
}

KEST_FOR_SSSE3 __m128i LowNibbles(__m128i bytes) {
  return _mm_and_si128(bytes, _mm_set1_epi8(0x0F));
}

KEST_FOR_SSSE3 __m128i RowsOf(__m128i bytes) { return LowNibbles(_mm_srli_epi16(bytes, 4)); }

KEST_FOR_SSSE3 bool AreLetters(__m128i bytes, __m128i rows) {
  const __m128i lacks = _mm_shuffle_epi8(Table(kLackOfColumn), LowNibbles(bytes));
  const __m128i wrong = _mm_and_si128(lacks, _mm_shuffle_epi8(Table(kKindOfRow), rows));
  return _mm_movemask_epi8(_mm_cmpeq_epi8(wrong, _mm_setzero_si128())) == 0xFFFF;
}

KEST_FOR_SSSE3 __m128i Values(__m128i letters, __m128i rows) {
  const __m128i slashes = _mm_cmpeq_epi8(letters, _mm_set1_epi8('/'));
  return _mm_add_epi8(letters, _mm_shuffle_epi8(Table(kToValues), _mm_add_epi8(rows, slashes)));
}

// 12 bytes.
KEST_FOR_SSSE3 __m128i Joined(__m128i values) {
  const __m128i pairs = _mm_maddubs_epi16(values, _mm_set1_epi16(kJoinValues));
  const __m128i groups = _mm_madd_epi16(pairs, _mm_set1_epi32(kJoinPairs));
  return _mm_shuffle_epi8(groups, Table(kDenseGroups));
}

KEST_FOR_SSSE3 void StoreBytes(unsigned char* out, __m128i bytes) {
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out), bytes);
  const int last = _mm_cvtsi128_si32(_mm_srli_si128(bytes, 8));
  memcpy(out + 8, &last, sizeof(last));
}

}  // namespace

KEST_FOR_SSSE3 KEST_REALIGN void EncodeGroupsSsse3(const unsigned char* data, int groups,
                                                   unsigned short* text) {
  for (; groups >= kLoadedWhole; groups -= kAtOnce) {
    const __m128i letters = Letters(Split(LoadData(data)));
    Store(text, _mm_unpacklo_epi8(letters, _mm_setzero_si128()));
    Store(text + 8, _mm_unpackhi_epi8(letters, _mm_setzero_si128()));
    data += 3 * kAtOnce;
    text += 4 * kAtOnce;
  }
  EncodeGroupsPlain(data, groups, text);
}

KEST_FOR_SSSE3 KEST_REALIGN KEST_READS_PAST_END int DecodeGroupsSsse3(const unsigned short* text,
                                                                      int groups,
                                                                      unsigned char* out) {
  int done = 0;
  for (; groups - done >= kAtOnce; done += kAtOnce) {
    const __m128i letters = LoadText(text + 4 * done);
    const __m128i rows = RowsOf(letters);
    if (!AreLetters(letters, rows)) break;
    StoreBytes(out + 3 * done, Joined(Values(letters, rows)));
  }
  return done + DecodeGroupsPlain(text + 4 * done, groups - done, out + 3 * done);
}

}  // namespace KEST
