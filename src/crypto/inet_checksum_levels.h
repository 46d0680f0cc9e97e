// The sum of the Internet checksum, in versions for the levels of the processor.

#ifndef KEST_SRC_CRYPTO_INET_CHECKSUM_LEVELS_H
#define KEST_SRC_CRYPTO_INET_CHECKSUM_LEVELS_H

namespace KEST {

// The sum of big-endian words of 16 bits, less its carries beyond 32 bits.
unsigned int SumOfWordsPlain(const unsigned char* data, unsigned int words);
unsigned int SumOfWordsSse2(const unsigned char* data, unsigned int words);
unsigned int SumOfWordsAvx2(const unsigned char* data, unsigned int words);
unsigned int SumOfWordsAvx512(const unsigned char* data, unsigned int words);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_INET_CHECKSUM_LEVELS_H
