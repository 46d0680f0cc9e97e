// The Internet checksum against the plain sum, at every length and place where its vector versions
// change over, and where carries are lost.

#include <gtest/gtest.h>
#include <stdint.h>

#include <vector>

#include "kest/digest.h"
#include "support/guarded_block.h"
#include "support/random.h"

using KEST::TInetChecksum;
using kest_test::GuardedBlock;
using kest_test::Random;

namespace {

using Bytes = std::vector<unsigned char>;

// One call of Update, with carries that 32 bits do not hold lost, on purpose.
struct SModel {
  uint32_t sum = 0;
  bool odd = false;

  void Update(const unsigned char* data, int length) {
    if (odd) {
      sum += *data++;
      --length;
    }
    for (int i = 0; i < length; ++i) sum += i % 2 == 0 ? data[i] * 256u : data[i];
    odd = length > 0 && length % 2 != 0;
    while (sum > 0xffff) sum = (sum >> 16) + (sum & 0xffff);
  }
  unsigned short Checksum() const { return static_cast<unsigned short>(~sum); }
};

void ExpectModel(const unsigned char* data, int length) {
  SModel model;
  model.Update(data, length);
  ASSERT_EQ(model.Checksum(), KestComputeChecksum(data, length)) << length;
  constexpr unsigned short kBefore[] = {0x0000, 0x1234, 0xffff};
  for (const unsigned short before : kBefore) {
    for (const bool odd : {false, true}) {
      if (odd && length == 0) continue;  // takes a byte that is not there
      SModel start;
      start.sum = static_cast<unsigned short>(~before);
      start.odd = odd;
      start.Update(data, length);
      TInetChecksum checksum;
      checksum.SetCurrent(before, odd ? 1 : 0);
      checksum.Update(data, length);
      ASSERT_EQ(start.Checksum(), checksum.GetCurrent()) << length << " bytes after " << before;
      // Whether a byte more is high or low.
      const unsigned char more = 0x5A;
      start.Update(&more, 1);
      checksum.Update(&more, 1);
      ASSERT_EQ(start.Checksum(), checksum.GetCurrent()) << length << " bytes after " << before;
    }
  }
}

TEST(InetChecksumLevels, SumsEveryLengthBeforeTheEndOfMemory) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int length = 0; length <= 600; ++length) {
    const GuardedBlock<unsigned char> data(random.Bytes(length));
    ASSERT_NO_FATAL_FAILURE(ExpectModel(data.Get(), length));
  }
}

TEST(InetChecksumLevels, SumsAtEveryAddress) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Bytes data = random.Bytes(10000);
  for (int shift = 0; shift < 130; ++shift) {
    for (const int length : {63, 64, 65, 1500, 4096, 9001}) {
      if (shift + length > 10000) continue;
      ASSERT_NO_FATAL_FAILURE(ExpectModel(data.data() + shift, length));
    }
  }
}

// Each byte counts in its half, wherever it is.
TEST(InetChecksumLevels, SumsASingleByteAnywhere) {
  Bytes data(700);
  for (size_t at = 0; at < data.size(); ++at) {
    data[at] = 0x81;
    ASSERT_EQ(at % 2 == 0 ? 0xffff - 0x8100 : 0xffff - 0x81, KestComputeChecksum(data.data(), 700));
    data[at] = 0;
  }
}

TEST(InetChecksumLevels, LosesCarriesInLongData) {
  Random random;
  SCOPED_TRACE(random.Seed());
  const Bytes ones(600000, 0xff);
  const Bytes bytes = random.Bytes(600000);
  for (const int length : {131070, 131072, 131073, 131074, 131075, 131076, 131078, 131080, 196611,
                           262144, 262150, 400000, 599999}) {
    for (const int shift : {0, 1}) {
      ASSERT_NO_FATAL_FAILURE(ExpectModel(ones.data() + shift, length));
      ASSERT_NO_FATAL_FAILURE(ExpectModel(bytes.data() + shift, length));
    }
  }
}

}  // namespace
