// The versions of the slower functions on words.

#ifndef KEST_SRC_CRYPTO_BIG_INT_WORDS_LEVELS_H
#define KEST_SRC_CRYPTO_BIG_INT_WORDS_LEVELS_H

#include "crypto/big_int_words.h"

namespace KEST {

void MultiplyWordsPlain(Word* r, const Word* a, int aCount, const Word* b, int bCount);
void MultiplyWordsSse2(Word* r, const Word* a, int aCount, const Word* b, int bCount);
void MultiplyWordsAvx2(Word* r, const Word* a, int aCount, const Word* b, int bCount);
void MultiplyWordsAvx512(Word* r, const Word* a, int aCount, const Word* b, int bCount);

void DivideWordsPlain(Word* q, Word* u, int uCount, const Word* v, int vCount);
void DivideWordsAvx512(Word* q, Word* u, int uCount, const Word* v, int vCount);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BIG_INT_WORDS_LEVELS_H
