// Digests, HMAC and the Internet checksum, fed in pieces, against a whole message at once.

#include <string.h>

#include <type_traits>
#include <variant>

#include "fuzz/steps.h"
#include "kest/digest.h"

namespace {

using KEST::THmac;
using KEST::TInetChecksum;
using KEST::TMessageDigest;
using kest_fuzz::Bytes;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;

using AnyDigest = std::variant<KEST::TMd4Digest, KEST::TMd5Digest, KEST::TShaDigest>;

constexpr int kMostBytes = 150;    // of one piece
constexpr int kMostMessage = 600;  // a longer one is finished before the next step
constexpr size_t kBlock = 64;

AnyDigest MakeDigest(int kind) {
  if (kind == 0) return KEST::TMd4Digest();
  if (kind == 1) return KEST::TMd5Digest();
  return KEST::TShaDigest();
}
TMessageDigest& AsDigest(AnyDigest& digest) {
  return std::visit([](auto& each) -> TMessageDigest& { return each; }, digest);
}

Bytes Joined(Bytes a, const Bytes& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// RFC 1071, on a sum that is folded once.
unsigned short Checksum(unsigned long long sum) {
  while (sum > 0xFFFF) sum = (sum >> 16) + (sum & 0xFFFF);
  return static_cast<unsigned short>(~sum);
}

class Digests {
 public:
  Digests(StepInput& in, Memory&)
      : kind(in.Below(3)),
        size(kind == 2 ? 20 : 16),
        digest(MakeDigest(kind)),
        keyLength(in.Number(66)),
        keyed(keyLength >= 0 && keyLength <= 64),
        hmac(MakeHmac(in)) {}

  void Step(int step, StepInput& in) {
    if (fed.size() > kMostMessage) Finish();
    switch (step % 12) {
      case 0:
      case 1:
        return Update(TakePiece(in));
      case 2:
        return Finish();
      case 3:
        AsDigest(digest).Reset();
        fed.clear();
        return;
      case 4: {
        AnyDigest copy = digest;
        digest = MakeDigest(kind);
        digest = copy;
        return;
      }
      case 5:
      case 6:
        return UpdateHmac(TakePiece(in));
      case 7:
        return FinishHmac(in.Word());
      case 8:
        hmac.Reset();
        started = false;
        return;
      case 9:
      case 10:
        return UpdateChecksum(TakePiece(in));
      default:
        return ConfigureChecksum(in);
    }
  }

 private:
  struct SPiece {
    const unsigned char* data;
    int length;
    Bytes bytes;
  };

  // In memory of exactly its size. A negative length comes with none.
  static SPiece TakePiece(StepInput& in) {
    static kest_fuzz::Guarded<unsigned char, kMostBytes + 2> room;
    const int length = in.Number(kMostBytes);
    Bytes bytes(static_cast<size_t>(length > kMostBytes + 2 ? 0 : std::max(length, 0)));
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = i < 8 ? in.Byte() : bytes[i - 8];
    const unsigned char* data = bytes.empty() ? nullptr : room.Copy(bytes.data(), bytes.size());
    return {data, length > kMostBytes + 2 ? INT_MIN : length, bytes};
  }

  THmac MakeHmac(StepInput& in) {
    const Bytes key = keyed ? in.SomeBytes(255) : Bytes();
    Bytes padded(kBlock);
    std::copy_n(key.begin(), std::min(key.size(), static_cast<size_t>(keyed ? keyLength : 0)),
                padded.begin());
    for (unsigned char byte : padded) {
      inner.push_back(byte ^ 0x36);
      outer.push_back(byte ^ 0x5C);
    }
    return THmac(AsDigest(digest), padded.data(), keyLength);
  }

  Bytes DigestOf(const Bytes& message) const {
    AnyDigest whole = MakeDigest(kind);
    AsDigest(whole).Update(message.data(), static_cast<int>(message.size()));
    Bytes result(static_cast<size_t>(size));
    FUZZ_CHECK(AsDigest(whole).Finish(result.data(), 0) == size);
    return result;
  }

  void Update(const SPiece& piece) {
    AsDigest(digest).Update(piece.data, piece.length);
    fed = Joined(fed, piece.bytes);
  }

  void Finish() {
    static kest_fuzz::Guarded<unsigned char, 20> room;
    unsigned char* result = room.Take(static_cast<size_t>(size));
    FUZZ_CHECK(AsDigest(digest).Finish(result, 0) == size);
    FUZZ_CHECK(Bytes(result, result + size) == DigestOf(fed));
    fed.clear();
  }

  // HMAC feeds the digest that it was given, which may have been fed something already.
  void UpdateHmac(const SPiece& piece) {
    hmac.Update(piece.data, piece.length);
    if (!keyed || piece.length < 0) return;
    if (!started) fed = Joined(fed, inner);
    started = true;
    fed = Joined(fed, piece.bytes);
  }

  void FinishHmac(unsigned int length) {
    static kest_fuzz::Guarded<unsigned char, 20> room;
    unsigned char* code = room.Take(keyed ? static_cast<size_t>(size) : 0);
    FUZZ_CHECK(hmac.Finish(code, static_cast<int>(length)) == (keyed ? size : 0));
    if (!keyed) return;
    FUZZ_CHECK(Bytes(code, code + size) == DigestOf(Joined(outer, DigestOf(fed))));
    fed.clear();
    started = false;
  }

  void UpdateChecksum(const SPiece& piece) {
    // After an odd number of bytes a length of 0 takes a byte all the same.
    const unsigned char one = 0xAB;
    const bool takesOne = odd && piece.length == 0;
    checksum.Update(takesOne ? &one : piece.data, piece.length);
    if (takesOne) {
      Add(one);
    } else {
      for (unsigned char byte : piece.bytes) Add(byte);
    }
    FUZZ_CHECK(checksum.GetCurrent() == Checksum(sum));
    if (!piece.bytes.empty()) {
      unsigned long long alone = 0;
      for (size_t i = 0; i < piece.bytes.size(); ++i) {
        alone += i % 2 == 0 ? piece.bytes[i] * 256u : piece.bytes[i];
      }
      FUZZ_CHECK(KestComputeChecksum(piece.data, piece.length) == Checksum(alone));
    }
  }
  void Add(unsigned char byte) {
    sum += odd ? byte : byte * 256u;
    odd = !odd;
  }

  void ConfigureChecksum(StepInput& in) {
    switch (in.Below(3)) {
      case 0:
        checksum.Reset();
        break;
      case 1:
        FUZZ_CHECK(checksum.Finish() == Checksum(sum));
        break;
      default: {
        const unsigned short current = in.Unit();
        const int length = in.Number(3);
        checksum.SetCurrent(current, length);
        sum = static_cast<unsigned short>(~current);
        odd = length % 2 != 0;
        return;
      }
    }
    sum = 0;
    odd = false;
  }

  const int kind;
  const int size;
  AnyDigest digest;
  Bytes fed;  // what the digest has been fed since its last end

  const int keyLength;
  const bool keyed;
  Bytes inner, outer;  // the key, as HMAC feeds it
  THmac hmac;
  bool started = false;  // the digest has been fed inner

  TInetChecksum checksum;
  unsigned long long sum = 0;
  bool odd = false;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Digests>(data, size, 40);
}
