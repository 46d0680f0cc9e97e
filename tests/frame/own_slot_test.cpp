// Which function a slot holds, for classes of the library and for classes that a host makes of
// them.

#include "frame/own_slot.h"

#include <gtest/gtest.h>

#include "kest/crypto.h"
#include "kest/digest.h"

namespace {

using KEST::IsOwn;
using KEST::TBlockCipher;
using KEST::TCipher;
using KEST::TDesCipher;
using KEST::TMd4Digest;
using KEST::TMd5Digest;
using KEST::TMessageDigest;

bool IsMd5(const TMessageDigest& digest) {
  return IsOwn<&TMessageDigest::Transform, TMd5Digest>(digest);
}

class TDerived : public TMd5Digest {};

// Overrides a slot, but another one.
class TLongDigest : public TMd5Digest {
 public:
  int GetDigestSize() const override { return 99; }
};

class TOverridden : public TMd5Digest {
 public:
  void Transform(unsigned int*, const unsigned char*) override {}
};

class TPassedOn : public TMd5Digest {
 public:
  void Transform(unsigned int* words, const unsigned char* block) override {
    TMd5Digest::Transform(words, block);
  }
};

class TDerivedFromOverridden : public TOverridden {};

// The digest is not at the start of the object and has slots of its own.
struct SFirst {
  virtual int First() { return 1; }
};
class TSecondBase : public SFirst, public TMd5Digest {};
class TSecondBaseOverridden : public SFirst, public TMd5Digest {
 public:
  void Transform(unsigned int*, const unsigned char*) override {}
};

template <typename Digest>
bool IsMd5Object() {
  const Digest digest;
  return IsMd5(digest);
}

TEST(OwnSlot, IsOwnUntilTheSlotIsOverridden) {
  EXPECT_TRUE(IsMd5Object<TMd5Digest>());
  EXPECT_TRUE(IsMd5Object<TDerived>());
  EXPECT_TRUE(IsMd5Object<TLongDigest>());
  EXPECT_TRUE(IsMd5Object<TSecondBase>());
}

TEST(OwnSlot, AnOverrideIsNotOwn) {
  EXPECT_FALSE(IsMd5Object<TOverridden>());
  EXPECT_FALSE(IsMd5Object<TPassedOn>()) << "although it only passes the call on";
  EXPECT_FALSE(IsMd5Object<TDerivedFromOverridden>());
  EXPECT_FALSE(IsMd5Object<TSecondBaseOverridden>());
}

TEST(OwnSlot, AnotherClassIsNotOwn) { EXPECT_FALSE(IsMd5Object<TMd4Digest>()); }

TEST(OwnSlot, EachSlotIsLookedAtByItself) {
  const TMd5Digest plain;
  const TLongDigest other;
  const TOverridden overridden;
  const auto isOwnSize = [](const TMessageDigest& digest) {
    return IsOwn<&TMessageDigest::GetDigestSize, TMd5Digest>(digest);
  };
  EXPECT_TRUE(isOwnSize(plain));
  EXPECT_FALSE(isOwnSize(other));
  EXPECT_TRUE(isOwnSize(overridden));
}

// What the slot holds counts, whatever the object was made as.
TEST(OwnSlot, FollowsAnObjectThroughItsConstruction) {
  struct SRecorder : TMd5Digest {
    SRecorder() : inBase(IsMd5(*this)) {}
    bool inBase;
  };
  struct SOverride : SRecorder {
    void Transform(unsigned int*, const unsigned char*) override {}
  };
  const SOverride object;
  EXPECT_TRUE(object.inBase);
  EXPECT_FALSE(IsMd5(object));
}

class TCountedDes : public TDesCipher {
 public:
  using TDesCipher::TDesCipher;
  void ProcessBlock(unsigned char* block) const override { TDesCipher::ProcessBlock(block); }
};

// An owner that is made of arguments.
TEST(OwnSlot, PassesArgumentsToTheOwner) {
  const unsigned char key[8] = {};
  const TDesCipher plain(TCipher::kOpEncrypt, key, 8);
  const TCountedDes counted(TCipher::kOpEncrypt, key, 8);
  const auto isDes = [&](const TBlockCipher& cipher) {
    return IsOwn<&TBlockCipher::ProcessBlock, TDesCipher>(cipher, TCipher::kOpDecrypt, key, 8);
  };
  for (int n = 0; n < 2; ++n) {
    EXPECT_TRUE(isDes(plain));
    EXPECT_FALSE(isDes(counted));
  }
}

}  // namespace
