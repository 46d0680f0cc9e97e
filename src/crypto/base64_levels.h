// The bulk of base64, in versions for the levels of the processor: whole groups of 3 bytes and 4
// letters, without padding.

#ifndef KEST_SRC_CRYPTO_BASE64_LEVELS_H
#define KEST_SRC_CRYPTO_BASE64_LEVELS_H

namespace KEST {

constexpr char kBase64Alphabet[] =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Writes 4 units for each 3 bytes. The two places do not overlap.
void EncodeGroupsPlain(const unsigned char* data, int groups, unsigned short* text);
void EncodeGroupsSsse3(const unsigned char* data, int groups, unsigned short* text);
void EncodeGroupsAvx2(const unsigned char* data, int groups, unsigned short* text);
void EncodeGroupsAvx512(const unsigned char* data, int groups, unsigned short* text);

// Decodes groups of letters up to the first that has anything else, and writes nothing behind them.
// Returns how many they are. All the groups can be read, those behind the terminator too.
int DecodeGroupsPlain(const unsigned short* text, int groups, unsigned char* out);
int DecodeGroupsSsse3(const unsigned short* text, int groups, unsigned char* out);
int DecodeGroupsAvx2(const unsigned short* text, int groups, unsigned char* out);
int DecodeGroupsAvx512(const unsigned short* text, int groups, unsigned char* out);

}  // namespace KEST

#endif  // KEST_SRC_CRYPTO_BASE64_LEVELS_H
