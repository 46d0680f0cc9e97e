// Base64, 8 groups at once to text and 16 from it. The alphabet is looked up as a whole.

#include <stdint.h>

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "crypto/base64_levels.h"
#include "crypto/base64_ranges.h"

namespace KEST {

namespace {

constexpr int kEncodedAtOnce = 8;
constexpr int kDecodedAtOnce = 16;
// Encoding loads 32 bytes for the 24 that it takes.
constexpr int kLoadedWhole = 11;
constexpr int kWorthAligning = 64;

struct alignas(64) SBytes {
  unsigned char of[64];
};

template <typename Function>
constexpr SBytes MakeBytes(Function byteAt) {
  SBytes bytes = {};
  for (int i = 0; i < 64; ++i) bytes.of[i] = static_cast<unsigned char>(byteAt(i));
  return bytes;
}

// The three bytes of each group, the last one first, at the start of 8 bytes.
constexpr SBytes kSpread = MakeBytes([](int i) { return i / 8 * 3 + (i % 8 < 3 ? 2 - i % 8 : 0); });
constexpr SBytes kLetters = MakeBytes([](int i) { return kBase64Alphabet[i]; });
// The 6 bits of each unit, of the 24 in 8 bytes.
constexpr long long kSixBits = 18 | 12 << 16 | 6LL << 32;

constexpr unsigned char kNoLetter = 0x80;

// Truth tables.
constexpr int kOrThenAnd = 0xA8;  // (a | b) & c
constexpr int kAndThenOr = 0xF8;  // a | (b & c)

// What the letters stand for, from code on.
constexpr SBytes MakeValues(int code) {
  SBytes values = MakeBytes([](int) { return kNoLetter; });
  for (int i = 0; i < 64; ++i) {
    const int place = kBase64Alphabet[i] - code;
    if (place >= 0 && place < 64) values.of[place] = static_cast<unsigned char>(i);
  }
  return values;
}

constexpr SBytes kLowValues = MakeValues(0);
constexpr SBytes kHighValues = MakeValues(64);
constexpr SBytes kEvenBytes = MakeBytes([](int i) { return 2 * i; });
// The three bytes of each dword, the highest first.
constexpr SBytes kDense = MakeBytes([](int i) { return i < 48 ? i / 3 * 4 + 2 - i % 3 : 0; });

KEST_FOR_AVX512 __m512i Load(const SBytes& bytes) { return _mm512_load_si512(bytes.of); }

// The units of 8 groups, whose bytes come first in data.
KEST_FOR_AVX512 __m512i Encoded(__m256i data) {
  const __m512i spread = _mm512_permutexvar_epi8(Load(kSpread), _mm512_castsi256_si512(data));
  const __m512i bits = _mm512_multishift_epi64_epi8(_mm512_set1_epi64(kSixBits), spread);
  // The lookup takes the lowest 6 bits of each byte. Every other one becomes the high one of a
  // unit.
  return _mm512_maskz_permutexvar_epi8(0x5555555555555555, bits, Load(kLetters));
}

// The groups until units lie at the start of a cache line, 1 to 8; 8 when they never do.
int GroupsToLine(const unsigned short* text) {
  const uintptr_t past = reinterpret_cast<uintptr_t>(text) % 64;
  return past % 8 == 0 ? static_cast<int>(8 - past / 8) : kEncodedAtOnce;
}

KEST_FOR_AVX512 void StoreUnits(unsigned short* text, __m512i units) {
  _mm512_storeu_si512(text, units);
}

KEST_FOR_AVX512 __m256i LoadData(const unsigned char* data) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(data));
}

// Whether there are other units than letters. The lookup of the values takes the lowest 7 bits of a
// unit only.
KEST_FOR_AVX512 bool HasOthers(__m512i low, __m512i high, __m512i values) {
  const __m512i above = _mm512_ternarylogic_epi32(low, high, _mm512_set1_epi16(~0x7F), kOrThenAnd);
  const __m512i others = _mm512_ternarylogic_epi32(
      above, values, _mm512_set1_epi8(static_cast<char>(kNoLetter)), kAndThenOr);
  return _mm512_test_epi32_mask(others, others) != 0;
}

KEST_FOR_AVX512 __m512i Joined(__m512i values) {
  const __m512i pairs = _mm512_maddubs_epi16(values, _mm512_set1_epi16(kJoinValues));
  const __m512i groups = _mm512_madd_epi16(pairs, _mm512_set1_epi32(kJoinPairs));
  return _mm512_permutexvar_epi8(Load(kDense), groups);
}

// 48 of them.
KEST_FOR_AVX512 void StoreBytes(unsigned char* out, __m512i bytes) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), _mm512_castsi512_si256(bytes));
  _mm_storeu_si128(reinterpret_cast<__m128i*>(out + 32), _mm512_extracti32x4_epi32(bytes, 2));
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN void EncodeGroupsAvx512(const unsigned char* data, int groups,
                                                     unsigned short* text) {
  // Twice over some groups rather than across two lines each time.
  int step = groups >= kWorthAligning ? GroupsToLine(text) : kEncodedAtOnce;
  while (groups >= kLoadedWhole) {
    StoreUnits(text, Encoded(LoadData(data)));
    data += 3 * step;
    text += 4 * step;
    groups -= step;
    step = kEncodedAtOnce;
  }
  for (; groups > 0; groups -= kEncodedAtOnce) {
    const unsigned int count = groups < kEncodedAtOnce ? static_cast<unsigned int>(groups) : 8;
    const __m256i bytes = _mm256_maskz_loadu_epi8(_bzhi_u32(~0u, 3 * count), data);
    _mm512_mask_storeu_epi16(text, _bzhi_u32(~0u, 4 * count), Encoded(bytes));
    data += 3 * kEncodedAtOnce;
    text += 4 * kEncodedAtOnce;
  }
}

KEST_FOR_AVX512 KEST_REALIGN KEST_READS_PAST_END int DecodeGroupsAvx512(const unsigned short* text,
                                                                        int groups,
                                                                        unsigned char* out) {
  int done = 0;
  for (; groups - done >= kDecodedAtOnce; done += kDecodedAtOnce) {
    const __m512i low = _mm512_loadu_si512(text + 4 * done);
    const __m512i high = _mm512_loadu_si512(text + 4 * done + 32);
    const __m512i letters = _mm512_permutex2var_epi8(low, Load(kEvenBytes), high);
    const __m512i values = _mm512_permutex2var_epi8(Load(kLowValues), letters, Load(kHighValues));
    if (HasOthers(low, high, values)) break;
    StoreBytes(out + 3 * done, Joined(values));
  }
  return done + DecodeGroupsAvx2(text + 4 * done, groups - done, out + 3 * done);
}

}  // namespace KEST
