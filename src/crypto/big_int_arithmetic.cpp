// The four operations and the shifts of TBigInt. A result may be one of its operands throughout.

#include <string.h>
#include <algorithm>

#include "crypto/big_int_words.h"
#include "kest/crypto.h"

namespace KEST {

namespace {

// A word of a value, 0 above its top. Lengths are passed because making room in a result that is
// an operand too changes the operand's.
Word WordAt(const Word* words, int length, int index) { return index < length ? words[index] : 0; }

}  // namespace

bool TBigInt::Add(TBigInt& r, const TBigInt& a, const TBigInt& b) {
  const int aLength = a.length, bLength = b.length;
  const int count = std::max(aLength, bLength);
  if (!r.AdjustBuffer(count + 1, &r == &a || &r == &b)) return false;
  DoubleWord carry = 0;
  for (int i = 0; i < count; ++i) {
    carry += static_cast<DoubleWord>(WordAt(a.words, aLength, i)) + WordAt(b.words, bLength, i);
    r.words[i] = static_cast<Word>(carry);
    carry >>= kWordBits;
  }
  r.words[count] = static_cast<Word>(carry);
  r.FixLength();
  return true;
}

// When a is below b, the difference wraps at the longer length, and its top word loses the borrow
// once more, on purpose.
bool TBigInt::Sub(TBigInt& r, const TBigInt& a, const TBigInt& b) {
  const int aLength = a.length, bLength = b.length;
  const int count = std::max(aLength, bLength);
  if (!r.AdjustBuffer(count, &r == &a || &r == &b)) return false;
  if (count == 0) return true;
  Word borrow = 0;
  for (int i = 0; i < count; ++i) {
    const DoubleWord difference =
        static_cast<DoubleWord>(WordAt(a.words, aLength, i)) - WordAt(b.words, bLength, i) - borrow;
    r.words[i] = static_cast<Word>(difference);
    borrow = static_cast<Word>(difference >> kWordBits) & 1;
  }
  r.words[count - 1] -= borrow;
  r.FixLength();
  return true;
}

bool TBigInt::Mul(TBigInt& r, const TBigInt& a, const TBigInt& b) {
  if (&r == &a || &r == &b) {
    TBigInt product;
    return Mul(product, a, b) && StoreWords(r, product.words, product.length);
  }
  if (!r.AdjustBuffer(a.length + b.length, false)) return false;
  if (r.length != 0) MultiplyWords(r.words, a.words, a.length, b.words, b.length);
  r.FixLength();
  return true;
}

// Works on copies shifted so that the top bit of the divisor is set, as the division wants them.
bool TBigInt::Div(TBigInt& q, TBigInt& rem, const TBigInt& a, const TBigInt& d) {
  const int aLength = SignificantWords(a.words, a.length);
  const int dLength = SignificantWords(d.words, d.length);
  if (dLength == 0) return false;
  const WorkBlock block(static_cast<DoubleWord>(aLength) + 1 + static_cast<DoubleWord>(dLength));
  if (block.Get() == nullptr) return false;
  Word* dividend = block.Get();
  Word* divisor = dividend + aLength + 1;
  const int shift = kWordBits - WordBits(d.words[dLength - 1]);
  dividend[aLength] = ShiftWordsLeft(dividend, a.words, aLength, shift);
  ShiftWordsLeft(divisor, d.words, dLength, shift);

  const int count = std::max(aLength + 1 - dLength, 0);
  if (!q.AdjustBuffer(count, false)) return false;
  if (count != 0) DivideWords(q.words, dividend, aLength + 1, divisor, dLength);
  q.FixLength();
  ShiftWordsRight(dividend, dividend, aLength + 1, shift);
  return StoreWords(rem, dividend, aLength + 1);
}

bool TBigInt::MulMod(TBigInt& r, const TBigInt& a, const TBigInt& b, const TBigInt& m) {
  TBigInt product, quotient;
  return Mul(product, a, b) && Div(quotient, r, product, m);
}

// From the top down, so that no word of an operand that is the result is lost before it is read.
bool TBigInt::Shl(TBigInt& r, const TBigInt& a, int bits) {
  if (bits < 0) return false;
  const int shift = bits / kWordBits, rest = bits % kWordBits;
  const int aLength = a.length;
  if (!r.AdjustBuffer(aLength + shift + 1, &r == &a)) return false;
  for (int i = aLength; i >= 0; --i) {
    const Word high = WordAt(a.words, aLength, i), low = i != 0 ? a.words[i - 1] : 0;
    const DoubleWord both = static_cast<DoubleWord>(high) << kWordBits | low;
    r.words[i + shift] = static_cast<Word>(both << rest >> kWordBits);
  }
  memset(r.words, 0, static_cast<size_t>(shift) * kWordBytes);
  r.FixLength();
  return true;
}

bool TBigInt::Shr(TBigInt& r, const TBigInt& a, int bits) {
  if (bits < 0) return false;
  const int shift = bits / kWordBits, rest = bits % kWordBits;
  const int aLength = a.length;
  const int count = std::max(aLength - shift, 0);
  if (!r.AdjustBuffer(count, &r == &a)) return false;
  for (int i = 0; i < count; ++i) {
    const Word high = WordAt(a.words, aLength, i + shift + 1), low = a.words[i + shift];
    const DoubleWord both = static_cast<DoubleWord>(high) << kWordBits | low;
    r.words[i] = static_cast<Word>(both >> rest);
  }
  r.FixLength();
  return true;
}

}  // namespace KEST
