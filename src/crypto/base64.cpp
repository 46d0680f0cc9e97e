// Base64, RFC 4648 section 4, between bytes and 16-bit text.

#include "kest/digest.h"

#include <limits.h>
#include <stddef.h>
#include <stdint.h>

#include <algorithm>

#include "cpu/dispatch.h"
#include "crypto/base64_levels.h"
#include "string/overlap.h"

namespace KEST {

namespace {

constexpr unsigned short kPad = '=';
constexpr int kNoIndex = -1;

struct SIndexes {
  signed char of[256];
};

constexpr SIndexes MakeIndexes() {
  SIndexes indexes = {};
  for (signed char& index : indexes.of) index = kNoIndex;
  for (int i = 0; i < 64; ++i) {
    indexes.of[static_cast<unsigned char>(kBase64Alphabet[i])] = static_cast<signed char>(i);
  }
  return indexes;
}

constexpr SIndexes kIndexes = MakeIndexes();

int IndexOf(unsigned short unit) { return unit < 256 ? kIndexes.of[unit] : kNoIndex; }

// The character for the lowest 6 bits.
unsigned short CharacterFor(unsigned int bits) {
  return static_cast<unsigned char>(kBase64Alphabet[bits & 63]);
}

unsigned int Group(unsigned int first, unsigned int second, unsigned int third) {
  return first << 16 | second << 8 | third;
}

// The lowest count bytes of value, 1 to 3, the highest first.
void WriteBytes(unsigned int value, int count, unsigned char* out) {
  if (count == 3) *out++ = static_cast<unsigned char>(value >> 16);
  if (count >= 2) *out++ = static_cast<unsigned char>(value >> 8);
  *out = static_cast<unsigned char>(value);
}

// The last group, of one byte or two.
void EncodeRest(const unsigned char* data, int length, unsigned short* text) {
  const unsigned int bits = Group(data[0], length == 2 ? data[1] : 0u, 0);
  text[0] = CharacterFor(bits >> 18);
  text[1] = CharacterFor(bits >> 12);
  text[2] = length == 2 ? CharacterFor(bits >> 6) : kPad;
  text[3] = kPad;
}

// Reads a group of 4 units, and none past the first that does not fit. Returns the bytes that it
// stands for, 1 to 3, which are the lowest of value, or 0. A letter may follow a "=", on purpose.
int DecodeGroup(const unsigned short* text, unsigned int& value) {
  int bytes = 3;
  value = 0;
  for (int count = 0; count < 4; ++count) {
    const int index = IndexOf(text[count]);
    if (index != kNoIndex) {
      value = value << 6 | static_cast<unsigned int>(index);
    } else if (text[count] == kPad && count >= 2) {
      value >>= 2;
      --bytes;
    } else {
      return 0;
    }
  }
  return bytes;
}

constexpr SVersions<void(const unsigned char*, int, unsigned short*)> kEncodeGroups = {
    EncodeGroupsPlain, nullptr, EncodeGroupsSsse3, EncodeGroupsAvx2, EncodeGroupsAvx512};
constexpr TDispatch<kEncodeGroups> EncodeGroupsBest;

constexpr SVersions<int(const unsigned short*, int, unsigned char*)> kDecodeGroups = {
    DecodeGroupsPlain, nullptr, DecodeGroupsSsse3, DecodeGroupsAvx2, DecodeGroupsAvx512};
constexpr TDispatch<kDecodeGroups> DecodeGroupsBest;

void EncodeGroups(const unsigned char* data, int groups, unsigned short* text) {
  const size_t count = static_cast<size_t>(groups);
  if (Overlap(data, 3 * count, text, 8 * count)) {
    EncodeGroupsPlain(data, groups, text);
  } else {
    EncodeGroupsBest(data, groups, text);
  }
}

// The whole groups of a text that lie in its first page, where a terminator may come at any time.
int GroupsInPage(const unsigned short* text) {
  constexpr uintptr_t kPageBytes = 4096;
  const uintptr_t bytes = kPageBytes - reinterpret_cast<uintptr_t>(text) % kPageBytes;
  return static_cast<int>(bytes / (4 * sizeof(unsigned short)));
}

// The groups of letters that room bytes hold.
int GroupsInRoom(int room) { return std::max(room, 0) / 3; }

}  // namespace

void EncodeGroupsPlain(const unsigned char* data, int groups, unsigned short* text) {
  for (; groups > 0; data += 3, text += 4, --groups) {
    const unsigned int bits = Group(data[0], data[1], data[2]);
    text[0] = CharacterFor(bits >> 18);
    text[1] = CharacterFor(bits >> 12);
    text[2] = CharacterFor(bits >> 6);
    text[3] = CharacterFor(bits);
  }
}

int DecodeGroupsPlain(const unsigned short* text, int groups, unsigned char* out) {
  int done = 0;
  for (; done < groups; ++done, text += 4, out += 3) {
    unsigned int value = 0;
    for (int i = 0; i < 4; ++i) {
      const int index = IndexOf(text[i]);
      if (index == kNoIndex) return done;
      value = value << 6 | static_cast<unsigned int>(index);
    }
    WriteBytes(value, 3, out);
  }
  return done;
}

}  // namespace KEST

extern "C" {

int KestBinToBase64(const unsigned char* data, int length, unsigned short* text, int size) {
  if (length < 0) return 0;
  const int whole = length / 3;
  const int rest = length % 3;
  const int groups = whole + (rest != 0 ? 1 : 0);
  if (groups > INT_MAX / 4 || size <= groups * 4) return 0;
  KEST::EncodeGroups(data, whole, text);
  if (rest != 0) KEST::EncodeRest(data + 3 * whole, rest, text + 4 * whole);
  text[groups * 4] = 0;
  return groups * 4;
}

int KestBase64ToBin(const unsigned short* text, unsigned char* out, int size) {
  if (text == nullptr) return 0;
  int written = 0;
  while (*text != 0) {
    const int most = std::min(KEST::GroupsInPage(text), KEST::GroupsInRoom(size - written));
    const int groups = KEST::DecodeGroupsBest(text, most, out + written);
    text += 4 * groups;
    written += 3 * groups;
    if (groups > 0) continue;
    unsigned int value;
    const int bytes = KEST::DecodeGroup(text, value);
    if (bytes == 0 || size - written < bytes) return 0;
    KEST::WriteBytes(value, bytes, out + written);
    text += 4;
    written += bytes;
  }
  return written;
}

}  // extern "C"
