// Base64 by lookups in 16 bytes, for vectors that look up no more: the alphabet is five ranges, and
// in each one a letter and its value lie a fixed distance apart.

#ifndef KEST_SRC_CRYPTO_BASE64_RANGES_H
#define KEST_SRC_CRYPTO_BASE64_RANGES_H

namespace KEST {

struct alignas(16) SLookup {
  signed char of[16];
};

// Encoding. Each dword gets the second byte of a group, the first, the third, and the second again.
constexpr SLookup kSpreadGroups = {{1, 0, 2, 1, 4, 3, 5, 4, 7, 6, 8, 7, 10, 9, 11, 10}};
// Of these, the bits of the first and the third value, and the factors that move them down by 10
// and 6 in a high product; the bits of the second and the fourth, and those that move them up by 4
// and 8.
constexpr int kOddValues = 0x0FC0FC00, kMoveDown = 0x04000040;
constexpr int kEvenValues = 0x003F03F0, kMoveUp = 0x01000010;

// From a value to its letter: 0 is the range of capitals, 1 of small letters, 2 to 11 are those of
// the digits, 12 and 13 the two others. The number is the value less 51, but not below 0, and one
// more from 26 on.
constexpr int kLastCapital = 25, kLastLetter = 51;
constexpr signed char kToDigit = '0' - 52;
constexpr SLookup kToLetters = {{'A', 'a' - 26, kToDigit, kToDigit, kToDigit, kToDigit, kToDigit,
                                 kToDigit, kToDigit, kToDigit, kToDigit, kToDigit, '+' - 62,
                                 '/' - 63}};

// Decoding. The code table has rows of 16. Each row is of a kind, and each column lacks letters in
// rows of some kinds.
constexpr SLookup kKindOfRow = {{16, 16, 1, 2, 4, 8, 4, 8, 16, 16, 16, 16, 16, 16, 16, 16}};
constexpr SLookup kLackOfColumn = {
    {21, 17, 17, 17, 17, 17, 17, 17, 17, 17, 19, 26, 27, 27, 27, 26}};
// From a letter to its value, by its row; "/", in a row with "+", has the row before.
constexpr SLookup kToValues = {{0, 63 - '/', 62 - '+', 52 - '0', -'A', -'A', 26 - 'a', 26 - 'a'}};
// Factors that join two values, and two of those pairs.
constexpr short kJoinValues = 0x0140;
constexpr int kJoinPairs = 0x00011000;
// The three bytes of each dword, the highest first.
constexpr SLookup kDenseGroups = {{2, 1, 0, 6, 5, 4, 10, 9, 8, 14, 13, 12, -1, -1, -1, -1}};

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BASE64_RANGES_H
