#include "crypto/cipher_checks.h"

#include <type_traits>

namespace {

using namespace kest_test;
using namespace KEST;

static_assert(sizeof(TCipher::ECipherOp) == 4 && sizeof(TBlockCipher::ECipherMode) == 4);
static_assert(TCipher::kOpEncrypt == 0 && TCipher::kOpDecrypt == 1);
static_assert(TBlockCipher::kModeCbc == 0 && TBlockCipher::kModeEcb == 1);
static_assert(std::is_abstract_v<TCipher> && std::is_abstract_v<TBlockCipher>);
static_assert(std::is_abstract_v<TStreamCipher> && std::is_abstract_v<TRsaCipher>);
static_assert(std::has_virtual_destructor_v<TCipher>);

// Each base made concrete.
template <typename Base>
class TLeast : public Base {
 public:
  using Base::op;
  TLeast() = default;
  explicit TLeast(TCipher::ECipherOp direction) : Base(direction) {}
  int BerInit(const unsigned char*, int) override { return 2; }
  int BerDump(unsigned char*, int) override { return 3; }
};
class TLeastCipher : public TLeast<TCipher> {
 public:
  using TLeast::TLeast;
  int GetType() override { return 4; }
  int ProcessData(unsigned char*, int, bool) override { return 5; }
};
class TLeastBlock : public TLeast<TBlockCipher> {
 public:
  using TBlockCipher::chain;
  using TBlockCipher::iv;
  using TBlockCipher::mode;
  using TLeast::TLeast;
  void ProcessBlock(unsigned char* block) const override { block[0] ^= 1; }
  int GetBlockSize() const override { return 8; }
};
class TLeastStream : public TLeast<TStreamCipher> {
 public:
  using TLeast::TLeast;
  void ProcessStream(unsigned char*, int) override {}
  void Reset() override {}
};
class TLeastRsa : public TLeast<TRsaCipher> {
 public:
  using TLeast::TLeast;
  int ProcessData(unsigned char*, int, bool) override { return 5; }
};

template <typename Cipher>
void KeepsItsDirection() {
  EXPECT_EQ(kEncrypt, Cipher().op) << "without a direction";
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt, kOddOp, static_cast<TCipher::ECipherOp>(-1)}) {
    EXPECT_EQ(op, Cipher(op).op);
  }
}

TEST(Cipher, KeepsItsDirection) {
  KeepsItsDirection<TLeastCipher>();
  KeepsItsDirection<TLeastBlock>();
  KeepsItsDirection<TLeastStream>();
  KeepsItsDirection<TLeastRsa>();
}

TEST(Cipher, TypesAreNumbered) {
  const unsigned char key[8] = {};
  TDesCipher des(kEncrypt, key, 8);
  TRc2Cipher rc2(kEncrypt, key, 8, 64);
  TRc4Cipher rc4(kEncrypt, key, 8);
  TLeastRsa rsa;
  TLeastBlock block;
  TLeastStream stream;
  EXPECT_EQ(0, static_cast<TCipher&>(rsa).GetType());
  for (TCipher* cipher :
       {static_cast<TCipher*>(&des), static_cast<TCipher*>(&rc2), static_cast<TCipher*>(&block)}) {
    EXPECT_EQ(1, cipher->GetType());
  }
  for (TCipher* cipher : {static_cast<TCipher*>(&rc4), static_cast<TCipher*>(&stream)}) {
    EXPECT_EQ(2, cipher->GetType());
  }
}

TEST(Cipher, ABlockCipherStartsInCbcFromZeros) {
  alignas(TLeastBlock) unsigned char place[sizeof(TLeastBlock)];
  for (TCipher::ECipherOp op : {kEncrypt, kDecrypt}) {
    memset(place, 0xee, sizeof(place));
    TLeastBlock* cipher = ::new (place) TLeastBlock(op);
    EXPECT_EQ(kCbc, cipher->mode);
    EXPECT_EQ("0000000000000000", Hex(cipher->iv, 8));
    EXPECT_EQ("0000000000000000", Hex(cipher->chain, 8));
    cipher->~TLeastBlock();
  }
}

TEST(Cipher, VirtualFunctionsHaveTheirSlots) {
  EXPECT_EQ(2u, SlotOf(&TCipher::BerInit));
  EXPECT_EQ(3u, SlotOf(&TCipher::BerDump));
  EXPECT_EQ(4u, SlotOf(&TCipher::GetType));
  EXPECT_EQ(5u, SlotOf(&TCipher::ProcessData));
  EXPECT_EQ(4u, SlotOf(&TBlockCipher::GetType));
  EXPECT_EQ(5u, SlotOf(&TBlockCipher::ProcessData));
  EXPECT_EQ(6u, SlotOf(&TBlockCipher::ProcessBlock));
  EXPECT_EQ(7u, SlotOf(&TBlockCipher::GetBlockSize));
  EXPECT_EQ(4u, SlotOf(&TStreamCipher::GetType));
  EXPECT_EQ(5u, SlotOf(&TStreamCipher::ProcessData));
  EXPECT_EQ(6u, SlotOf(&TStreamCipher::ProcessStream));
  EXPECT_EQ(7u, SlotOf(&TStreamCipher::Reset));
  EXPECT_EQ(4u, SlotOf(&TRsaCipher::GetType));
  EXPECT_EQ(2u, SlotOf(&TDesCipher::BerInit));
  EXPECT_EQ(3u, SlotOf(&TDesCipher::BerDump));
  EXPECT_EQ(6u, SlotOf(&TDesCipher::ProcessBlock));
  EXPECT_EQ(7u, SlotOf(&TDesCipher::GetBlockSize));
  EXPECT_EQ(2u, SlotOf(&TRc2Cipher::BerInit));
  EXPECT_EQ(3u, SlotOf(&TRc2Cipher::BerDump));
  EXPECT_EQ(6u, SlotOf(&TRc2Cipher::ProcessBlock));
  EXPECT_EQ(7u, SlotOf(&TRc2Cipher::GetBlockSize));
  EXPECT_EQ(2u, SlotOf(&TRc4Cipher::BerInit));
  EXPECT_EQ(3u, SlotOf(&TRc4Cipher::BerDump));
  EXPECT_EQ(6u, SlotOf(&TRc4Cipher::ProcessStream));
  EXPECT_EQ(7u, SlotOf(&TRc4Cipher::Reset));
}

// GetType and ProcessData are the bases' own; the rest is not.
TEST(Cipher, ConcreteCiphersInheritWhatTheBasesFill) {
  const unsigned char key[8] = {};
  const TDesCipher des(kEncrypt, key, 8);
  const TRc2Cipher rc2(kEncrypt, key, 8, 64);
  const TRc4Cipher rc4(kEncrypt, key, 8);
  const TLeastBlock block;
  const TLeastStream stream;
  for (size_t slot = 0; slot < 8; ++slot) {
    const bool inherited = slot == 4 || slot == 5;
    EXPECT_EQ(inherited, TableOf(&block)[slot] == TableOf(&des)[slot]) << slot;
    EXPECT_EQ(inherited, TableOf(&block)[slot] == TableOf(&rc2)[slot]) << slot;
    EXPECT_EQ(inherited, TableOf(&stream)[slot] == TableOf(&rc4)[slot]) << slot;
  }
}

int s_destroyed, s_deleted;

class TMortal : public TLeastCipher {
 public:
  ~TMortal() override { ++s_destroyed; }
  void* operator new(size_t size) { return ::operator new(size); }
  void operator delete(void* memory) {
    ++s_deleted;
    ::operator delete(memory);
  }
};

TEST(Cipher, TheDestructorComesFirstInTheTable) {
  s_destroyed = s_deleted = 0;
  TMortal* mortal = new TMortal;
  void (*destroy)(void*);
  memcpy(&destroy, TableOf(mortal), sizeof(destroy));
  destroy(mortal);
  EXPECT_EQ(1, s_destroyed);
  EXPECT_EQ(0, s_deleted);

  ::new (static_cast<void*>(mortal)) TMortal;
  memcpy(&destroy, TableOf(mortal) + 1, sizeof(destroy));
  destroy(mortal);
  EXPECT_EQ(2, s_destroyed);
  EXPECT_EQ(1, s_deleted);
}

TEST(Cipher, IsDestroyedThroughTheRoot) {
  s_destroyed = s_deleted = 0;
  TCipher* cipher = new TMortal;
  delete cipher;
  EXPECT_EQ(1, s_destroyed);
  EXPECT_EQ(1, s_deleted);
}

}  // namespace
