// Arithmetic on arrays of 32-bit words, least significant word first: what TBigInt is made of.
//
// Lengths count words. Unless a function says otherwise, the array it writes is none of those it
// reads. Nothing here allocates, save WorkBlock and StoreWords.

#ifndef KEST_SRC_CRYPTO_BIG_INT_WORDS_H
#define KEST_SRC_CRYPTO_BIG_INT_WORDS_H

#include "kest/crypto.h"

namespace KEST {

using Word = unsigned int;
using DoubleWord = unsigned long long;
constexpr int kWordBits = 32;
constexpr int kWordBytes = 4;

// Uninitialised words for intermediate values, which may be secret: wiped before they are freed.
class WorkBlock {
 public:
  explicit WorkBlock(DoubleWord count);
  ~WorkBlock();
  WorkBlock(const WorkBlock&) = delete;
  WorkBlock& operator=(const WorkBlock&) = delete;

  // Null when there is no memory.
  Word* Get() const { return words; }

  // Before its time.
  void Free();

 private:
  Word* words;
  unsigned int size;
};

// count without the zero words at the top.
int SignificantWords(const Word* words, int count);

// -1, 0 or 1.
int CompareWords(const Word* a, const Word* b, int count);

// r = a << bits and r = a >> bits, bits being 0 to 31. r may be a. Left returns what is shifted
// out.
Word ShiftWordsLeft(Word* r, const Word* a, int count, int bits);
void ShiftWordsRight(Word* r, const Word* a, int count, int bits);

// r += a; returns the carry.
Word AddWords(Word* r, const Word* a, int count);

// r += a, r being the bottom of a longer number that takes the carry.
void AddWordsAt(Word* r, const Word* a, int count);

// r = a - b; returns the borrow. r may be a or b.
Word SubtractWords(Word* r, const Word* a, const Word* b, int count);

// r += a * factor and r -= a * factor; return the word carried out or borrowed.
Word AddProduct(Word* r, const Word* a, int count, Word factor);
Word SubtractProduct(Word* r, const Word* a, int count, Word factor);

// r, of aCount + bCount words, = a * b. a may be b.
void MultiplyWords(Word* r, const Word* a, int aCount, const Word* b, int bCount);

// Divides u by v, leaving the remainder in u. The top bit of v is set, the top word of u is below
// v's, and u is at least as long as v. q gets uCount - vCount words, or may be null.
void DivideWords(Word* q, Word* u, int uCount, const Word* v, int vCount);

// Makes r hold these words, normalised. False, r as it was, when there is no memory.
bool StoreWords(TBigInt& r, const Word* words, int count);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BIG_INT_WORDS_H
