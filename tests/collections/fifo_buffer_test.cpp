#include <gtest/gtest.h>
#include <limits.h>

#include <algorithm>
#include <deque>
#include <random>
#include <string>
#include <type_traits>
#include <vector>

#include "collections/element.h"
#include "kest/collections.h"
#include "support/guarded_block.h"
#include "support/random.h"
#include "support/test_allocator.h"

using KEST::TFifoBuffer;
using kest_test::TestAllocator;

namespace {

int Write(TFifoBuffer& fifo, const std::string& text) {
  return fifo.Write(reinterpret_cast<const unsigned char*>(text.data()),
                    static_cast<int>(text.size()));
}

// What Read(count) delivers, after checking that it writes no further.
std::string Read(TFifoBuffer& fifo, int count) {
  std::vector<unsigned char> bytes(static_cast<size_t>(std::max(count, 0)) + 1, '#');
  const int n = fifo.Read(bytes.data(), count);
  EXPECT_LE(n, std::max(count, 0));
  EXPECT_EQ('#', bytes[static_cast<size_t>(n)]);
  return std::string(bytes.begin(), bytes.begin() + n);
}

TEST(FifoBuffer, StartsWithoutABlock) {
  TestAllocator allocator;
  {
    TFifoBuffer fifo;
    EXPECT_EQ(0, fifo.GetLength());
    EXPECT_EQ(0, fifo.GetCapacity());
    EXPECT_EQ("", Read(fifo, 10));
  }
  EXPECT_EQ(0, allocator.Requests());
}

TEST(FifoBuffer, IsNeverCopied) {
  static_assert(!std::is_copy_constructible_v<TFifoBuffer> &&
                !std::is_copy_assignable_v<TFifoBuffer>);
}

TEST(FifoBuffer, ReusesTheRoomOfReadBytes) {
  TestAllocator allocator;
  TFifoBuffer fifo;
  EXPECT_EQ(5, Write(fifo, "abcde"));
  EXPECT_EQ("abc", Read(fifo, 3));
  EXPECT_EQ(2, Write(fifo, "fg"));
  EXPECT_EQ(5, fifo.GetCapacity());
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ("defg", Read(fifo, 10));
  EXPECT_EQ(0, fifo.GetLength());
  EXPECT_EQ(5, fifo.GetCapacity());
}

TEST(FifoBuffer, GrowsToExactlyTheTotal) {
  // Columns: bytes written, bytes then read, capacity after the write.
  struct Row {
    int written, read, capacity;
  };
  constexpr Row kRows[] = {
      {7, 0, 7},   {1, 0, 8},   {8, 8, 16},  {8, 0, 16},  {1, 17, 17},
      {17, 1, 17}, {1, 17, 17}, {18, 9, 18}, {9, 18, 18}, {1000, 1000, 1000},
  };
  TestAllocator allocator;
  TFifoBuffer fifo;
  int capacity = 0;
  for (const Row& row : kRows) {
    SCOPED_TRACE(testing::Message() << row.written << " onto " << fifo.GetLength());
    allocator.Reset();
    EXPECT_EQ(row.written, Write(fifo, std::string(static_cast<size_t>(row.written), 'x')));
    EXPECT_EQ(row.capacity, fifo.GetCapacity());
    EXPECT_EQ(row.capacity > capacity ? 1 : 0, allocator.Requests());
    if (row.capacity > capacity) {
      EXPECT_EQ(static_cast<unsigned int>(row.capacity), allocator.LastSize());
    }
    capacity = row.capacity;
    EXPECT_EQ(static_cast<size_t>(row.read), Read(fifo, row.read).size());
    EXPECT_EQ(capacity, fifo.GetCapacity());
  }
}

TEST(FifoBuffer, CountsOfZeroOrLessDoNothing) {
  TestAllocator allocator;
  TFifoBuffer fifo;
  unsigned char byte = '#';
  EXPECT_EQ(0, fifo.Write(&byte, 0));
  EXPECT_EQ(0, fifo.Write(nullptr, 0));
  EXPECT_EQ(0, allocator.Requests());
  Write(fifo, "abc");
  EXPECT_EQ(0, fifo.Read(&byte, 0));
  EXPECT_EQ(0, fifo.Read(nullptr, 0));
  for (int count : kest_test::kNegatives) {
    SCOPED_TRACE(count);
    EXPECT_EQ(0, fifo.Read(&byte, count));
    EXPECT_EQ(0, fifo.Write(&byte, count));
    EXPECT_EQ(3, fifo.GetLength());
    EXPECT_EQ(3, fifo.GetCapacity());
  }
  EXPECT_EQ('#', byte);
  EXPECT_EQ(1, allocator.Requests());
  EXPECT_EQ("abc", Read(fifo, INT_MAX / 1024));
}

TEST(FifoBuffer, ReadsAtMostWhatThereIs) {
  TFifoBuffer fifo;
  unsigned char bytes[3] = {};
  Write(fifo, "abc");
  EXPECT_EQ(3, fifo.Read(bytes, INT_MAX));
  EXPECT_EQ("abc", std::string(bytes, bytes + 3));
  EXPECT_EQ(0, fifo.Read(bytes, INT_MAX));
}

TEST(FifoBuffer, AFailedWriteLeavesTheQueue) {
  TestAllocator allocator;
  {
    TFifoBuffer fifo;
    allocator.Refuse(1, TestAllocator::kOnlyOne);
    EXPECT_EQ(0, Write(fifo, "abc"));
    EXPECT_EQ(0, fifo.GetLength());
    EXPECT_EQ(0, fifo.GetCapacity());
    EXPECT_EQ(3, Write(fifo, "abc"));
    allocator.Refuse(1, TestAllocator::kFromThereOn);
    EXPECT_EQ(0, Write(fifo, "d"));
    EXPECT_EQ(3, fifo.GetLength());
    EXPECT_EQ(3, fifo.GetCapacity());
    EXPECT_EQ("a", Read(fifo, 1));
    EXPECT_EQ(1, Write(fifo, "d")) << "fits without growing";
    EXPECT_EQ("bcd", Read(fifo, 3));
  }
  EXPECT_EQ(0, allocator.Live());
}

TEST(FifoBuffer, ATotalAboveIntMaxFailsWithoutARequest) {
  TestAllocator allocator;
  TFifoBuffer fifo;
  Write(fifo, "abc");
  allocator.Reset();
  unsigned char byte = 0;
  for (int count : {INT_MAX, INT_MAX - 1, INT_MAX - 2}) {
    SCOPED_TRACE(count);
    EXPECT_EQ(0, fifo.Write(&byte, count));
    EXPECT_EQ(0, allocator.Requests());
  }
  allocator.Refuse(1, TestAllocator::kOnlyOne);
  EXPECT_EQ(0, fifo.Write(&byte, INT_MAX - 3));
  EXPECT_EQ(static_cast<unsigned int>(INT_MAX), allocator.LastSize());
  EXPECT_EQ("abc", Read(fifo, 10));
}

TEST(FifoBuffer, AgreesWithADeque) {
  std::mt19937 random(4401);
  TFifoBuffer fifo;
  std::deque<char> model;
  int capacity = 0;
  for (int step = 0; step < 20000; ++step) {
    const int count = static_cast<int>(random() % 64);
    if (random() % 2 != 0) {
      std::string bytes;
      while (static_cast<int>(bytes.size()) < count) bytes += static_cast<char>(random());
      ASSERT_EQ(count, Write(fifo, bytes));
      model.insert(model.end(), bytes.begin(), bytes.end());
      capacity = std::max(capacity, static_cast<int>(model.size()));
    } else {
      const std::string bytes = Read(fifo, count);
      ASSERT_EQ(std::min<size_t>(static_cast<size_t>(count), model.size()), bytes.size());
      const auto end = model.begin() + static_cast<std::ptrdiff_t>(bytes.size());
      ASSERT_EQ(std::string(model.begin(), end), bytes);
      model.erase(model.begin(), end);
    }
    ASSERT_EQ(static_cast<int>(model.size()), fifo.GetLength());
    ASSERT_EQ(capacity, fifo.GetCapacity());
  }
}

TEST(FifoBuffer, CopiesAnyNumberOfBytesFromAndToTheEndsOfPages) {
  kest_test::Random random;
  SCOPED_TRACE(random.Seed());
  for (int count = 1; count <= 200; ++count) {
    for (int backlog : {0, 1, 7, 64}) {
      SCOPED_TRACE(testing::Message() << count << " behind " << backlog);
      const std::vector<unsigned char> bytes = random.Bytes(backlog + count);
      const std::vector<unsigned char> last(bytes.begin() + backlog, bytes.end());
      kest_test::GuardedBlock<unsigned char> source(last);
      kest_test::GuardedBlock<unsigned char> first(backlog), destination(count);
      TFifoBuffer fifo;
      EXPECT_EQ(backlog, fifo.Write(bytes.data(), backlog));
      EXPECT_EQ(count, fifo.Write(source.Get(), count));
      EXPECT_EQ(backlog, fifo.Read(first.Get(), backlog));
      EXPECT_EQ(count, fifo.Read(destination.Get(), count));
      ASSERT_EQ(last, destination.Content());
      ASSERT_TRUE(std::equal(bytes.begin(), bytes.begin() + backlog, first.Get()));
    }
  }
}

}  // namespace
