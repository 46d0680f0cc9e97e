// The ciphers against plain chaining, padding and keystream: a message in pieces of any length, in
// place, into another buffer or into one that overlaps.

#include <string.h>

#include <array>
#include <type_traits>
#include <utility>
#include <variant>

#include "fuzz/steps.h"
#include "kest/crypto.h"

namespace {

using KEST::TBlockCipher;
using KEST::TCipher;
using KEST::TStreamCipher;
using kest_fuzz::Bytes;
using kest_fuzz::Memory;
using kest_fuzz::StepInput;

constexpr int kMostBytes = 64;  // of one call

// A block cipher of a host's, which shows the engine at every block size: it swaps the ends of a
// block and adds a key byte to each byte.
class THostCipher : public TBlockCipher {
 public:
  THostCipher(ECipherOp direction, int size, unsigned char keyByte)
      : TBlockCipher(direction), blockSize(size), key(keyByte) {}

  int BerInit(const unsigned char*, int) override { return 0; }
  int BerDump(unsigned char*, int) override { return 0; }
  int GetBlockSize() const override { return blockSize; }
  void ProcessBlock(unsigned char* block) const override {
    std::swap(block[0], block[blockSize - 1]);
    const int added = op == kOpEncrypt ? key : -key;
    for (int i = 0; i < blockSize; ++i) block[i] = static_cast<unsigned char>(block[i] + added);
  }

 private:
  int blockSize;
  unsigned char key;
};

// What the calls of a block cipher should give. Process works the next len bytes of a message into
// data, which has room for a block more, and returns what the call does.
class BlockModel {
 public:
  // cipher does single blocks.
  BlockModel(const TBlockCipher* cipher, bool decrypts, int blockSize)
      : raw(cipher), decrypting(decrypts), size(blockSize) {}

  void SetMode(int newMode) { mode = newMode; }
  void SetIv(const unsigned char* vector) {
    if (!IsUsable()) return;
    for (int i = 0; i < size; ++i) iv[i] = chain[i] = vector != nullptr ? vector[i] : 0;
  }
  // Any other mode does nothing.
  bool IsKnownMode() const {
    return mode == TBlockCipher::kModeCbc || mode == TBlockCipher::kModeEcb;
  }

  int Process(unsigned char* data, int len, bool final) {
    if (!IsUsable() || len < 0) return 0;
    const bool padded = final && !decrypting;
    if (len % size != 0 && !padded) return 0;
    const int total = padded ? len / size * size + size : len;
    if (!IsKnownMode()) return total;
    for (int i = len; i < total; ++i) data[i] = static_cast<unsigned char>(total - len);
    for (int at = 0; at < total; at += size) OneBlock(data + at);
    if (final && mode == TBlockCipher::kModeCbc) std::copy_n(iv, 8, chain);
    if (!final || padded || len == 0) return total;
    return total - std::min<int>(size, data[total - 1]);
  }

 private:
  bool IsUsable() const { return size >= 1 && size <= 8; }

  void OneBlock(unsigned char* block) {
    unsigned char ciphertext[8];
    const bool chained = mode == TBlockCipher::kModeCbc;
    std::copy_n(block, size, ciphertext);
    for (int i = 0; chained && !decrypting && i < size; ++i) block[i] ^= chain[i];
    raw->ProcessBlock(block);
    for (int i = 0; chained && decrypting && i < size; ++i) block[i] ^= chain[i];
    if (!decrypting) std::copy_n(block, size, ciphertext);
    if (chained) std::copy_n(ciphertext, size, chain);
  }

  const TBlockCipher* raw;
  bool decrypting;
  int size;
  int mode = TBlockCipher::kModeCbc;
  unsigned char iv[8] = {}, chain[8] = {};
};

// The keystream, byte by byte.
class StreamModel {
 public:
  explicit StreamModel(const Bytes& key) {
    for (unsigned int n = 0; n < 256; ++n) keyed[n] = static_cast<unsigned char>(n);
    for (unsigned int n = 0, other = 0; n < 256; ++n) {
      other = (other + keyed[n] + key[n % key.size()]) % 256;
      std::swap(keyed[n], keyed[other]);
    }
    Reset();
  }
  int Process(unsigned char* data, int len, bool final) {
    if (len < 0) return 0;
    for (int at = 0; at < len; ++at) {
      i = (i + 1) % 256;
      j = (j + state[i]) % 256;
      std::swap(state[i], state[j]);
      data[at] ^= state[(state[i] + state[j]) % 256u];
    }
    if (final) Reset();
    return len;
  }

 private:
  void Reset() {
    state = keyed;
    i = j = 0;
  }

  std::array<unsigned char, 256> keyed, state;
  unsigned int i, j;
};

using AnyCipher = std::variant<KEST::TDesCipher, KEST::TRc2Cipher, KEST::TRc4Cipher, THostCipher>;
enum EKind { kDes, kRc2, kRc4, kHost, kKinds };

// Null for a stream cipher.
const TBlockCipher* AsBlockCipher(const AnyCipher& cipher) {
  return std::visit(
      [](const auto& each) -> const TBlockCipher* {
        if constexpr (std::is_base_of_v<TBlockCipher, std::decay_t<decltype(each)>>) return &each;
        return nullptr;
      },
      cipher);
}
TCipher& AsCipher(AnyCipher& cipher) {
  return std::visit([](auto& each) -> TCipher& { return each; }, cipher);
}

// In CBC with a vector of zeros, as a block cipher is from the start.
KEST::TCrypter CrypterOf(AnyCipher& cipher) {
  return std::visit(
      [](auto& each) {
        if constexpr (std::is_base_of_v<TStreamCipher, std::decay_t<decltype(each)>>) {
          return KEST::TCrypter(each);
        } else {
          return KEST::TCrypter(each, TBlockCipher::kModeCbc, nullptr);
        }
      },
      cipher);
}

// A cipher and its key, from which it can be made in any direction.
struct SKind {
  int kind, keyLength, effectiveBits, blockSize;
  Bytes key;

  explicit SKind(StepInput& in)
      : kind(in.Below(kKinds)), keyLength(in.Number(20)), effectiveBits(in.Number(140)) {
    blockSize = kind == kHost ? keyLength % 11 : 8;
    // As much of a key as the cipher reads.
    key.resize(
        static_cast<size_t>(kind == kDes ? 8 : std::clamp(keyLength, 1, kind == kRc2 ? 128 : 256)));
    for (unsigned char& byte : key) byte = in.Byte();
  }

  AnyCipher Make(TCipher::ECipherOp op) const {
    switch (kind) {
      case kDes:
        return KEST::TDesCipher(op, key.data(), keyLength);
      case kRc2:
        return KEST::TRc2Cipher(op, key.data(), keyLength, effectiveBits);
      case kRc4:
        return KEST::TRc4Cipher(op, key.data(), keyLength);
      default:
        return THostCipher(op, blockSize, key[0]);
    }
  }
};

class Ciphers {
 public:
  Ciphers(StepInput& in, Memory&)
      : kind(in),
        op(static_cast<TCipher::ECipherOp>(in.Below(3))),
        cipher(kind.Make(op)),
        raw(kind.Make(op)),
        opposite(kind.Make(op == TCipher::kOpEncrypt ? TCipher::kOpDecrypt : TCipher::kOpEncrypt)),
        crypter(CrypterOf(cipher)),
        blocks(AsBlockCipher(raw), op != TCipher::kOpEncrypt, kind.blockSize),
        stream(kind.key) {}

  void Step(int step, StepInput& in) {
    switch (step % 8) {
      case 0:
        return Configure(in);
      case 1: {
        // A copy goes on from the same place, made or assigned.
        AnyCipher copy = cipher;
        cipher = kind.Make(op);
        cipher = copy;
        return;
      }
      case 2:
        return Dump(in.Number(32));
      case 3:
        return UndoOneBlock(in);
      default:
        return Process(step % 4, in);
    }
  }

 private:
  bool IsStream() const { return kind.kind == kRc4; }

  void Configure(StepInput& in) {
    if (IsStream()) return;
    TBlockCipher& block = static_cast<TBlockCipher&>(AsCipher(cipher));
    const int mode = in.Below(3);
    const Bytes bytes = in.SomeBytes(8);
    unsigned char vector[8] = {};
    std::copy(bytes.begin(), bytes.end(), vector);
    const unsigned char* given = in.Below(4) != 0 ? vector : nullptr;
    const bool throughCrypter = in.Bool();
    const bool setMode = throughCrypter || in.Bool();
    if (throughCrypter) {
      KEST::TCrypter(block, static_cast<TBlockCipher::ECipherMode>(mode), given);
    } else if (setMode) {
      block.SetMode(static_cast<TBlockCipher::ECipherMode>(mode));
    } else {
      block.SetIv(given);
    }
    if (setMode) blocks.SetMode(mode);
    if (throughCrypter || !setMode) blocks.SetIv(given);
  }

  void Dump(int size) {
    static kest_fuzz::Guarded<unsigned char, 40> room;
    TCipher& each = AsCipher(cipher);
    FUZZ_CHECK(each.GetType() == (IsStream() ? 2 : 1));
    FUZZ_CHECK(each.BerInit(kind.key.data(), static_cast<int>(kind.key.size())) == 0);
    if (size > 40) return;
    unsigned char* buffer = room.Take(static_cast<size_t>(std::max(size, 0)));
    const int written = each.BerDump(buffer, size);
    FUZZ_CHECK(written == 0 || (written <= size && buffer[0] == 0x30 && buffer[1] == written - 2));
  }

  // What one direction does to a block the other undoes.
  void UndoOneBlock(StepInput& in) const {
    if (IsStream() || kind.blockSize < 1 || kind.blockSize > 8 || op > 1) return;
    unsigned char block[8], before[8];
    for (unsigned char& byte : block) byte = in.Byte();
    memcpy(before, block, 8);
    AsBlockCipher(cipher)->ProcessBlock(block);
    AsBlockCipher(opposite)->ProcessBlock(block);
    FUZZ_CHECK(memcmp(before, block, 8) == 0);
  }

  // The next piece of a message: in place, into a buffer of its own, or into one that begins up to
  // 15 bytes before or behind that of the input. There is room for what is written and no more.
  void Process(int way, StepInput& in) {
    static kest_fuzz::Guarded<unsigned char, 2 * kMostBytes> from, to;
    const int hostile = in.Number(kMostBytes - 16);
    const int len = hostile > kMostBytes ? INT_MIN : hostile;
    const bool final = in.Bool();
    const size_t count = static_cast<size_t>(std::max(len, 0));
    unsigned char expected[2 * kMostBytes];
    for (size_t i = 0; i < count; ++i) expected[i] = i < 16 ? in.Byte() : expected[i - 16];
    const Bytes plain(expected, expected + count);
    const int length =
        IsStream() ? stream.Process(expected, len, final) : blocks.Process(expected, len, final);
    const bool writes = IsStream() || blocks.IsKnownMode();
    const size_t held = writes ? std::max(count, static_cast<size_t>(length)) : count;

    unsigned char* out;
    int result;
    if (way < 2) {
      out = to.Take(held);
      std::copy(plain.begin(), plain.end(), out);
      result = way == 0 ? AsCipher(cipher).ProcessData(out, len, final)
                        : crypter.CryptData(out, len, final);
    } else if (way == 2) {
      out = to.Take(held);
      const unsigned char* source = from.Copy(plain.data(), count);
      result = crypter.CryptData(source, len, out, final);
    } else {
      const size_t apart = static_cast<size_t>(in.Below(16));
      const bool before = in.Bool();
      out = to.Take(held + apart) + (before ? 0 : apart);
      unsigned char* const source =
          before ? out + std::min(apart, held + apart - count) : out - apart;
      std::copy(plain.begin(), plain.end(), source);
      result = crypter.CryptData(source, len, out, final);
    }
    FUZZ_CHECK(result == length);
    FUZZ_CHECK(memcmp(out, expected, held) == 0);
  }

  const SKind kind;
  const TCipher::ECipherOp op;
  AnyCipher cipher, raw, opposite;
  KEST::TCrypter crypter;
  BlockModel blocks;
  StreamModel stream;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  return kest_fuzz::RunSteps<Ciphers>(data, size, 40);
}
