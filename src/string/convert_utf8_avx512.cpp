// UTF-8 in vectors of 32 units.
//
// Decoding: each byte of a block is taken for a lead and its unit made of it and of the two bytes
// behind it, for all bytes at once; then the units of true leads are moved together. Which bytes
// are leads follows from the blocks before only in text that is malformed, where a lead is not
// followed by as many trailing bytes as it says; such a block is left to the plain version.
//
// Encoding: each unit spreads over as many bytes as the longest sequence has, and the bytes that
// belong to it are moved together.
//
// A vector may be stored whole, and so past what it holds, where the text left is sure to overwrite
// what is too much.

#include <algorithm>

#include "cpu/intrinsics_avx512.h"
#include "cpu/level.h"
#include "string/convert_levels.h"
#include "string/overlap.h"

#define KEST_APART __attribute__((noinline))

namespace KEST {

namespace {

constexpr int kBlock = 32;
// What has to be left for blocks that are loaded and stored whole: two bytes behind the block, two
// that a sequence takes from the next block and two of one that is cut off; and what makes the 22
// units that a block can lack, when each has three bytes.
constexpr int kWhole = kBlock + 2 + 2 + 2 + 22 * 3;

// The same for encoding: 48 bytes are what the later half of a block can lack. The first half may
// lie 48 bytes into the room.
constexpr int kWholeUnits = kBlock + 48;
constexpr int kWholeRoom = 48 + 64;

// The lowest count bits, 0 to 32.
KEST_FOR_AVX512 unsigned int LowBits(int count) {
  return _bzhi_u32(~0u, static_cast<unsigned int>(count));
}

KEST_FOR_AVX512 int CountBits(unsigned int bits) { return _mm_popcnt_u32(bits); }

// a where mask is set, else b.
KEST_FOR_AVX512 __m512i Select(__m512i mask, __m512i a, __m512i b) {
  return _mm512_ternarylogic_epi32(mask, a, b, 0xCA);
}

// Which bytes of a block are what. Sequences may go on in the next block.
struct SBytes {
  unsigned int leads;          // single bytes among them
  unsigned int longer, three;  // leads of more than one byte, of three
  bool regular;                // as many bytes trail each lead as it says
  bool complete;               // the last sequence ends in this block

  // carry: the first bytes that belong to the block before.
  KEST_FOR_AVX512 SBytes(__m256i bytes, unsigned int here, unsigned int carry) {
    const __m256i lowestLead = _mm256_set1_epi8(static_cast<char>(0xC0));
    const __m256i lowestOfThree = _mm256_set1_epi8(static_cast<char>(0xE0));
    const unsigned int trails = _mm256_cmplt_epi8_mask(bytes, lowestLead);
    longer = _mm256_cmpge_epu8_mask(bytes, lowestLead);
    three = _mm256_cmpge_epu8_mask(bytes, lowestOfThree);
    leads = here & ~trails;
    const unsigned int followed = longer | three << 1;
    regular = trails == (followed << 1 | carry);
    complete = followed >> 31 == 0;
  }

  unsigned int Carry() const { return longer >> 31 | three >> 30; }
};

// A unit for each byte, made of it and of the two behind it.
KEST_FOR_AVX512 inline __m512i UnitsOf(const SBytes& kinds, __m256i first, __m256i second,
                                       __m256i third) {
  const __m512i sixBits = _mm512_set1_epi16(0x3F);
  const __m512i one = _mm512_cvtepu8_epi16(first);
  const __m512i two = Select(sixBits, _mm512_cvtepu8_epi16(second), _mm512_slli_epi16(one, 6));
  const __m512i three = Select(sixBits, _mm512_cvtepu8_epi16(third), _mm512_slli_epi16(two, 6));
  // Less the high bits of the lead, which the shift for three takes out by itself.
  const __m512i upToTwo =
      _mm512_mask_sub_epi16(one, kinds.longer, two, _mm512_set1_epi16(0xC0 << 6));
  const __m512i all = _mm512_mask_mov_epi16(upToTwo, kinds.three, three);
  return _mm512_maskz_compress_epi16(kinds.leads, all);
}

KEST_FOR_AVX512 __m256i Load(const char* p) {
  return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p));
}

KEST_FOR_AVX512 void StoreFirst(unsigned short* dest, __m512i units, int count) {
  _mm512_mask_storeu_epi16(dest, LowBits(count), units);
}

// Decodes the last bytes of a text, up to a block of them, or as many as give room units. Returns
// the units, or -1 when the bytes are malformed or cut off.
KEST_FOR_AVX512 inline int DecodeLast(const char* p, int bytes, unsigned int carry,
                                      unsigned short* dest, int room) {
  const unsigned int here = LowBits(bytes);
  const __m256i first = _mm256_maskz_loadu_epi8(here, p);
  const SBytes kinds(first, here, carry);
  if (!kinds.regular || !kinds.complete) return -1;
  const int count = std::min(CountBits(kinds.leads), room);
  StoreFirst(dest,
             UnitsOf(kinds, first, _mm256_maskz_loadu_epi8(here >> 1, p + 1),
                     _mm256_maskz_loadu_epi8(here >> 2, p + 2)),
             count);
  return count;
}

KEST_APART KEST_FOR_AVX512 int DecodeLong(const char* src, int length, unsigned short* dest,
                                          int size) {
  const size_t most = static_cast<size_t>(std::min(length, size));
  if (Overlap(src, static_cast<size_t>(length), dest, 2 * most)) {
    return DecodeUtf8Plain(src, length, dest, size);
  }
  int read = 0, written = 0;
  unsigned int carry = 0;
  while (length - read >= kBlock + 2) {
    const char* const p = src + read;
    const __m256i first = Load(p);
    const SBytes kinds(first, ~0u, carry);
    if (!kinds.regular) {
      SConverted done = {read + CountBits(carry), written};
      DecodeUtf8Until(read + kBlock, src, length, dest, size, done);
      if (done.written == size) return size;
      read = done.read;
      written = done.written;
      carry = 0;
      continue;
    }
    const __m512i units = UnitsOf(kinds, first, Load(p + 1), Load(p + 2));
    const int room = size - written;
    const int count = std::min(CountBits(kinds.leads), room);
    if (length - read > kWhole && room >= kBlock) {
      _mm512_storeu_si512(dest + written, units);
    } else {
      StoreFirst(dest + written, units, count);
      if (count == room) return size;
    }
    written += count;
    read += kBlock;
    carry = kinds.Carry();
  }
  if (length - read <= kBlock) {
    const int last =
        length > read ? DecodeLast(src + read, length - read, carry, dest + written, size - written)
                      : 0;
    if (last >= 0) return written + last;
  }
  SConverted done = {read + CountBits(carry), written};
  DecodeUtf8Until(length, src, length, dest, size, done);
  return done.written;
}

// A mask or pattern for 4 bytes, the first one lowest.
constexpr int Bytes(unsigned int a, unsigned int b, unsigned int c, unsigned int d) {
  return static_cast<int>(a | b << 8 | c << 16 | d << 24);
}

// From each 8 bytes of units, the 8 bits from the places that first and second say, in turn.
KEST_FOR_AVX512 __m512i Bits(__m512i units, int first, int second) {
  return _mm512_multishift_epi64_epi8(_mm512_set4_epi32(second, first, second, first), units);
}

KEST_FOR_AVX512 __m512i AndOr(__m512i vector, int mask, int pattern) {
  return _mm512_ternarylogic_epi32(vector, _mm512_set1_epi32(mask), _mm512_set1_epi32(pattern),
                                   0xEA);
}

// Sequences moved together. Of each the first byte is taken, and those with their high bit set.
KEST_FOR_AVX512 __m512i Packed(__m512i sequences, __m512i firstBytes) {
  const __mmask64 taken = _mm512_movepi8_mask(_mm512_or_si512(sequences, firstBytes));
  return _mm512_maskz_compress_epi8(taken, sequences);
}

// 32 units of up to two bytes each; longer has those of two.
KEST_FOR_AVX512 __m512i EncodeUpToTwo(__m512i units, __mmask32 longer) {
  const __m512i bits = Bits(units, Bytes(6, 0, 22, 16), Bytes(38, 32, 54, 48));
  const __m512i two = AndOr(bits, Bytes(0x1F, 0x3F, 0x1F, 0x3F), Bytes(0xC0, 0x80, 0xC0, 0x80));
  return Packed(_mm512_mask_mov_epi16(units, longer, two), _mm512_set1_epi16(0x80));
}

// 16 units; longer has those of two or three bytes, longest those of three.
KEST_FOR_AVX512 __m512i EncodeUpToThree(__m256i words, __mmask16 longer, __mmask16 longest) {
  const __m512i units = _mm512_cvtepu16_epi32(words);
  const __m512i twoBits = Bits(units, Bytes(6, 0, 24, 24), Bytes(38, 32, 56, 56));
  const __m512i threeBits = Bits(units, Bytes(12, 6, 0, 24), Bytes(44, 38, 32, 56));
  const __m512i two = AndOr(twoBits, Bytes(0x1F, 0x3F, 0, 0), Bytes(0xC0, 0x80, 0, 0));
  const __m512i three = AndOr(threeBits, Bytes(0x0F, 0x3F, 0x3F, 0), Bytes(0xE0, 0x80, 0x80, 0));
  const __m512i upToTwo = _mm512_mask_mov_epi32(units, longer, two);
  return Packed(_mm512_mask_mov_epi32(upToTwo, longest, three), _mm512_set1_epi32(0x80));
}

// The masks of what exceeds one byte and two, and the bytes that the units have beyond one each.
struct SExcess {
  __mmask32 longer, longest;

  KEST_FOR_AVX512 explicit SExcess(__m512i units)
      : longer(_mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(kLastOfOneByte))),
        longest(_mm512_cmpgt_epu16_mask(units, _mm512_set1_epi16(kLastOfTwoBytes))) {}
  KEST_FOR_AVX512 int Count() const { return CountBits(longer) + CountBits(longest); }
  KEST_FOR_AVX512 int CountOfFirstHalf() const {
    return CountBits(longer & 0xFFFF) + CountBits(longest & 0xFFFF);
  }
};

KEST_FOR_AVX512 __m512i EncodeFirstHalf(__m512i units, const SExcess& excess) {
  return EncodeUpToThree(_mm512_castsi512_si256(units), static_cast<__mmask16>(excess.longer),
                         static_cast<__mmask16>(excess.longest));
}

KEST_FOR_AVX512 __m512i EncodeSecondHalf(__m512i units, const SExcess& excess) {
  return EncodeUpToThree(_mm512_extracti64x4_epi64(units, 1),
                         static_cast<__mmask16>(excess.longer >> 16),
                         static_cast<__mmask16>(excess.longest >> 16));
}

// Encodes a block. Stores vectors whole.
KEST_FOR_AVX512 inline int EncodeBlock(__m512i units, char* dest) {
  const SExcess excess(units);
  if (excess.longer == 0) {
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(dest), _mm512_cvtepi16_epi8(units));
    return kBlock;
  }
  if (excess.longest == 0) {
    _mm512_storeu_si512(dest, EncodeUpToTwo(units, excess.longer));
  } else {
    _mm512_storeu_si512(dest, EncodeFirstHalf(units, excess));
    _mm512_storeu_si512(dest + kBlock / 2 + excess.CountOfFirstHalf(),
                        EncodeSecondHalf(units, excess));
  }
  return kBlock + excess.Count();
}

KEST_FOR_AVX512 void StoreFirst(char* dest, __m512i bytes, int count) {
  const __m512i places = _mm512_set_epi8(
      63, 62, 61, 60, 59, 58, 57, 56, 55, 54, 53, 52, 51, 50, 49, 48, 47, 46, 45, 44, 43, 42, 41,
      40, 39, 38, 37, 36, 35, 34, 33, 32, 31, 30, 29, 28, 27, 26, 25, 24, 23, 22, 21, 20, 19, 18,
      17, 16, 15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0);
  const __mmask64 first =
      _mm512_cmplt_epi8_mask(places, _mm512_set1_epi8(static_cast<char>(count)));
  _mm512_mask_storeu_epi8(dest, first, bytes);
}

// Encodes the first count units, up to a block of them, into no more than room bytes. Returns the
// bytes written, or 0 when they do not fit.
KEST_FOR_AVX512 inline int EncodePart(const unsigned short* src, int count, char* dest, int room) {
  const __m512i units = _mm512_maskz_loadu_epi16(LowBits(count), src);
  const SExcess excess(units);
  const int written = count + excess.Count();
  if (written > room) return 0;
  if (excess.longest == 0) {
    StoreFirst(dest, EncodeUpToTwo(units, excess.longer), written);
    return written;
  }
  const int half = std::min(count, kBlock / 2) + excess.CountOfFirstHalf();
  StoreFirst(dest, EncodeFirstHalf(units, excess), half);
  StoreFirst(dest + half, EncodeSecondHalf(units, excess), written - half);
  return written;
}

KEST_APART KEST_FOR_AVX512 int EncodeLong(const unsigned short* src, int length, char* dest,
                                          int size) {
  if (Overlap(src, 2 * static_cast<size_t>(length), dest, MostUtf8Bytes(length, size))) {
    return EncodeUtf8Plain(src, length, dest, size);
  }
  int read = 0, written = 0;
  for (; length - read >= kWholeUnits && size - written >= kWholeRoom; read += kBlock) {
    written += EncodeBlock(_mm512_loadu_si512(src + read), dest + written);
  }
  while (length > read) {
    const int count = std::min(length - read, kBlock);
    const int more = EncodePart(src + read, count, dest + written, size - written);
    if (more == 0) {
      SConverted done = {read, written};
      EncodeUtf8Until(length, src, dest, size, done);
      return done.written;
    }
    read += count;
    written += more;
  }
  return written;
}

}  // namespace

KEST_FOR_AVX512 KEST_REALIGN int EncodeUtf8Avx512(const unsigned short* src, int length, char* dest,
                                                  int size) {
  // Each unit takes a byte at least, so that no more than size of them are looked at.
  length = std::min(length, size);
  if (length > kBlock) return EncodeLong(src, length, dest, size);
  const int written = EncodePart(src, length, dest, size);
  return written != 0 ? written : EncodeUtf8Plain(src, length, dest, size);
}

KEST_FOR_AVX512 KEST_REALIGN int DecodeUtf8Avx512(const char* src, int length, unsigned short* dest,
                                                  int size) {
  // The same with the longest sequences.
  if (size < length && size < length / 3) length = 3 * size;
  if (length > kBlock) return DecodeLong(src, length, dest, size);
  const int written = DecodeLast(src, length, 0, dest, size);
  return written >= 0 ? written : DecodeUtf8Plain(src, length, dest, size);
}

}  // namespace KEST
