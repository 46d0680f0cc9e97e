#include <stdlib.h>
#include <string.h>
#include <time.h>

#include <string>

#include "crypto/wipe_checks.h"
#include "kest/digest.h"
#include "support/hex.h"
#include "support/test_allocator.h"

namespace {

int s_srandCalls = 0;
unsigned int s_srandSeed = 0;

}  // namespace

// In place of the C library's, for the library too.
extern "C" void srand(unsigned int seed) noexcept {
  ++s_srandCalls;
  s_srandSeed = seed;
}

namespace {

using kest_test::Hex;

// MD5 of 16 zero bytes, then of 16 bytes of 1.
const char kFirstBlock[] = "4ae71336e44bf9bf79d2752e234818a5";
const char kSecondBlock[] = "24311d9abc4077123c2c9a167afbe754";

std::string Generated(int length) {
  unsigned char out[64];
  memset(out, 0xee, sizeof(out));
  KestGenerateRandom(out, length);
  return Hex(out, static_cast<size_t>(length));
}

void Seed(const char* text) {
  KestSeedRandom(reinterpret_cast<const unsigned char*>(text), static_cast<int>(strlen(text)));
}

const std::string kUntouched(32, 'e');

TEST(Random, DoesNothingWithoutAnInstance) {
  Seed("seed");
  EXPECT_EQ(kUntouched, Generated(16));
  KEST::RandTerm();
  EXPECT_EQ(kUntouched, Generated(16));
  ASSERT_TRUE(KEST::RandInit());
  EXPECT_EQ(kFirstBlock, Generated(16)) << "what was fed before the start is not remembered";
  KEST::RandTerm();
  Seed("seed");
  EXPECT_EQ(kUntouched, Generated(16));
}

TEST(Random, IsTheSameInEveryProcessUntilItIsSeeded) {
  ASSERT_TRUE(KEST::RandInit());
  EXPECT_EQ(kFirstBlock, Generated(16));
  EXPECT_EQ(kSecondBlock, Generated(16));
  KEST::RandTerm();
}

// Expected bytes as in digest_prng_test.cpp: "first 5 second 32".
TEST(Random, SeedsAndGeneratesOnTheInstance) {
  ASSERT_TRUE(KEST::RandInit());
  Seed("first");
  EXPECT_EQ("f135b4807c", Generated(5));
  Seed("second");
  EXPECT_EQ("e5a451244fab4f4fbf49a43d8867d3e601d51e750fd1fe1b7305e800f2ec1108", Generated(32));
  KEST::RandTerm();
}

TEST(Random, StartsAfreshAfterAStop) {
  for (int i = 0; i < 3; ++i) {
    ASSERT_TRUE(KEST::RandInit());
    EXPECT_EQ(kFirstBlock, Generated(16));
    Seed("seed");
    KEST::RandTerm();
  }
}

TEST(Random, ASecondStartKeepsTheGenerator) {
  ASSERT_TRUE(KEST::RandInit());
  EXPECT_EQ(kFirstBlock, Generated(16));
  s_srandCalls = 0;
  ASSERT_TRUE(KEST::RandInit());
  EXPECT_EQ(0, s_srandCalls);
  EXPECT_EQ(kSecondBlock, Generated(16));
  KEST::RandTerm();
  KEST::RandTerm();
}

TEST(Random, BadLengthsDoNothing) {
  ASSERT_TRUE(KEST::RandInit());
  unsigned char byte = 0x55;
  KestGenerateRandom(&byte, -1);
  KestGenerateRandom(nullptr, 0);
  KestSeedRandom(&byte, -1);
  EXPECT_EQ(0x55, byte);
  EXPECT_EQ(kFirstBlock, Generated(16));
  KEST::RandTerm();
}

TEST(Random, StartSeedsTheCLibrarysGeneratorWithTheTime) {
  s_srandCalls = 0;
  const unsigned int before = static_cast<unsigned int>(time(nullptr));
  ASSERT_TRUE(KEST::RandInit());
  const unsigned int after = static_cast<unsigned int>(time(nullptr));
  EXPECT_EQ(1, s_srandCalls);
  EXPECT_LE(before, s_srandSeed);
  EXPECT_GE(after, s_srandSeed);
  KEST::RandTerm();
}

TEST(Random, OneBlockHoldsTheGenerator) {
  kest_test::TestAllocator allocator;
  ASSERT_TRUE(KEST::RandInit());
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ(sizeof(KEST::TMd5Prng), allocator.LastSize());
  KEST::RandTerm();
  EXPECT_EQ(0, allocator.Live());
}

TEST(Random, StopWipesTheGenerator) {
  const kest_test::WipeChecker checker;
  ASSERT_TRUE(KEST::RandInit());
  unsigned char out[20];
  KestGenerateRandom(out, sizeof(out));
  KEST::RandTerm();
  EXPECT_EQ(1, checker.Freed());
  EXPECT_EQ(0, checker.Dirty());
}

TEST(Random, StartFailsWithoutMemory) {
  kest_test::ForEachRefusedRequest([](kest_test::TestAllocator& allocator) {
    const bool started = KEST::RandInit();
    EXPECT_EQ(allocator.Refused() == 0, started);
    EXPECT_EQ(started ? kFirstBlock : kUntouched, Generated(16));
    KEST::RandTerm();
  });
}

TEST(Random, AStartThatFailedCanBeRepeated) {
  kest_test::TestAllocator allocator;
  allocator.Refuse(1, kest_test::TestAllocator::kOnlyOne);
  EXPECT_FALSE(KEST::RandInit());
  EXPECT_TRUE(KEST::RandInit());
  EXPECT_EQ(kFirstBlock, Generated(16));
  KEST::RandTerm();
}

}  // namespace
