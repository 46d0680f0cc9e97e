// Base64, 8 groups at once.

#include <immintrin.h>

#include "cpu/level.h"
#include "crypto/base64_levels.h"
#include "crypto/base64_ranges.h"

namespace KEST {

namespace {

constexpr int kAtOnce = 8;
// Encoding loads 28 bytes for the 24 that it takes.
constexpr int kLoadedWhole = 10;

KEST_FOR_AVX2 __m256i Table(const SLookup& lookup) {
  return _mm256_broadcastsi128_si256(_mm_load_si128(reinterpret_cast<const __m128i*>(lookup.of)));
}

KEST_FOR_AVX2 __m128i LoadHalf(const void* p) {
  return _mm_loadu_si128(static_cast<const __m128i*>(p));
}

// 12 bytes at the start of each half.
KEST_FOR_AVX2 __m256i LoadData(const unsigned char* data) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(LoadHalf(data)), LoadHalf(data + 12), 1);
}

KEST_FOR_AVX2 void Store(unsigned short* text, __m256i units) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(text), units);
}

// The values of whole groups.
KEST_FOR_AVX2 __m256i Split(__m256i data) {
  const __m256i spread = _mm256_shuffle_epi8(data, Table(kSpreadGroups));
  const __m256i odd = _mm256_mulhi_epu16(_mm256_and_si256(spread, _mm256_set1_epi32(kOddValues)),
                                         _mm256_set1_epi32(kMoveDown));
  const __m256i even = _mm256_mullo_epi16(_mm256_and_si256(spread, _mm256_set1_epi32(kEvenValues)),
                                          _mm256_set1_epi32(kMoveUp));
  return _mm256_or_si256(odd, even);
}

KEST_FOR_AVX2 __m256i Letters(__m256i values) {
  const __m256i notCapitals = _mm256_cmpgt_epi8(values, _mm256_set1_epi8(kLastCapital));
  const __m256i ranges =
      _mm256_sub_epi8(_mm256_subs_epu8(values, _mm256_set1_epi8(kLastLetter)), notCapitals);
  return _mm256_add_epi8(values, _mm256_shuffle_epi8(Table(kToLetters), ranges));
}

// 32 units in bytes: those above 255 saturate, to 0 when their highest bit is set.
KEST_FOR_AVX2 KEST_READS_PAST_END __m256i LoadText(const unsigned short* text) {
  const auto* units = reinterpret_cast<const __m256i*>(text);
  const __m256i packed =
      _mm256_packus_epi16(_mm256_loadu_si256(units), _mm256_loadu_si256(units + 1));
  // Packing works within each half.
  return _mm256_permute4x64_epi64(packed, _MM_SHUFFLE(3, 1, 2, 0));
}

KEST_FOR_AVX2 __m256i LowNibbles(__m256i bytes) {
  return _mm256_and_si256(bytes, _mm256_set1_epi8(0x0F));
}

KEST_FOR_AVX2 __m256i RowsOf(__m256i bytes) { return LowNibbles(_mm256_srli_epi16(bytes, 4)); }

KEST_FOR_AVX2 bool AreLetters(__m256i bytes, __m256i rows) {
  const __m256i lacks = _mm256_shuffle_epi8(Table(kLackOfColumn), LowNibbles(bytes));
  const __m256i wrong = _mm256_and_si256(lacks, _mm256_shuffle_epi8(Table(kKindOfRow), rows));
  return _mm256_movemask_epi8(_mm256_cmpeq_epi8(wrong, _mm256_setzero_si256())) == -1;
}

KEST_FOR_AVX2 __m256i Values(__m256i letters, __m256i rows) {
  const __m256i slashes = _mm256_cmpeq_epi8(letters, _mm256_set1_epi8('/'));
  return _mm256_add_epi8(letters,
                         _mm256_shuffle_epi8(Table(kToValues), _mm256_add_epi8(rows, slashes)));
}

// 12 bytes in each half.
KEST_FOR_AVX2 __m256i Joined(__m256i values) {
  const __m256i pairs = _mm256_maddubs_epi16(values, _mm256_set1_epi16(kJoinValues));
  const __m256i groups = _mm256_madd_epi16(pairs, _mm256_set1_epi32(kJoinPairs));
  return _mm256_shuffle_epi8(groups, Table(kDenseGroups));
}

KEST_FOR_AVX2 void StoreBytes(unsigned char* out, __m256i halves) {
  const __m256i bytes =
      _mm256_permutevar8x32_epi32(halves, _mm256_setr_epi32(0, 1, 2, 4, 5, 6, 3, 7));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_castsi256_si128(bytes));
  _mm_storel_epi64(reinterpret_cast<__m128i*>(out + 16), _mm256_extracti128_si256(bytes, 1));
}

}  // namespace

KEST_FOR_AVX2 KEST_REALIGN void EncodeGroupsAvx2(const unsigned char* data, int groups,
                                                 unsigned short* text) {
  for (; groups >= kLoadedWhole; groups -= kAtOnce) {
    const __m256i letters = Letters(Split(LoadData(data)));
    Store(text, _mm256_cvtepu8_epi16(_mm256_castsi256_si128(letters)));
    Store(text + 16, _mm256_cvtepu8_epi16(_mm256_extracti128_si256(letters, 1)));
    data += 3 * kAtOnce;
    text += 4 * kAtOnce;
  }
  EncodeGroupsSsse3(data, groups, text);
}

KEST_FOR_AVX2 KEST_REALIGN KEST_READS_PAST_END int DecodeGroupsAvx2(const unsigned short* text,
                                                                    int groups,
                                                                    unsigned char* out) {
  int done = 0;
  for (; groups - done >= kAtOnce; done += kAtOnce) {
    const __m256i letters = LoadText(text + 4 * done);
    const __m256i rows = RowsOf(letters);
    if (!AreLetters(letters, rows)) break;
    StoreBytes(out + 3 * done, Joined(Values(letters, rows)));
  }
  return done + DecodeGroupsSsse3(text + 4 * done, groups - done, out + 3 * done);
}

}  // namespace KEST
