// Base64 against plain models, at every length and place where its vector versions change over:
// both ends of a vector, before memory that cannot be touched, across pages, in too little room,
// and at whatever is not a letter.

#include <gtest/gtest.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <string>
#include <vector>

#include "kest/digest.h"
#include "support/guarded_block.h"
#include "support/random.h"

using kest_test::GuardedBlock;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;
using Text = std::vector<unsigned short>;

constexpr unsigned char kUntouched = 0xEE;
const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// Sanitizers object to units at odd addresses in the plain version.
#ifdef __SANITIZE_ADDRESS__
constexpr size_t kShifts[] = {0, 2, 6, 10};
#else
constexpr size_t kShifts[] = {0, 1, 2, 6, 7, 10};
#endif

int LengthOf(const Text& text) { return static_cast<int>(text.size()); }

// With its terminator.
Text EncodeModel(const Bytes& data) {
  Text text;
  for (size_t at = 0; at < data.size(); at += 3) {
    unsigned int bits = 0;
    for (size_t i = at; i < at + 3; ++i) bits = bits * 256 + (i < data.size() ? data[i] : 0u);
    for (int shift = 18; shift >= 0; shift -= 6) {
      text.push_back(static_cast<unsigned char>(kAlphabet[bits >> shift & 63]));
    }
  }
  for (size_t i = 0; i < (3 - data.size() % 3) % 3; ++i) text[text.size() - 1 - i] = '=';
  text.push_back(0);
  return text;
}

// The result, and what is in memory of size bytes then.
struct Decoded {
  int written;
  Bytes out;

  bool operator==(const Decoded& other) const {
    return written == other.written && out == other.out;
  }
};

Decoded DecodeModel(const Text& text, int size) {
  Decoded decoded = {0, Bytes(static_cast<size_t>(size), kUntouched)};
  for (size_t at = 0; text[at] != 0; at += 4) {
    unsigned int value = 0;
    int bytes = 3;
    for (size_t i = 0; i < 4; ++i) {
      const unsigned short unit = text[at + i];
      const size_t index = unit < 128 ? kAlphabet.find(static_cast<char>(unit)) : kAlphabet.npos;
      if (index != kAlphabet.npos) {
        value = value * 64 + static_cast<unsigned int>(index);
      } else if (unit == '=' && i >= 2) {
        value /= 4;
        --bytes;
      } else {
        return {0, decoded.out};
      }
    }
    if (size - decoded.written < bytes) return {0, decoded.out};
    for (int i = bytes - 1; i >= 0; --i) {
      decoded.out[static_cast<size_t>(decoded.written++)] =
          static_cast<unsigned char>(value >> (8 * i));
    }
  }
  return decoded;
}

Decoded Decode(const unsigned short* text, int size) {
  GuardedBlock<unsigned char> out(size);
  memset(out.Get(), kUntouched, static_cast<size_t>(size));
  const int written = KestBase64ToBin(text, out.Get(), size);
  return {written, out.Content()};
}

TEST(Base64Levels, EncodesAndDecodesEveryLength) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 0; length <= 300; ++length) {
    SCOPED_TRACE(length);
    const Bytes data = random.Bytes(length);
    const Text expected = EncodeModel(data);
    const GuardedBlock<unsigned char> source(data);
    GuardedBlock<unsigned short> text(LengthOf(expected));
    ASSERT_EQ(LengthOf(expected) - 1,
              KestBinToBase64(source.Get(), length, text.Get(), LengthOf(expected)));
    ASSERT_EQ(expected, text.Content());
    ASSERT_TRUE((Decoded{length, data}) == Decode(text.Get(), length));
    if (length == 0) continue;
    ASSERT_TRUE(DecodeModel(expected, length - 1) == Decode(text.Get(), length - 1));
    ASSERT_TRUE(DecodeModel(expected, length + 40) == Decode(text.Get(), length + 40));
  }
}

// What is behind the units, and behind the bytes, stays as it was.
TEST(Base64Levels, WritesAtEveryAddress) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const int length : {24, 96, 191, 192, 193, 600, 2000}) {
    const Bytes data = random.Bytes(length);
    const Text expected = EncodeModel(data);
    for (size_t shift = 0; shift < 64; ++shift) {
      SCOPED_TRACE(testing::Message() << length << " bytes, " << shift);
#ifdef __SANITIZE_ADDRESS__
      if (shift % 2 != 0) continue;
#endif
      alignas(64) static unsigned char memory[8192];
      memset(memory, kUntouched, sizeof(memory));
      auto* text = reinterpret_cast<unsigned short*>(memory + shift);
      ASSERT_EQ(LengthOf(expected) - 1, KestBinToBase64(data.data(), length, text, 3000));
      unsigned char all[sizeof(memory)];
      memset(all, kUntouched, sizeof(all));
      memcpy(all + shift, expected.data(), 2 * expected.size());
      ASSERT_EQ(0, memcmp(all, memory, sizeof(memory)));
    }
  }
}

TEST(Base64Levels, StopsAtAnythingAnywhere) {
  Random random;
  SCOPED_TRACE(random.Seed());
  constexpr unsigned short kOthers[] = {0,   ' ', '=', '-',  '@',        '[',         '`',
                                        '{', ',', ':', 0xFF, 0x80 + 'A', 0x100 + 'A', 0x8041};
  for (const int length : {12, 130}) {
    const Text good = EncodeModel(random.Bytes(length));
    for (const unsigned short other : kOthers) {
      for (size_t at = 0; at + 1 < good.size(); ++at) {
        Text text = good;
        text[at] = other;
        if (other == 0) text.resize(at + 1);
        const GuardedBlock<unsigned short> source(text);
        ASSERT_TRUE(DecodeModel(text, length) == Decode(source.Get(), length))
            << other << " at " << at;
      }
    }
  }
}

// Groups with padding take their own way, all the text long.
TEST(Base64Levels, DecodesMixedGroups) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0; n < Random::Cases() / 40; ++n) {
    Text text;
    for (int groups = random.Between(0, 300); groups > 0; --groups) {
      const Text group = EncodeModel(
          random.Bytes(n % 2 == 0 || random.Next() % 32 == 0 ? random.Between(1, 3) : 3));
      text.insert(text.end(), group.begin(), group.end() - 1);
    }
    text.push_back(0);
    const int size = random.Between(0, 900);
    const GuardedBlock<unsigned short> source(text);
    ASSERT_TRUE(DecodeModel(text, size) == Decode(source.Get(), size)) << n;
  }
}

// Text that goes on in the next page, and text at both ends of two pages between others that cannot
// be touched.
TEST(Base64Levels, ReadsAcrossPages) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
  auto* const pages = static_cast<unsigned char*>(
      mmap(nullptr, 4 * page, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0));
  unsigned char* const begin = pages + page;
  unsigned char* const end = begin + 2 * page;
  ASSERT_EQ(0, mprotect(begin, 2 * page, PROT_READ | PROT_WRITE));
  for (const int length : {3, 25, 96, 300, 700}) {
    const Bytes data = random.Bytes(length);
    const Text text = EncodeModel(data);
    const size_t size = 2 * text.size();
    for (const size_t shift : kShifts) {
      for (unsigned char* const at :
           {begin + shift, begin + page - shift, begin + page - size / 2 - shift,
            begin + page - size - shift, end - size - shift}) {
        if (at < begin) continue;
#ifdef __SANITIZE_ADDRESS__
        if (reinterpret_cast<uintptr_t>(at) % 2 != 0) continue;
#endif
        memcpy(at, text.data(), size);
        ASSERT_TRUE((Decoded{length, data}) ==
                    Decode(reinterpret_cast<unsigned short*>(at), length))
            << length << " bytes at " << at - begin;
      }
    }
  }
  munmap(pages, 4 * page);
}

// Into the text itself, and from the end of the room for the text.
TEST(Base64Levels, WorksInPlace) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 3; length <= 300; length += 3) {
    SCOPED_TRACE(length);
    const Bytes data = random.Bytes(length);
    const Text expected = EncodeModel(data);
    Text text(expected.size());
    unsigned char* const back =
        reinterpret_cast<unsigned char*>(text.data()) + 2 * (expected.size() - 1) - data.size();
    memcpy(back, data.data(), data.size());
    ASSERT_EQ(LengthOf(expected) - 1,
              KestBinToBase64(back, length, text.data(), LengthOf(expected)));
    ASSERT_EQ(expected, text);
    auto* const front = reinterpret_cast<unsigned char*>(text.data());
    ASSERT_EQ(length, KestBase64ToBin(text.data(), front, length));
    ASSERT_EQ(data, Bytes(front, front + length));
  }
}

TEST(Base64Levels, CodesLongData) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const int length : {4095, 4096, 20000, 100001}) {
    const Bytes data = random.Bytes(length);
    const Text expected = EncodeModel(data);
    Text text(expected.size());
    ASSERT_EQ(LengthOf(expected) - 1,
              KestBinToBase64(data.data(), length, text.data(), LengthOf(text)));
    ASSERT_TRUE(expected == text);
    ASSERT_TRUE((Decoded{length, data}) == Decode(text.data(), length));
  }
}

}  // namespace
