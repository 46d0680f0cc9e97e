#include "kest/crypto.h"

#include <limits.h>
#include <string.h>

#include "crypto/big_int_words.h"
#include "crypto/wipe.h"
#include "crypto/words.h"
#include "frame/layout.h"
#include "frame/object.h"

namespace KEST {

namespace {

KEST_SIZE_IS(TBigInt, 12, 16);

// Words are allocated in steps of this many.
constexpr int kStep = 8;

int DivideUp(int value, int divisor) { return value / divisor + (value % divisor != 0 ? 1 : 0); }

// Values may be secret.
void Release(Word* words, int capacity) {
  if (words == nullptr) return;
  Wipe(words, static_cast<size_t>(capacity) * kWordBytes);
  KestMemFree(words);
}

}  // namespace

TBigInt::TBigInt() : words(nullptr), length(0), capacity(0) {}

TBigInt::TBigInt(const TBigInt& other) : TBigInt() { *this = other; }

TBigInt::TBigInt(int value) : TBigInt() {
  const Word word = static_cast<Word>(value);
  StoreWords(*this, &word, 1);
}

TBigInt::TBigInt(const unsigned char* bytes, int len) : TBigInt() {
  if (len <= 0 || !AdjustBuffer(DivideUp(len, kWordBytes), false)) return;
  for (int i = 0; i < len; ++i) {
    words[i / kWordBytes] |= static_cast<Word>(bytes[len - 1 - i]) << (8 * (i % kWordBytes));
  }
  FixLength();
}

TBigInt::~TBigInt() { Release(words, capacity); }

TBigInt& TBigInt::operator=(const TBigInt& other) {
  if (this == &other || !AdjustBuffer(other.length, false)) return *this;
  if (length != 0) memcpy(words, other.words, static_cast<size_t>(length) * kWordBytes);
  return *this;
}

int TBigInt::ToInt() const { return length != 0 ? static_cast<int>(words[0]) : 0; }

// The loop ends at the length of the value and not at that of the buffer, on purpose: with 4 bytes
// to spare or more, words are left out at the top and bytes not written at the end.
int TBigInt::Dump(unsigned char* buf, int size) const {
  if (size < 0 || length > size / kWordBytes) return 0;
  const int bytes = length * kWordBytes;
  const int spare = size - bytes;
  if (spare != 0) memset(buf, 0, static_cast<size_t>(spare));
  for (int p = spare; p < bytes; p += kWordBytes) {
    StoreBigEndian(buf + p, words[length - 1 - p / kWordBytes]);
  }
  return bytes;
}

int TBigInt::Cmp(const TBigInt& a, const TBigInt& b) {
  if (a.length != b.length) return a.length - b.length;
  return CompareWords(a.words, b.words, a.length);
}

bool TBigInt::AdjustBuffer(int count, bool keep) {
  KEST_FIELD_AT(TBigInt, words, 0, 0);
  KEST_FIELD_AT(TBigInt, length, 4, 8);
  KEST_FIELD_AT(TBigInt, capacity, 8, 12);
  if (count < 0) return false;
  const int kept = keep ? length : 0;
  if (count > capacity) {
    const unsigned int grown = static_cast<unsigned int>(DivideUp(count, kStep)) * kStep;
    Word* block = static_cast<Word*>(AllocateArray(grown, kWordBytes));
    if (block == nullptr) return false;
    if (kept != 0) memcpy(block, words, static_cast<size_t>(kept) * kWordBytes);
    memset(block + kept, 0, static_cast<size_t>(count - kept) * kWordBytes);
    Release(words, capacity);
    words = block;
    capacity = static_cast<int>(grown);
  } else if (!keep && count != 0) {
    memset(words, 0, static_cast<size_t>(count) * kWordBytes);
  }
  length = count;
  return true;
}

void TBigInt::FixLength() { length = SignificantWords(words, length); }

unsigned int TBigInt::WordMul(unsigned int& high, unsigned int a, unsigned int b) {
  const DoubleWord product = static_cast<DoubleWord>(a) * b;
  high = static_cast<Word>(product >> kWordBits);
  return static_cast<Word>(product);
}

unsigned int TBigInt::WordDiv(unsigned int low, unsigned int high, unsigned int d) {
  if (d == 0) return 0;
  return static_cast<Word>((static_cast<DoubleWord>(high) << kWordBits | low) / d);
}

int TBigInt::WordBits(unsigned int w) { return w != 0 ? kWordBits - __builtin_clz(w) : 0; }

}  // namespace KEST
