// Runs of many blocks, which the ciphers here do together, beside their ProcessBlock on one block
// after the other.

#include "crypto/cipher_checks.h"
#include "support/guarded_block.h"

namespace {

using namespace kest_test;
using KEST::TBlockCipher;
using KEST::TCipher;
using KEST::TDesCipher;
using KEST::TRc2Cipher;

const Bytes kKey = FromHex("88bca90e90875a7f0f79c384627bafb2");
const Bytes kVector = FromHex("1234567890abcdef");

class TOpenDes : public TDesCipher {
 public:
  explicit TOpenDes(TCipher::ECipherOp direction) : TDesCipher(direction, kKey.data(), 8) {}
  using TBlockCipher::chain;
  using TBlockCipher::iv;
};

class TOpenRc2 : public TRc2Cipher {
 public:
  explicit TOpenRc2(TCipher::ECipherOp direction) : TRc2Cipher(direction, kKey.data(), 16, 128) {}
  using TBlockCipher::chain;
  using TBlockCipher::iv;
};

// What a call without final makes of whole blocks, and of the chain.
Bytes OneByOne(const TBlockCipher& cipher, bool encrypts, bool cbc, Bytes data, Bytes& chain) {
  for (size_t at = 0; at < data.size(); at += 8) {
    unsigned char* block = data.data() + at;
    const Bytes before(block, block + 8);
    if (cbc && encrypts) TBlockCipher::XorBlock(block, chain.data(), 8);
    cipher.ProcessBlock(block);
    if (cbc && !encrypts) TBlockCipher::XorBlock(block, chain.data(), 8);
    if (cbc) chain = encrypts ? Bytes(block, block + 8) : before;
  }
  return data;
}

// The numbers of blocks at which any version of a run changes its course.
std::vector<int> Counts(Random& random) {
  std::vector<int> counts;
  for (int count = 0; count <= 80; ++count) counts.push_back(count);
  for (int whole : {96, 128, 256, 384, 512, 1024}) {
    for (int count = whole - 2; count <= whole + 2; ++count) counts.push_back(count);
  }
  for (int n = 0; n < 10; ++n) counts.push_back(random.Between(80, 1200));
  return counts;
}

template <typename Cipher>
void MatchesOneByOne(TCipher::ECipherOp op, bool encrypts, bool cbc) {
  SCOPED_TRACE(testing::Message() << "op " << op << (encrypts ? " encrypts" : " decrypts")
                                  << (cbc ? " cbc" : " ecb"));
  Random random;
  SCOPED_TRACE(random.Seed());
  Cipher cipher(op);
  cipher.SetMode(cbc ? kCbc : kEcb);
  cipher.SetIv(kVector.data());
  Bytes chain = kVector;
  for (int count : Counts(random)) {
    const Bytes data = random.Bytes(8 * count);
    const Bytes expected = OneByOne(cipher, encrypts, cbc, data, chain);
    // Ends where the page does, and a random distance before.
    const GuardedBlock<unsigned char> place(8 * count +
                                            random.Between(0, 1) * random.Between(0, 70));
    unsigned char* const begin = place.Get();
    if (count != 0) memcpy(begin, data.data(), data.size());
    ASSERT_EQ(8 * count, encrypts ? cipher.EncryptData(begin, 8 * count, false)
                                  : cipher.DecryptData(begin, 8 * count, false));
    ASSERT_EQ(expected, Bytes(begin, begin + data.size())) << count;
    ASSERT_EQ(chain, Bytes(cipher.chain, cipher.chain + 8)) << count;
    ASSERT_EQ(kVector, Bytes(cipher.iv, cipher.iv + 8)) << count;
    for (unsigned char byte : place.Content().empty()
                                  ? Bytes()
                                  : Bytes(begin + data.size(), begin + place.Content().size())) {
      ASSERT_EQ(0, byte) << "behind " << count;
    }
  }
}

template <typename Cipher>
void MatchesOneByOneInEveryWay() {
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt, kOddOp}) {
    for (bool encrypts : {false, true}) {
      for (bool cbc : {false, true}) MatchesOneByOne<Cipher>(op, encrypts, cbc);
    }
  }
}

TEST(BlockRuns, DesMatchesOneByOne) { MatchesOneByOneInEveryWay<TOpenDes>(); }

TEST(BlockRuns, Rc2MatchesOneByOne) { MatchesOneByOneInEveryWay<TOpenRc2>(); }

// Every key bit, and every bit of a block, at every place in a run.
TEST(BlockRuns, DesMatchesOneByOneUnderAnyKey) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(200); n < cases; ++n) {
    const TDesCipher cipher(n % 2 == 0 ? kEncrypt : kDecrypt, random.Bytes(8).data(), 8);
    const Bytes data = random.Bytes(8 * random.Between(30, 150));
    Bytes chain;
    TDesCipher copy(cipher);
    copy.SetMode(kEcb);
    ASSERT_EQ(OneByOne(cipher, false, false, data, chain), Process(copy, data, false)) << n;
  }
}

TEST(BlockRuns, Rc2MatchesOneByOneUnderAnyKey) {
  Random random;
  SCOPED_TRACE(random.Seed());
  for (int n = 0, cases = Random::Cases(200); n < cases; ++n) {
    const int length = random.Between(1, 128);
    const TRc2Cipher cipher(n % 2 == 0 ? kEncrypt : kDecrypt, random.Bytes(length).data(), length,
                            random.Between(1, 1024));
    const Bytes data = random.Bytes(8 * random.Between(30, 150));
    Bytes chain;
    TRc2Cipher copy(cipher);
    copy.SetMode(kEcb);
    ASSERT_EQ(OneByOne(cipher, false, false, data, chain), Process(copy, data, false)) << n;
  }
}

// A message of several calls, padded, there and back.
template <typename Cipher>
void GoesThereAndBack() {
  Random random;
  for (bool cbc : {false, true}) {
    for (int length : {0, 1, 7, 8, 1000, 1024, 4095, 4096, 4097, 8192, 9000}) {
      SCOPED_TRACE(length);
      const Bytes message = random.Bytes(length);
      Cipher forth(kEncrypt), back(kDecrypt);
      for (TBlockCipher* cipher :
           {static_cast<TBlockCipher*>(&forth), static_cast<TBlockCipher*>(&back)}) {
        cipher->SetMode(cbc ? kCbc : kEcb);
        cipher->SetIv(kVector.data());
      }
      const Bytes whole = Process(forth, message, true);
      EXPECT_EQ(kVector, Bytes(forth.chain, forth.chain + 8)) << "final starts anew";
      const long half = static_cast<long>(message.size() / 16 * 8);
      Bytes parts = Process(forth, Bytes(message.begin(), message.begin() + half), false);
      const Bytes rest = Process(forth, Bytes(message.begin() + half, message.end()), true);
      parts.insert(parts.end(), rest.begin(), rest.end());
      ASSERT_EQ(whole, parts);
      ASSERT_EQ(message, Process(back, whole, true));
      EXPECT_EQ(kVector, Bytes(back.chain, back.chain + 8));
    }
  }
}

TEST(BlockRuns, DesGoesThereAndBack) { GoesThereAndBack<TOpenDes>(); }

TEST(BlockRuns, Rc2GoesThereAndBack) { GoesThereAndBack<TOpenRc2>(); }

// A host's own classes above ours.
template <typename Cipher>
class TCounting : public Cipher {
 public:
  using Cipher::Cipher;
  void ProcessBlock(unsigned char* block) const override {
    ++calls;
    Cipher::ProcessBlock(block);
    block[0] ^= 1;
  }
  mutable int calls = 0;
};

template <typename Cipher>
class TShort : public Cipher {
 public:
  using Cipher::Cipher;
  int GetBlockSize() const override { return 4; }
};

template <typename Cipher>
void AnOverrideGetsEachBlock() {
  Random random;
  for (bool encrypts : {false, true}) {
    for (bool cbc : {false, true}) {
      const Bytes data = random.Bytes(8 * 300);
      TCounting<Cipher> cipher(kDecrypt);
      cipher.SetMode(cbc ? kCbc : kEcb);
      Bytes chain(8), result = data;
      const Bytes expected = OneByOne(TCounting<Cipher>(kDecrypt), encrypts, cbc, data, chain);
      encrypts ? cipher.EncryptData(result.data(), 2400, false)
               : cipher.DecryptData(result.data(), 2400, false);
      EXPECT_EQ(expected, result);
      EXPECT_EQ(300, cipher.calls);
    }
  }
}

TEST(BlockRuns, AnOverrideOfDesGetsEachBlock) { AnOverrideGetsEachBlock<TOpenDes>(); }

TEST(BlockRuns, AnOverrideOfRc2GetsEachBlock) { AnOverrideGetsEachBlock<TOpenRc2>(); }

// Each block reaches into the next one.
template <typename Cipher>
void AnOverriddenBlockSizeIsKept() {
  Random random;
  const Cipher plain(kEncrypt);
  TShort<Cipher> cipher(kEncrypt);
  cipher.SetMode(kEcb);
  Bytes data = random.Bytes(4 * 600 + 4), expected = data;
  for (size_t at = 0; at < 4 * 600; at += 4) plain.ProcessBlock(expected.data() + at);
  EXPECT_EQ(2400, cipher.EncryptData(data.data(), 2400, false));
  EXPECT_EQ(expected, data);
}

TEST(BlockRuns, AnOverriddenBlockSizeOfDesIsKept) { AnOverriddenBlockSizeIsKept<TOpenDes>(); }

TEST(BlockRuns, AnOverriddenBlockSizeOfRc2IsKept) { AnOverriddenBlockSizeIsKept<TOpenRc2>(); }

TBlockCipher* s_cipher;
Bytes s_data;

void DecryptData() { s_cipher->ProcessData(s_data.data(), static_cast<int>(s_data.size()), false); }

// What decryption of a run leaves on the stack. It has been done once before, because the dynamic
// linker saves registers there when a function is called for the first time.
Bytes StackAfterDecrypting(TBlockCipher& cipher, const Bytes& data) {
  s_cipher = &cipher;
  s_data = data;
  DecryptData();
  cipher.SetIv(nullptr);
  s_data = data;
  return StackAfter(DecryptData);
}

template <typename Cipher>
void LeavesNoMessageOnTheStack() {
  Random random;
  for (bool cbc : {false, true}) {
    Cipher forth(kEncrypt), back(kDecrypt);
    forth.SetMode(cbc ? kCbc : kEcb);
    back.SetMode(cbc ? kCbc : kEcb);
    const Bytes message = random.Bytes(8 * 512);
    const Bytes stack = StackAfterDecrypting(back, Process(forth, message, false));
    ASSERT_EQ(message, s_data);
    for (size_t at = 0; at < message.size(); at += 64) {
      EXPECT_FALSE(Holds(stack, message.data() + at, 16)) << at;
    }
  }
}

TEST(BlockRuns, DesLeavesNoMessageOnTheStack) { LeavesNoMessageOnTheStack<TOpenDes>(); }

TEST(BlockRuns, Rc2LeavesNoMessageOnTheStack) { LeavesNoMessageOnTheStack<TOpenRc2>(); }

// The schedule, which lies behind the fields of the base, as it is and with each bit of a word
// spread out to a word of its own.
TEST(BlockRuns, DesLeavesNoScheduleOnTheStack) {
  TOpenDes cipher(kDecrypt);
  const Bytes stack = StackAfterDecrypting(cipher, Counting(8 * 512));
  for (size_t word = 0; word < 32; ++word) {
    unsigned int value;
    memcpy(&value, reinterpret_cast<const char*>(&cipher) + sizeof(TBlockCipher) + 4 * word, 4);
    int spread[32];
    for (int bit = 0; bit < 32; ++bit) spread[bit] = (value >> bit & 1) != 0 ? -1 : 0;
    EXPECT_FALSE(Holds(stack, spread, sizeof(spread))) << word;
  }
}

}  // namespace
