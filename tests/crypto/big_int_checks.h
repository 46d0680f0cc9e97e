// Big integers in tests: made from and shown as hexadecimal text, checked while they are shown.

#ifndef KEST_TESTS_CRYPTO_BIG_INT_CHECKS_H
#define KEST_TESTS_CRYPTO_BIG_INT_CHECKS_H

#include <gtest/gtest.h>
#include <stdio.h>
#include <string.h>

#include <string>
#include <vector>

#include "kest/crypto.h"
#include "support/random.h"
#include "support/text.h"

namespace kest_test {

using KEST::TBigInt;
using Words = std::vector<unsigned int>;  // least significant first

inline TBigInt Big(const std::string& hex) {
  return TBigInt(Units(std::u16string(hex.begin(), hex.end())));
}

inline TBigInt Big(const Words& words) {
  std::vector<unsigned char> bytes;
  for (size_t i = words.size(); i-- > 0;) {
    for (int bit = 24; bit >= 0; bit -= 8)
      bytes.push_back(static_cast<unsigned char>(words[i] >> bit));
  }
  return TBigInt(bytes.data(), static_cast<int>(bytes.size()));
}

inline Words WordsOf(const TBigInt& value) {
  return Words(value.GetWords(), value.GetWords() + value.GetLength());
}

// What holds after every operation.
inline void CheckNormalised(const TBigInt& value) {
  EXPECT_EQ(0, value.GetCapacity() % 8);
  EXPECT_EQ(value.GetCapacity() == 0, value.GetWords() == nullptr);
  ASSERT_LE(0, value.GetLength());
  ASSERT_LE(value.GetLength(), value.GetCapacity());
  EXPECT_TRUE(value.GetLength() == 0 || value.GetWords()[value.GetLength() - 1] != 0);
}

// Upper-case hexadecimal without leading zeros, made from the words.
inline std::string Shown(const TBigInt& value) {
  CheckNormalised(value);
  std::string text;
  for (int i = value.GetLength() - 1; i >= 0; --i) {
    char word[9];
    snprintf(word, sizeof(word), text.empty() ? "%X" : "%08X", value.GetWords()[i]);
    text += word;
  }
  return text.empty() ? "0" : text;
}

// A value with room for many words, as results have that were used before.
inline TBigInt Roomy(int capacity) {
  TBigInt value;
  EXPECT_TRUE(value.AdjustBuffer(capacity, false));
  for (int i = 0; i < capacity; ++i) EXPECT_EQ(0u, value.GetWords()[i]);
  value.FixLength();
  return value;
}

// Up to most words, often such as carries, borrows and quotient digits go wrong with.
inline Words RandomWords(Random& random, int most) {
  static const unsigned int kEdges[] = {0,          1,          0x7FFFFFFF, 0x80000000,
                                        0x80000001, 0xFFFFFFFE, 0xFFFFFFFF};
  Words words(static_cast<size_t>(random.Between(0, most)));
  const bool edges = random.Between(0, 1) != 0;
  for (unsigned int& word : words) {
    word = edges ? kEdges[random.Between(0, 6)] : random.Next();
  }
  return words;
}

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_BIG_INT_CHECKS_H
