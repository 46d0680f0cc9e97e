#include "crypto/big_int_words.h"

#include <limits.h>
#include <string.h>

#include "cpu/dispatch.h"
#include "crypto/big_int_words_levels.h"
#include "crypto/wipe.h"
#include "frame/object.h"

namespace KEST {

namespace {

constexpr DoubleWord kMaxWord = UINT_MAX;

DoubleWord Join(Word high, Word low) { return static_cast<DoubleWord>(high) << kWordBits | low; }

// The quotient of u's top count + 1 words by v, at most one too large. u points at the lowest of
// them, and they are below v << 32.
Word EstimateDigit(const Word* u, const Word* v, int count) {
  const DoubleWord top = Join(u[count], u[count - 1]);
  DoubleWord digit = top / v[count - 1];
  if (count == 1) return static_cast<Word>(digit);
  DoubleWord rest = top - digit * v[count - 1];
  while (digit > kMaxWord || digit * v[count - 2] > (rest << kWordBits | u[count - 2])) {
    --digit;
    rest += v[count - 1];
    if (rest > kMaxWord) break;
  }
  return static_cast<Word>(digit);
}

}  // namespace

WorkBlock::WorkBlock(DoubleWord count) : words(nullptr), size(0) {
  if (count > UINT_MAX / kWordBytes) return;
  size = static_cast<unsigned int>(count) * kWordBytes;
  words = static_cast<Word*>(KestMemAlloc(size));
}

WorkBlock::~WorkBlock() { Free(); }

void WorkBlock::Free() {
  if (words == nullptr) return;
  Wipe(words, size);
  KestMemFree(words);
  words = nullptr;
}

int SignificantWords(const Word* words, int count) {
  while (count > 0 && words[count - 1] == 0) --count;
  return count;
}

int CompareWords(const Word* a, const Word* b, int count) {
  for (int i = count - 1; i >= 0; --i) {
    if (a[i] != b[i]) return a[i] > b[i] ? 1 : -1;
  }
  return 0;
}

// What comes from the next word is shifted in two parts, for 0 bits would ask for a shift by the
// whole width of a word.
Word ShiftWordsLeft(Word* r, const Word* a, int count, int bits) {
  const int rest = kWordBits - 1 - bits;
  Word below = 0;
  for (int i = 0; i < count; ++i) {
    const Word word = a[i];
    r[i] = word << bits | below >> 1 >> rest;
    below = word;
  }
  return below >> 1 >> rest;
}

void ShiftWordsRight(Word* r, const Word* a, int count, int bits) {
  const int rest = kWordBits - 1 - bits;
  Word above = 0;
  for (int i = count - 1; i >= 0; --i) {
    const Word word = a[i];
    r[i] = word >> bits | above << 1 << rest;
    above = word;
  }
}

Word SubtractWords(Word* r, const Word* a, const Word* b, int count) {
  Word borrow = 0;
  for (int i = 0; i < count; ++i) {
    const DoubleWord difference = static_cast<DoubleWord>(a[i]) - b[i] - borrow;
    r[i] = static_cast<Word>(difference);
    borrow = static_cast<Word>(difference >> kWordBits) & 1;
  }
  return borrow;
}

// A product of two words leaves room for two more to be added: (2^32 - 1)^2 + 2 * (2^32 - 1) is
// 2^64 - 1.
Word AddProduct(Word* r, const Word* a, int count, Word factor) {
  DoubleWord carry = 0;
  for (int i = 0; i < count; ++i) {
    carry += static_cast<DoubleWord>(a[i]) * factor + r[i];
    r[i] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  return static_cast<Word>(carry);
}

Word SubtractProduct(Word* r, const Word* a, int count, Word factor) {
  DoubleWord carry = 0;
  for (int i = 0; i < count; ++i) {
    carry += static_cast<DoubleWord>(a[i]) * factor;
    const Word low = static_cast<Word>(carry);
    carry = (carry >> kWordBits) + (r[i] < low ? 1 : 0);
    r[i] -= low;
  }
  return static_cast<Word>(carry);
}

void MultiplyWordsPlain(Word* r, const Word* a, int aCount, const Word* b, int bCount) {
  memset(r, 0, static_cast<size_t>(bCount) * kWordBytes);
  for (int i = 0; i < aCount; ++i) r[i + bCount] = AddProduct(r + i, b, bCount, a[i]);
}

Word AddWords(Word* r, const Word* a, int count) {
  DoubleWord carry = 0;
  for (int i = 0; i < count; ++i) {
    carry += static_cast<DoubleWord>(r[i]) + a[i];
    r[i] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  return static_cast<Word>(carry);
}

void AddWordsAt(Word* r, const Word* a, int count) {
  bool carry = AddWords(r, a, count) != 0;
  for (; carry; ++count) carry = ++r[count] == 0;
}

// Algorithm D of Knuth, The Art of Computer Programming, volume 2, section 4.3.1.
void DivideWordsPlain(Word* q, Word* u, int uCount, const Word* v, int vCount) {
  for (int j = uCount - vCount - 1; j >= 0; --j) {
    Word& top = u[j + vCount];
    Word digit = EstimateDigit(u + j, v, vCount);
    const bool tooLarge = SubtractProduct(u + j, v, vCount, digit) > top;
    if (tooLarge) {
      --digit;
      AddWords(u + j, v, vCount);
    }
    top = 0;
    if (q != nullptr) q[j] = digit;
  }
}

namespace {

constexpr SVersions<void(Word*, const Word*, int, const Word*, int)> kMultiplyWords = {
    MultiplyWordsPlain, MultiplyWordsSse2, nullptr, MultiplyWordsAvx2, MultiplyWordsAvx512};
constexpr TDispatch<kMultiplyWords> DispatchMultiply;

constexpr SVersions<void(Word*, Word*, int, const Word*, int)> kDivideWords = {
    DivideWordsPlain, nullptr, nullptr, nullptr, DivideWordsAvx512};
constexpr TDispatch<kDivideWords> DispatchDivide;

}  // namespace

void MultiplyWords(Word* r, const Word* a, int aCount, const Word* b, int bCount) {
  DispatchMultiply(r, a, aCount, b, bCount);
}

void DivideWords(Word* q, Word* u, int uCount, const Word* v, int vCount) {
  DispatchDivide(q, u, uCount, v, vCount);
}

// TBigInt hands its words out for reading alone; AdjustBuffer made them this object's to write.
bool StoreWords(TBigInt& r, const Word* words, int count) {
  count = SignificantWords(words, count);
  if (!r.AdjustBuffer(count, false)) return false;
  if (count != 0) {
    memcpy(const_cast<Word*>(r.GetWords()), words, static_cast<size_t>(count) * kWordBytes);
  }
  return true;
}

}  // namespace KEST
