#include "crypto/big_int_limbs_avx512.h"
#include "crypto/big_int_residues.h"
#include "crypto/wipe.h"

namespace KEST {

namespace {

constexpr int kLimbs = kColumnLimbs;
constexpr int kWords = kColumnWords;
// Each step adds eight halves of products to a lane, which has room for 2^12 of them.
constexpr int kStepsBetweenCarries = 256;

// A number is held three times, as it is and moved up by one and two lanes, which is where the
// upper half of a product belongs, and what is multiplied by the second limb of a step.
struct SColumn {
  unsigned long long sum[kLimbs];  // first, for there is one after the last column
  unsigned long long number[3][kLimbs];
  unsigned long long factor[3][kLimbs];
};

SColumn* Columns(const SResidue& r) { return static_cast<SColumn*>(r.columns); }

KEST_FOR_AVX512 inline __m512i Load(const unsigned long long* lanes) {
  return _mm512_load_si512(lanes);
}

// Made on the spot: zeros kept in a register would push what matters out of the eight there are.
KEST_FOR_AVX512 inline __m512i Zero() {
  __m512i zero;
  __asm__ __volatile__("vpxor %x0, %x0, %x0" : "=x"(zero));
  return zero;
}

KEST_FOR_AVX512 inline void StoreThrice(unsigned long long (*lanes)[kLimbs], __m512i limbs,
                                        __m512i before) {
  _mm512_store_si512(lanes[0], limbs);
  _mm512_store_si512(lanes[1], MoveUp<1>(limbs, before));
  _mm512_store_si512(lanes[2], MoveUp<2>(limbs, before));
}

KEST_FOR_AVX512 KEST_REALIGN void SetFactor(const SResidue& r, const Word* f, int count) {
  SColumn* columns = Columns(r);
  __m512i before = _mm512_setzero_si512();
  for (int j = 0; j < r.columnCount; ++j) {
    const __m512i limbs = UnpackColumn(f + j * kWords, count - j * kWords);
    StoreThrice(columns[j].factor, limbs, before);
    before = limbs;
  }
}

KEST_FOR_AVX512 KEST_REALIGN void Unpack(const SResidue& r, const Word* packed) {
  SColumn* columns = Columns(r);
  __m512i before = _mm512_setzero_si512();
  for (int j = 0; j < r.columnCount; ++j) {
    const __m512i limbs = UnpackColumn(packed + j * kWords, r.words - j * kWords);
    StoreThrice(columns[j].number, limbs, before);
    before = limbs;
  }
}

KEST_FOR_AVX512 KEST_REALIGN void Pack(Word* packed, const SResidue& r) {
  const SColumn* columns = Columns(r);
  for (int j = 0; j < r.columnCount; ++j) {
    PackColumn(packed + j * kWords, r.words - j * kWords, Load(columns[j].number[0]));
  }
}

KEST_FOR_AVX512 void CarrySums(SColumn* columns, int count) {
  __m512i carried = _mm512_setzero_si512();
  for (int j = 0; j < count; ++j) {
    _mm512_store_si512(columns[j].sum, Carry<kLimbBits>(Load(columns[j].sum), carried));
  }
}

// The number becomes the sum, with every limb below 2^52.
KEST_FOR_AVX512 void TakeSum(SColumn* columns, int count) {
  __m512i carried = _mm512_setzero_si512(), before = carried;
  unsigned int carry = 0;
  for (int j = 0; j < count; ++j) {
    const __m512i limbs = Settle<kLimbBits>(Carry<kLimbBits>(Load(columns[j].sum), carried), carry);
    StoreThrice(columns[j].number, limbs, before);
    before = limbs;
  }
}

// sum += numbers[0] * low + numbers at the next lane * high, in products' halves.
KEST_FOR_AVX512 inline __m512i AddProducts(__m512i sum, const unsigned long long (*numbers)[kLimbs],
                                           __m512i low, __m512i high) {
  sum = _mm512_madd52lo_epu64(sum, low, Load(numbers[0]));
  sum = _mm512_madd52hi_epu64(sum, low, Load(numbers[1]));
  sum = _mm512_madd52lo_epu64(sum, high, Load(numbers[1]));
  return _mm512_madd52hi_epu64(sum, high, Load(numbers[2]));
}

// sum = sum / 2^104 + number * (low, high), modulo m. first is the sum of the first column.
KEST_FOR_AVX512 inline __m512i Step(SColumn* columns, int count, __m512i first, __m512i low,
                                    __m512i high) {
  const SColumn* const end = columns + count;
  const __m512i products = AddProducts(Zero(), columns->number, low, high);
  __m512i next = Load(columns[1].sum);
  __m512i sum = _mm512_alignr_epi64(next, first, 2);
  // The lowest two limbs; the multiplication takes no more than their 52 bits.
  const __m512i q0 = _mm512_broadcastq_epi64(_mm512_castsi512_si128(first));
  const __m512i q1 = _mm512_add_epi64(_mm512_permutexvar_epi64(_mm512_set1_epi64(1), first),
                                      _mm512_srli_epi64(q0, kLimbBits));
  sum = _mm512_mask_add_epi64(sum, 1, sum, _mm512_srli_epi64(q1, kLimbBits));
  sum = _mm512_add_epi64(sum, products);
  // The next step waits for this: two short sums instead of a long one.
  sum = _mm512_madd52lo_epu64(sum, q1, Load(columns->factor[1]));
  __m512i other = _mm512_madd52lo_epu64(Zero(), q0, Load(columns->factor[0]));
  other = _mm512_madd52hi_epu64(other, q0, Load(columns->factor[1]));
  other = _mm512_madd52hi_epu64(other, q1, Load(columns->factor[2]));
  first = _mm512_add_epi64(sum, other);
  for (SColumn* column = columns + 1; column != end; ++column) {
    sum = next;
    next = Load(column[1].sum);
    sum = _mm512_alignr_epi64(next, sum, 2);
    sum = _mm512_add_epi64(sum, AddProducts(Zero(), column->number, low, high));
    __asm__("" : "+x"(sum));  // before the next: both at once would take one vector too many
    sum = _mm512_add_epi64(sum, AddProducts(Zero(), column->factor, q0, q1));
    _mm512_store_si512(column->sum, sum);
  }
  return first;
}

KEST_FOR_AVX512 KEST_REALIGN void Multiply(const SResidue& r, const Word* packed) {
  SColumn* columns = Columns(r);
  const int count = r.columnCount;
  for (int j = 0; j <= count; ++j) _mm512_store_si512(columns[j].sum, _mm512_setzero_si512());
  alignas(kResidueAlignment) unsigned long long limbs[kLimbs];
  __m512i first = _mm512_setzero_si512();
  // One step more than there are limbs: a limb is multiplied in one and reduced in the next.
  for (int step = 0; step <= r.steps; ++step) {
    const int column = step / (kLimbs / 2), at = step % (kLimbs / 2) * 2;
    if (at == 0) {
      _mm512_store_si512(limbs, packed == nullptr ? Load(columns[column].number[0])
                                                  : UnpackColumn(packed + column * kWords,
                                                                 r.words - column * kWords));
    }
    if (step % kStepsBetweenCarries == kStepsBetweenCarries - 1) {
      _mm512_store_si512(columns->sum, first);
      CarrySums(columns, count);
      first = Load(columns->sum);
    }
    first = Step(columns, count, first, _mm512_set1_epi64(static_cast<long long>(limbs[at])),
                 _mm512_set1_epi64(static_cast<long long>(limbs[at + 1])));
  }
  _mm512_store_si512(columns->sum, first);
  TakeSum(columns, count);
  Wipe(limbs, sizeof limbs);
}

constexpr SResidueLevel kLevel = {kLimbBits, kLimbs, sizeof(SColumn), SetFactor,
                                  Unpack,    Pack,   Multiply};

}  // namespace

const SResidueLevel* ResiduesAvx512() { return &kLevel; }

}  // namespace KEST
