// 32-bit words in a fixed byte order, whatever the machine's own is, and their rotation. Written
// as shifts, which compilers turn into one load or store and need no alignment.

#ifndef KEST_SRC_CRYPTO_WORDS_H
#define KEST_SRC_CRYPTO_WORDS_H

namespace KEST {

inline unsigned int LoadLittleEndian(const unsigned char* bytes) {
  return bytes[0] | static_cast<unsigned int>(bytes[1]) << 8 |
         static_cast<unsigned int>(bytes[2]) << 16 | static_cast<unsigned int>(bytes[3]) << 24;
}

inline unsigned int LoadBigEndian(const unsigned char* bytes) {
  return static_cast<unsigned int>(bytes[0]) << 24 | static_cast<unsigned int>(bytes[1]) << 16 |
         static_cast<unsigned int>(bytes[2]) << 8 | bytes[3];
}

inline void StoreLittleEndian(unsigned char* bytes, unsigned int word) {
  bytes[0] = static_cast<unsigned char>(word);
  bytes[1] = static_cast<unsigned char>(word >> 8);
  bytes[2] = static_cast<unsigned char>(word >> 16);
  bytes[3] = static_cast<unsigned char>(word >> 24);
}

inline void StoreBigEndian(unsigned char* bytes, unsigned int word) {
  bytes[0] = static_cast<unsigned char>(word >> 24);
  bytes[1] = static_cast<unsigned char>(word >> 16);
  bytes[2] = static_cast<unsigned char>(word >> 8);
  bytes[3] = static_cast<unsigned char>(word);
}

// count is 1 to 31.
constexpr unsigned int RotateLeft(unsigned int word, int count) {
  return word << count | word >> (32 - count);
}

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_WORDS_H
