// What holds for every digest, checked against published vectors, a table made with openssl and a
// plain model that each digest's own test provides.

#ifndef KEST_TESTS_CRYPTO_DIGEST_CHECKS_H
#define KEST_TESTS_CRYPTO_DIGEST_CHECKS_H

#include <gtest/gtest.h>
#include <limits.h>
#include <string.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "kest/digest.h"
#include "support/guarded_block.h"
#include "support/hex.h"
#include "support/random.h"

namespace kest_test {

using Bytes = std::vector<unsigned char>;

struct DigestVector {
  const char* message;
  const char* digest;
};

inline Bytes ToBytes(const char* text) { return Bytes(text, text + strlen(text)); }

// What the tables made with openssl are over: 3, 10, 17, ..., each byte 7 more than the last.
inline Bytes Pattern(int length) {
  Bytes bytes;
  for (int i = 0; i < length; ++i) bytes.push_back(static_cast<unsigned char>(3 + 7 * i));
  return bytes;
}

inline void Feed(KEST::TMessageDigest& digest, const Bytes& bytes) {
  digest.Update(bytes.data(), static_cast<int>(bytes.size()));
}

inline Bytes FinishedBytes(KEST::TMessageDigest& digest) {
  Bytes result(static_cast<size_t>(digest.GetDigestSize()));
  digest.Finish(result.data(), 0);
  return result;
}

inline std::string Finished(KEST::TMessageDigest& digest) { return Hex(FinishedBytes(digest)); }

template <typename Digest>
Bytes DigestOf(const Bytes& message) {
  Digest digest;
  Feed(digest, message);
  return FinishedBytes(digest);
}

template <typename Digest, size_t kCount>
void MatchesVectors(const DigestVector (&vectors)[kCount]) {
  for (const DigestVector& row : vectors) {
    EXPECT_EQ(row.digest, Hex(DigestOf<Digest>(ToBytes(row.message)))) << row.message;
  }
}

// A million times "a": the long vector of FIPS 180-1, fed in pieces of 997 bytes.
template <typename Digest>
std::string DigestOfAMillionLetters() {
  Digest digest;
  const Bytes piece(997, 'a');
  int left = 1000000;
  for (; left > 997; left -= 997) Feed(digest, piece);
  digest.Update(piece.data(), left);
  return Finished(digest);
}

// The digest of the digests of the patterns of 0 to 130 bytes, one after another: every length of
// padding, from one byte into the last block to the start of a third.
template <typename Digest>
std::string DigestOfDigests() {
  Digest all, one;
  for (int length = 0; length <= 130; ++length) {
    Feed(one, Pattern(length));
    Feed(all, FinishedBytes(one));
  }
  return Finished(all);
}

// Each message in one piece, in two pieces cut anywhere, and byte by byte.
template <typename Digest>
void SameDigestForEverySplit() {
  Digest digest;
  for (int length : {1, 55, 56, 63, 64, 65, 128, 200}) {
    SCOPED_TRACE(length);
    const Bytes message = Pattern(length);
    const std::string whole = Hex(DigestOf<Digest>(message));
    for (int cut = 0; cut <= length; ++cut) {
      digest.Update(message.data(), cut);
      digest.Update(message.data() + cut, length - cut);
      ASSERT_EQ(whole, Finished(digest)) << "cut at " << cut;
    }
    for (const unsigned char& byte : message) digest.Update(&byte, 1);
    EXPECT_EQ(whole, Finished(digest)) << "byte by byte";
  }
}

// The length given to Finish is not looked at, and nothing behind the digest is written.
template <typename Digest>
void FinishIgnoresItsLength(int size) {
  const std::string expected = Hex(DigestOf<Digest>(Pattern(70)));
  for (int length : {0, 1, -1, size - 1, size, size + 1, INT_MAX, INT_MIN}) {
    SCOPED_TRACE(length);
    Digest digest;
    Feed(digest, Pattern(70));
    unsigned char out[24];
    memset(out, 0xee, sizeof(out));
    EXPECT_EQ(size, digest.Finish(out, length));
    EXPECT_EQ(size, digest.GetDigestSize());
    EXPECT_EQ(expected, Hex(out, static_cast<size_t>(size)));
    for (size_t i = static_cast<size_t>(size); i < sizeof(out); ++i) EXPECT_EQ(0xee, out[i]);
  }
}

template <typename Digest>
void FinishLeavesItReadyForTheNextMessage() {
  Digest digest;
  for (int length : {3, 64, 0, 100}) {
    Feed(digest, Pattern(length));
    EXPECT_EQ(Hex(DigestOf<Digest>(Pattern(length))), Finished(digest)) << length;
  }
}

template <typename Digest>
void ResetDiscardsTheMessage() {
  for (int length : {1, 63, 64, 100}) {
    Digest digest;
    Feed(digest, Pattern(length));
    digest.Reset();
    Feed(digest, ToBytes("abc"));
    EXPECT_EQ(Hex(DigestOf<Digest>(ToBytes("abc"))), Finished(digest)) << length;
  }
}

template <typename Digest>
void ACopyGoesOnFromTheSameState() {
  const Bytes head = Pattern(75), tail = Pattern(40);
  Bytes message = head;
  message.insert(message.end(), tail.begin(), tail.end());
  Digest digest, assigned;
  Feed(digest, head);
  Digest copy(digest);
  assigned = digest;
  EXPECT_EQ(Hex(DigestOf<Digest>(head)), Finished(digest)) << "the original is not disturbed";
  for (Digest* each : {&copy, &assigned}) {
    Feed(*each, tail);
    EXPECT_EQ(Hex(DigestOf<Digest>(message)), Finished(*each));
  }
}

template <typename Digest>
void DataMayLieAtAnyAddress() {
  const std::string expected = Hex(DigestOf<Digest>(Pattern(200)));
  for (int offset = 0; offset < 64; ++offset) {
    Bytes moved(static_cast<size_t>(offset));
    const Bytes message = Pattern(200);
    moved.insert(moved.end(), message.begin(), message.end());
    Digest digest;
    digest.Update(moved.data() + offset, 200);
    EXPECT_EQ(expected, Finished(digest)) << offset;
  }
}

// For the models: message, a set bit, zeros up to 8 bytes before the end of a block, bit count.
inline Bytes Padded(Bytes message, bool bigEndian) {
  const unsigned long long bits = 8ull * message.size();
  message.push_back(0x80);
  while (message.size() % 64 != 56) message.push_back(0);
  for (int i = 0; i < 8; ++i) {
    message.push_back(static_cast<unsigned char>(bits >> (8 * (bigEndian ? 7 - i : i))));
  }
  return message;
}

// Random messages in random pieces against model, which takes a whole message.
template <typename Digest>
void MatchesTheModel(Bytes (*model)(const Bytes&)) {
  Random random;
  SCOPED_TRACE(random.Seed());
  Digest digest;
  for (int n = 0; n < 10000; ++n) {
    const Bytes message = random.Bytes(random.Between(0, n % 100 == 0 ? 2000 : 200));
    const int length = static_cast<int>(message.size());
    for (int at = 0; at < length;) {
      const int piece = random.Between(0, length - at);
      digest.Update(message.data() + at, piece);
      at += piece;
    }
    ASSERT_EQ(Hex(model(message)), Finished(digest)) << "case " << n << ": " << Hex(message);
  }
}

// Whole messages of every length that end right at memory that cannot be touched, and that begin
// right behind such.
template <typename Digest>
void ReadsNothingBesideTheMessage(Bytes (*model)(const Bytes&)) {
  const long page = sysconf(_SC_PAGESIZE);
  const GuardedBlock<unsigned char> twoPages(2 * page);
  unsigned char* const afterGuard = twoPages.Get() + page;
  mprotect(twoPages.Get(), static_cast<size_t>(page), PROT_NONE);
  for (int length = 0; length <= 300; ++length) {
    const Bytes message = Pattern(length);
    const GuardedBlock<unsigned char> atEnd(message);
    std::copy(message.begin(), message.end(), afterGuard);
    for (const unsigned char* data : {atEnd.Get(), afterGuard}) {
      Digest digest;
      digest.Update(data, length);
      ASSERT_EQ(Hex(model(message)), Finished(digest)) << length;
    }
  }
}

// A host's classes over a digest: one with the digest's own Transform, and one that notes each call
// before it passes it on.
template <typename Digest>
class TShown : public Digest {
 public:
  TShown() { memset(this->buffer, 0xee, sizeof(this->buffer)); }

  std::string Fields() const {
    const unsigned char* bytes = reinterpret_cast<const unsigned char*>(this->state);
    return Hex(bytes, sizeof(this->state) + sizeof(this->bitCount) + sizeof(this->buffer));
  }
  const unsigned char* Buffer() const { return this->buffer; }
};

template <typename Digest>
class TNoted : public TShown<Digest> {
 public:
  void Transform(unsigned int* words, const unsigned char* block) override {
    stateIsOurs = stateIsOurs && words == this->state;
    blocks.push_back(block);
    content.insert(content.end(), block, block + 64);
    Digest::Transform(words, block);
  }

  bool stateIsOurs = true;
  std::vector<const unsigned char*> blocks;
  Bytes content;
};

// Both have the same fields after each call, whatever pieces a message comes in.
template <typename Digest>
void BlocksAtOnceLeaveWhatBlocksOneByOneLeave() {
  Random random;
  SCOPED_TRACE(random.Seed());
  TShown<Digest> atOnce;
  TNoted<Digest> oneByOne;
  for (int n = 0; n < 1000; ++n) {
    for (int pieces = random.Between(0, 4); pieces > 0; --pieces) {
      const Bytes piece = random.Bytes(random.Between(0, n % 2 == 0 ? 400 : 70));
      Feed(atOnce, piece);
      Feed(oneByOne, piece);
      ASSERT_EQ(oneByOne.Fields(), atOnce.Fields()) << "case " << n;
    }
    ASSERT_EQ(Finished(oneByOne), Finished(atOnce)) << "case " << n;
    ASSERT_EQ(oneByOne.Fields(), atOnce.Fields()) << "case " << n;
  }
  EXPECT_TRUE(oneByOne.stateIsOurs);
}

// An override gets the first block in the buffer, the others where the caller has them and the
// padded ones in the buffer again, although it is the digest's own Transform that it calls.
template <typename Digest>
void AnOverrideGetsEachBlock(bool bigEndian) {
  for (int length = 0; length <= 400; ++length) {
    const Bytes message = Pattern(length);
    TNoted<Digest> digest;
    std::vector<const unsigned char*> blocks;
    for (int at = 0; at + 64 <= length; at += 64) {
      blocks.push_back(at == 0 ? digest.Buffer() : message.data() + at);
    }
    for (int padded = length % 64 < 56 ? 1 : 2; padded > 0; --padded) {
      blocks.push_back(digest.Buffer());
    }
    Feed(digest, message);
    ASSERT_EQ(Hex(DigestOf<Digest>(message)), Finished(digest)) << length;
    ASSERT_EQ(blocks, digest.blocks) << length;
    ASSERT_EQ(Padded(message, bigEndian), digest.content) << length;
  }
}

// A digest whose count of earlier bits can be set, and which shows the last block it transforms.
template <typename Digest>
class TLastBlock : public Digest {
 public:
  void SetBitCount(unsigned int low, unsigned int high) {
    this->bitCount[0] = low;
    this->bitCount[1] = high;
  }
  void Transform(unsigned int*, const unsigned char* block) override { memcpy(last, block, 64); }

  unsigned char last[64];
};

// The last 8 bytes of the message 0x0123456789abcde8 bits long, after some bytes already counted.
template <typename Digest>
std::string BitCountInLastBlock() {
  TLastBlock<Digest> digest;
  digest.SetBitCount(0x89abcde8 - 8 * 3, 0x01234567);
  Feed(digest, Pattern(3));
  Finished(digest);
  return Hex(digest.last + 56, 8);
}

// The virtual table as a host compiled earlier sees it: no destructor, three slots.
template <typename Digest>
void VirtualTableIsFixed(int size) {
  static_assert(!std::has_virtual_destructor_v<Digest>);
  static_assert(std::is_copy_constructible_v<Digest> && std::is_copy_assignable_v<Digest>);
  Digest digest, expected;
  void** slots;
  memcpy(&slots, static_cast<const void*>(&digest), sizeof(slots));
  int (*finish)(void*, unsigned char*, int);
  int (*getDigestSize)(const void*);
  void (*transform)(void*, unsigned int*, const unsigned char*);
  memcpy(&finish, slots, sizeof(finish));
  memcpy(&getDigestSize, slots + 1, sizeof(getDigestSize));
  memcpy(&transform, slots + 2, sizeof(transform));

  EXPECT_EQ(size, getDigestSize(&digest));
  unsigned char out[20];
  EXPECT_EQ(size, finish(&digest, out, 0));
  EXPECT_EQ(Finished(expected), Hex(out, static_cast<size_t>(size)));
  unsigned int words[5] = {1, 2, 3, 4, 5}, expectedWords[5] = {1, 2, 3, 4, 5};
  transform(&digest, words, Pattern(64).data());
  expected.Transform(expectedWords, Pattern(64).data());
  EXPECT_EQ(0, memcmp(expectedWords, words, sizeof(words)));
  EXPECT_NE(1u, words[0]);
}

}  // namespace kest_test

#endif  // KEST_TESTS_CRYPTO_DIGEST_CHECKS_H
