#include <sys/mman.h>

#include "crypto/digest_checks.h"

namespace {

using namespace kest_test;

// Records what reaches Transform and shows the fields. Its own result is of no interest.
class TProbe : public KEST::TMessageDigest {
 public:
  int Finish(unsigned char*, int) override { return 0; }
  int GetDigestSize() const override { return 0; }
  void Transform(unsigned int* words, const unsigned char* block) override {
    stateIsOurs = words == state;
    blocks.push_back(block);
    content.emplace_back(block, block + 64);
    ++words[4];
  }

  std::vector<unsigned int> State() const { return {state, state + 5}; }
  std::vector<unsigned int> BitCount() const { return {bitCount, bitCount + 2}; }
  void SetBitCount(unsigned int low, unsigned int high) {
    bitCount[0] = low;
    bitCount[1] = high;
  }
  const unsigned char* Buffer() const { return buffer; }
  Bytes Buffered(int count) const { return {buffer, buffer + count}; }

  std::vector<const unsigned char*> blocks;
  std::vector<Bytes> content;
  bool stateIsOurs = false;
};

using Words = std::vector<unsigned int>;
const Words kInitialState = {0x67452301, 0xefcdab89, 0x98badcfe, 0x10325476, 0xc3d2e1f0};

TEST(MessageDigest, StartsInTheInitialState) {
  const TProbe probe;
  EXPECT_EQ(kInitialState, probe.State());
  EXPECT_EQ((Words{0, 0}), probe.BitCount());
}

TEST(MessageDigest, ResetBringsTheInitialStateAndLeavesTheBuffer) {
  TProbe probe;
  Feed(probe, Pattern(64 + 5));
  probe.SetBitCount(0x12345678, 0x9abcdef0);
  EXPECT_NE(kInitialState, probe.State());
  probe.Reset();
  EXPECT_EQ(kInitialState, probe.State());
  EXPECT_EQ((Words{0, 0}), probe.BitCount());
  const Bytes message = Pattern(64 + 5);
  EXPECT_EQ(Bytes(message.begin() + 64, message.end()), probe.Buffered(5));
}

TEST(MessageDigest, KeepsAPartialBlock) {
  TProbe probe;
  Feed(probe, ToBytes("abc"));
  Feed(probe, ToBytes("de"));
  EXPECT_TRUE(probe.blocks.empty());
  EXPECT_EQ(ToBytes("abcde"), probe.Buffered(5));
  EXPECT_EQ((Words{40, 0}), probe.BitCount());
}

TEST(MessageDigest, TransformsAFilledBufferAtOnce) {
  TProbe probe;
  const Bytes message = Pattern(64);
  probe.Update(message.data(), 63);
  EXPECT_TRUE(probe.blocks.empty());
  probe.Update(message.data() + 63, 1);
  ASSERT_EQ(1u, probe.blocks.size());
  EXPECT_EQ(probe.Buffer(), probe.blocks[0]);
  EXPECT_EQ(message, probe.content[0]);
  EXPECT_TRUE(probe.stateIsOurs);
  EXPECT_EQ(kInitialState[4] + 1, probe.State()[4]) << "what Transform changes is kept";
}

// Only the first block passes through the buffer; the others are read where the caller has them.
TEST(MessageDigest, TransformsWholeBlocksStraightFromTheCallersData) {
  const Bytes message = Pattern(10 + 54 + 3 * 64 + 7);
  TProbe probe;
  probe.Update(message.data(), 10);
  const unsigned char* rest = message.data() + 10;
  probe.Update(rest, 54 + 3 * 64 + 7);
  ASSERT_EQ(4u, probe.blocks.size());
  EXPECT_EQ(probe.Buffer(), probe.blocks[0]);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(rest + 54 + 64 * i, probe.blocks[static_cast<size_t>(1 + i)]);
  }
  EXPECT_EQ(Bytes(message.end() - 7, message.end()), probe.Buffered(7));
}

// Every fill of the buffer against every length: the blocks and the rest are the message, cut.
TEST(MessageDigest, CutsAnyTwoPiecesIntoBlocks) {
  for (int first = 0; first < 64; ++first) {
    for (int second = 0; second <= 200; ++second) {
      const Bytes message = Pattern(first + second);
      TProbe probe;
      probe.Update(message.data(), first);
      probe.Update(message.data() + first, second);
      Bytes seen;
      for (const Bytes& block : probe.content) seen.insert(seen.end(), block.begin(), block.end());
      const Bytes rest = probe.Buffered((first + second) % 64);
      seen.insert(seen.end(), rest.begin(), rest.end());
      ASSERT_EQ(message, seen) << first << " + " << second;
      ASSERT_EQ(static_cast<unsigned int>(8 * (first + second)), probe.BitCount()[0]);
    }
  }
}

TEST(MessageDigest, NothingToFeedChangesNothing) {
  for (int fill : {0, 5, 63}) {
    TProbe probe;
    Feed(probe, Pattern(fill));
    const Words count = probe.BitCount();
    probe.Update(nullptr, 0);
    for (int length : {0, -1, -64, -65, INT_MIN}) probe.Update(Pattern(100).data(), length);
    EXPECT_EQ(count, probe.BitCount());
    EXPECT_EQ(kInitialState, probe.State());
    EXPECT_EQ(Pattern(fill), probe.Buffered(fill));
    EXPECT_TRUE(probe.blocks.empty());
  }
}

// The count is one 64-bit number that wraps. Columns: low and high word, bytes fed, both after.
TEST(MessageDigest, CarriesIntoTheHighWord) {
  const struct {
    unsigned int low, high;
    int length;
    unsigned int lowAfter, highAfter;
  } rows[] = {
      {0xffffffe8, 0, 2, 0xfffffff8, 0}, {0xfffffff8, 0, 1, 0, 1},
      {0xfffffff8, 6, 2, 8, 7},          {0xffffff00, 0xfffffffe, 32, 0, 0xffffffff},
      {0xfffffff8, 0xffffffff, 1, 0, 0},
  };
  for (const auto& row : rows) {
    TProbe probe;
    probe.SetBitCount(row.low, row.high);
    Feed(probe, Pattern(row.length));
    EXPECT_EQ((Words{row.lowAfter, row.highAfter}), probe.BitCount()) << row.low << ' ' << row.high;
  }
}

// Only counts: the data behind is address space that is never read, save for the ends.
class TCounter : public TProbe {
 public:
  void Transform(unsigned int*, const unsigned char*) override { ++count; }
  unsigned int count = 0;
};

// 2^29 bytes are 2^32 bits. Columns: bytes that wait in the buffer, bytes in one call, low and high
// word after it. An index into the last piece passes INT_MAX when a block is added to it.
TEST(MessageDigest, CountsTheBitsOfHugePieces) {
  const struct {
    int waiting, length;
    unsigned int low, high;
  } rows[] = {
      {0, 0x1fffffff, 0xfffffff8, 0}, {0, 0x20000000, 0, 1}, {0, 0x60000003, 0x18, 3},
      {0, 0x7fffffff, 0xfffffff8, 3}, {1, 0x7fffffff, 0, 4},
  };
  for (const auto& row : rows) {
    const size_t size = static_cast<size_t>(row.length);
    void* data = mmap(nullptr, size, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (data == MAP_FAILED) continue;  // no such stretch of addresses in a 32-bit process
    TCounter counter;
    counter.Update(static_cast<const unsigned char*>(data), row.waiting);
    counter.Update(static_cast<const unsigned char*>(data), row.length);
    EXPECT_EQ((Words{row.low, row.high}), counter.BitCount()) << row.length;
    const unsigned int bytes =
        static_cast<unsigned int>(row.waiting) + static_cast<unsigned int>(row.length);
    EXPECT_EQ(bytes / 64, counter.count);
    munmap(data, size);
  }
}

// A pointer to a virtual member holds 1 plus the byte offset of its slot.
template <typename Member>
size_t SlotOf(Member member) {
  ptrdiff_t words[2];
  static_assert(sizeof(member) == sizeof(words));
  memcpy(words, &member, sizeof(words));
  return static_cast<size_t>(words[0] - 1) / sizeof(void*);
}

TEST(MessageDigest, SlotsComeInTheirOrder) {
  EXPECT_EQ(0u, SlotOf(&KEST::TMessageDigest::Finish));
  EXPECT_EQ(1u, SlotOf(&KEST::TMessageDigest::GetDigestSize));
  EXPECT_EQ(2u, SlotOf(&KEST::TMessageDigest::Transform));
  static_assert(std::is_abstract_v<KEST::TMessageDigest> && std::is_abstract_v<KEST::TMdXDigest>);
  static_assert(!std::has_virtual_destructor_v<KEST::TMessageDigest>);
}

// What a host's digest over TMdXDigest says its size is comes back from Finish; 16 bytes are
// written.
TEST(MessageDigest, FinishReturnsTheSizeOfTheDerivedDigest) {
  class TShort : public KEST::TMd5Digest {
   public:
    int GetDigestSize() const override { return 12; }
  };
  TShort digest;
  unsigned char out[20] = {};
  EXPECT_EQ(12, digest.Finish(out, 0));
  EXPECT_EQ("d41d8cd98f00b204e9800998ecf8427e00000000", Hex(out, 20));
}

}  // namespace
