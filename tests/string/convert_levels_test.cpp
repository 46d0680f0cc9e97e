// The conversions against plain models, at every length and place where their vector versions
// change over: both ends of a block, before and behind memory that cannot be touched, in too little
// room, and in text that is not what a block expects.

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kest/string.h"
#include "kest/text.h"
#include "support/guarded_block.h"
#include "support/random.h"
#include "support/text.h"

using kest_test::Bstr;
using kest_test::GuardedBlock;
using kest_test::Random;
using kest_test::TextOf;

namespace {

using Units = std::vector<unsigned short>;
using Bytes = std::vector<char>;

constexpr unsigned short kUntouched = 0xEEEE;
constexpr char kUntouchedByte = '\xEE';

int LengthOf(const Units& units) { return static_cast<int>(units.size()); }
int LengthOf(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

// The rules of the encoder: all sequences that begin below size.
Bytes EncodeModel(const Units& text, int size) {
  Bytes bytes;
  for (const unsigned int unit : text) {
    if (LengthOf(bytes) >= size) break;
    if (unit < 0x80) {
      bytes.push_back(static_cast<char>(unit));
      continue;
    }
    if (unit < 0x800) {
      bytes.push_back(static_cast<char>(0xC0 + unit / 64));
    } else {
      bytes.push_back(static_cast<char>(0xE0 + unit / 4096));
      bytes.push_back(static_cast<char>(0x80 + unit / 64 % 64));
    }
    bytes.push_back(static_cast<char>(0x80 + unit % 64));
  }
  return bytes;
}

// The rules of the decoder: the lead alone tells how many bytes its sequence has.
Units DecodeModel(const Bytes& text, int size) {
  Units units;
  for (size_t at = 0; at < text.size() && LengthOf(units) < size;) {
    const auto byte = [&text, at](size_t i) {
      return static_cast<unsigned int>(static_cast<unsigned char>(text[at + i]));
    };
    const size_t step = byte(0) < 0x80 ? 1 : byte(0) / 32 % 2 == 0 ? 2 : 3;
    if (step > text.size() - at) break;
    unsigned int unit = byte(0);
    if (step == 2) unit = byte(0) % 32 * 64 + byte(1) % 64;
    if (step == 3) unit = byte(0) % 16 * 4096 + byte(1) % 64 * 64 + byte(2) % 64;
    units.push_back(static_cast<unsigned short>(unit));
    at += step;
  }
  return units;
}

// What text is made of: how long its sequences are, and how many bytes of 1000 are wrong.
struct SKind {
  const char* name;
  int ascii, twoBytes;  // of 100 units; the rest have three bytes
  int wrong;
};

constexpr SKind kKinds[] = {
    {"ascii", 100, 0, 0},         {"ascii with a few others", 96, 3, 0},
    {"two bytes", 15, 85, 0},     {"three bytes", 0, 0, 0},
    {"up to two", 50, 50, 0},     {"mixed", 33, 33, 0},
    {"a wrong byte", 40, 30, 10}, {"half wrong", 30, 30, 500},
    {"any bytes", 30, 30, 1000},
};

Units RandomUnits(Random& random, const SKind& kind, int count) {
  Units units(static_cast<size_t>(count));
  for (unsigned short& unit : units) {
    const int which = random.Between(0, 99);
    const int value = which < kind.ascii                   ? random.Between(0, 0x7F)
                      : which < kind.ascii + kind.twoBytes ? random.Between(0x80, 0x7FF)
                                                           : random.Between(0x800, 0xFFFF);
    unit = static_cast<unsigned short>(value);
  }
  return units;
}

// Exactly count bytes, with a sequence cut off at the end now and then.
Bytes RandomBytes(Random& random, const SKind& kind, int count) {
  Bytes bytes = EncodeModel(RandomUnits(random, kind, count), INT_MAX);
  bytes.resize(static_cast<size_t>(count));
  for (char& byte : bytes) {
    if (random.Between(1, 1000) <= kind.wrong) byte = static_cast<char>(random.Next());
  }
  return bytes;
}

// From a block of exactly the text into one of exactly the result, and into a roomier one, of which
// nothing else is touched.
void ExpectDecoded(const Bytes& text, int size) {
  const Units expected = DecodeModel(text, size);
  const GuardedBlock<char> source(text);
  GuardedBlock<unsigned short> exact(LengthOf(expected));
  ASSERT_EQ(LengthOf(expected), KestUtf8ToString(source.Get(), LengthOf(text), exact.Get(), size));
  ASSERT_EQ(expected, exact.Content());
  Units roomy(text.size() + 80, kUntouched);
  ASSERT_EQ(LengthOf(expected), KestUtf8ToString(source.Get(), LengthOf(text), roomy.data(), size));
  Units all = expected;
  all.resize(roomy.size(), kUntouched);
  ASSERT_EQ(all, roomy);
}

void ExpectEncoded(const Units& text, int size) {
  const Bytes expected = EncodeModel(text, size);
  const GuardedBlock<unsigned short> source(text);
  GuardedBlock<char> exact(LengthOf(expected));
  ASSERT_EQ(LengthOf(expected), KestStringToUtf8(source.Get(), LengthOf(text), exact.Get(), size));
  ASSERT_EQ(expected, exact.Content());
  Bytes roomy(3 * text.size() + 80, kUntouchedByte);
  ASSERT_EQ(LengthOf(expected), KestStringToUtf8(source.Get(), LengthOf(text), roomy.data(), size));
  Bytes all = expected;
  all.resize(roomy.size(), kUntouchedByte);
  ASSERT_EQ(all, roomy);
}

TEST(ConvertLevels, DecodesEveryLengthOfEveryKind) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    for (int length = 0; length <= 260; ++length) {
      SCOPED_TRACE(length);
      const Bytes text = RandomBytes(random, kind, length);
      const int units = LengthOf(DecodeModel(text, INT_MAX));
      ASSERT_NO_FATAL_FAILURE(ExpectDecoded(text, INT_MAX));
      ASSERT_NO_FATAL_FAILURE(ExpectDecoded(text, units));
      ASSERT_NO_FATAL_FAILURE(ExpectDecoded(text, random.Between(0, units)));
    }
  }
}

TEST(ConvertLevels, EncodesEveryLengthOfEveryKind) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    for (int length = 0; length <= 260; ++length) {
      SCOPED_TRACE(length);
      const Units text = RandomUnits(random, kind, length);
      const int bytes = LengthOf(EncodeModel(text, INT_MAX));
      ASSERT_NO_FATAL_FAILURE(ExpectEncoded(text, INT_MAX));
      ASSERT_NO_FATAL_FAILURE(ExpectEncoded(text, bytes));
      ASSERT_NO_FATAL_FAILURE(ExpectEncoded(text, random.Between(0, bytes)));
    }
  }
}

TEST(ConvertLevels, ConvertsLongText) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    for (int i = 0; i < 4; ++i) {
      const int length = random.Between(3000, 6000);
      ASSERT_NO_FATAL_FAILURE(ExpectDecoded(RandomBytes(random, kind, length), INT_MAX));
      ASSERT_NO_FATAL_FAILURE(ExpectEncoded(RandomUnits(random, kind, length), INT_MAX));
    }
  }
}

// Every bound on the room, in a text of each kind.
TEST(ConvertLevels, StopsAtEverySize) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    const Bytes bytes = RandomBytes(random, kind, 240);
    const Units units = RandomUnits(random, kind, 150);
    for (int size = 0; size <= 250; ++size) {
      SCOPED_TRACE(size);
      ASSERT_NO_FATAL_FAILURE(ExpectDecoded(bytes, size));
      ASSERT_NO_FATAL_FAILURE(ExpectEncoded(units, size));
    }
  }
}

// One byte of good text replaced, at each place.
TEST(ConvertLevels, DecodesAWrongByteAnywhere) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : {kKinds[0], kKinds[2], kKinds[3], kKinds[5]}) {
    SCOPED_TRACE(kind.name);
    const Bytes good = RandomBytes(random, kind, 170);
    for (const int wrong : {0x00, 0x41, 0x80, 0xBF, 0xC0, 0xDF, 0xE0, 0xEF, 0xF0, 0xF8, 0xFF}) {
      for (size_t at = 0; at < good.size(); ++at) {
        Bytes text = good;
        text[at] = static_cast<char>(wrong);
        Units units(text.size());
        const int count =
            KestUtf8ToString(text.data(), LengthOf(text), units.data(), LengthOf(units));
        units.resize(static_cast<size_t>(count));
        ASSERT_EQ(DecodeModel(text, INT_MAX), units) << wrong << " at " << at;
      }
    }
  }
}

// One unit of another size, at each place.
TEST(ConvertLevels, EncodesAnOddUnitAnywhere) {
  for (const int most : {0x41, 0x3A9, 0x6F22}) {
    for (const int odd : {0x00, 0x7F, 0x80, 0xFF, 0x100, 0x7FF, 0x800, 0xD83D, 0xFFFF}) {
      for (size_t at = 0; at < 150; ++at) {
        Units text(150, static_cast<unsigned short>(most));
        text[at] = static_cast<unsigned short>(odd);
        Bytes bytes(3 * text.size());
        bytes.resize(static_cast<size_t>(
            KestStringToUtf8(text.data(), LengthOf(text), bytes.data(), LengthOf(bytes))));
        ASSERT_EQ(EncodeModel(text, INT_MAX), bytes) << most << ", " << odd << " at " << at;
      }
    }
  }
}

// Text and result in one block, the text at its end, so that no byte is written before it was read.
TEST(ConvertLevels, ConvertsTowardsTheFrontOfItsOwnBlock) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (const SKind& kind : kKinds) {
    for (const int length : {1, 15, 31, 32, 33, 64, 100, 500}) {
      SCOPED_TRACE(kind.name);
      SCOPED_TRACE(length);
      const Bytes bytes = RandomBytes(random, kind, length);
      Units block(bytes.size());
      char* const source = reinterpret_cast<char*>(block.data()) + bytes.size();
      memcpy(source, bytes.data(), bytes.size());
      const int units = KestUtf8ToString(source, length, block.data(), length);
      block.resize(static_cast<size_t>(units));
      ASSERT_EQ(DecodeModel(bytes, INT_MAX), block);

      const Units text = RandomUnits(random, kind, length);
      Bytes room(4 * text.size());
      memcpy(room.data() + 2 * text.size(), text.data(), 2 * text.size());
      room.resize(static_cast<size_t>(
          KestStringToUtf8(reinterpret_cast<unsigned short*>(room.data() + 2 * text.size()), length,
                           room.data(), LengthOf(room))));
      ASSERT_EQ(EncodeModel(text, INT_MAX), room);
    }
  }
}

TEST(ConvertLevels, NarrowsAndWidensEveryLength) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 0; length <= 200; ++length) {
    SCOPED_TRACE(length);
    Units units(static_cast<size_t>(length));
    for (unsigned short& unit : units) {
      unit = static_cast<unsigned short>(random.Between(0, random.Next() % 4 == 0 ? 0xFFFF : 0xFF));
    }
    Bytes bytes;
    for (const unsigned short unit : units) {
      bytes.push_back(unit < 256 ? static_cast<char>(unit) : '?');
    }
    const GuardedBlock<unsigned short> wide(units);
    GuardedBlock<char> narrow(length);
    ASSERT_EQ(length, KestUnicodeToMultibyte(wide.Get(), length, narrow.Get(), INT_MAX));
    ASSERT_EQ(bytes, narrow.Content());

    Units widened;
    for (const char byte : bytes) widened.push_back(static_cast<unsigned char>(byte));
    GuardedBlock<unsigned short> back(length);
    ASSERT_EQ(length, KestMultibyteToUnicode(narrow.Get(), INT_MAX, back.Get(), length));
    ASSERT_EQ(widened, back.Content());

    // In place, and towards the front of the own block.
    ASSERT_EQ(length, KestUnicodeToMultibyte(units.data(), length,
                                             reinterpret_cast<char*>(units.data()), length));
    const char* const inPlace = reinterpret_cast<const char*>(units.data());
    ASSERT_TRUE(std::equal(bytes.begin(), bytes.end(), inPlace));
    char* const behind = reinterpret_cast<char*>(units.data()) + length;
    std::copy(bytes.begin(), bytes.end(), behind);
    ASSERT_EQ(length, KestMultibyteToUnicode(behind, length, units.data(), length));
    ASSERT_EQ(widened, units);
  }
}

TEST(ConvertLevels, AUnitWithoutAByteIsAQuestionMarkAnywhere) {
  for (const int odd : {0x100, 0x13F, 0x7FFF, 0x8000, 0xFF00, 0xFFFF}) {
    for (size_t at = 0; at < 100; ++at) {
      Units text(100, 0xE9);
      text[at] = static_cast<unsigned short>(odd);
      Bytes bytes(100), expected(100, '\xE9');
      expected[at] = '?';
      ASSERT_EQ(100, KestUnicodeToMultibyte(text.data(), 100, bytes.data(), 100));
      ASSERT_EQ(expected, bytes) << odd << " at " << at;
    }
  }
}

// A page with one before and one behind that cannot be touched.
class LonelyPage {
 public:
  LonelyPage()
      : m_size(static_cast<size_t>(sysconf(_SC_PAGESIZE))),
        m_pages(static_cast<char*>(
            mmap(nullptr, 3 * m_size, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0))) {
    mprotect(m_pages + m_size, m_size, PROT_READ | PROT_WRITE);
  }
  ~LonelyPage() { munmap(m_pages, 3 * m_size); }
  LonelyPage(const LonelyPage&) = delete;
  LonelyPage& operator=(const LonelyPage&) = delete;

  char* Begin() const { return m_pages + m_size; }
  char* End() const { return Begin() + m_size; }

 private:
  const size_t m_size;
  char* const m_pages;
};

// Bytes from either end of a page. Sanitizers object to units at odd addresses in the plain
// version.
#ifdef __SANITIZE_ADDRESS__
constexpr size_t kShifts[] = {0, 2, 6, 34};
#else
constexpr size_t kShifts[] = {0, 1, 2, 6, 33, 34};
#endif

TEST(ConvertLevels, MeasuresEveryLengthAtEitherEndOfAPage) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const LonelyPage page;
  for (const SKind& kind : kKinds) {
    SCOPED_TRACE(kind.name);
    for (int length = 0; length <= 160; ++length) {
      Units text = RandomUnits(random, kind, length);
      for (unsigned short& unit : text) unit = std::max<unsigned short>(unit, 1);
      const size_t expected = EncodeModel(text, INT_MAX).size();
      text.push_back(0);
      const size_t size = 2 * text.size();
      for (const size_t shift : kShifts) {
        for (char* const at : {page.Begin() + shift, page.End() - size - shift}) {
          memcpy(at, text.data(), size);
          ASSERT_EQ(expected, KestStringUtf8ByteLen(reinterpret_cast<unsigned short*>(at)))
              << length << " units, " << shift << " bytes from the end";
        }
      }
    }
  }
}

TEST(ConvertLevels, TheUnitThatDecidesTheEncodingIsFoundAnywhere) {
  for (size_t length = 1; length <= 140; ++length) {
    for (const size_t at : {size_t{0}, length / 3, length / 2, length - 1}) {
      const auto best = [length, at](char16_t unit) {
        std::u16string text(length, u'a');
        text[at] = unit;
        return TextOf(Bstr(text).GetBestEncoding());
      };
      ASSERT_EQ(u"us-ascii", best(0x7F));
      ASSERT_EQ(u"iso-8859-1", best(0x80));
      ASSERT_EQ(u"iso-8859-1", best(0xFF));
      ASSERT_EQ(u"utf-8", best(0x100));
      ASSERT_EQ(u"utf-8", best(0x8000));
    }
  }
}

}  // namespace
