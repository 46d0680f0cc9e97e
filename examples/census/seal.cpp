#include "seal.h"

#include "kest/crypto.h"
#include "kest/digest.h"
#include "kest/file.h"
#include "numbers.h"
#include "posix.h"

using KEST::TBlockCipher;
using KEST::TBstr;
using KEST::TCipher;
using KEST::TCrypter;
using KEST::TFile;

namespace census {

namespace {

constexpr int kPieceSize = 64 * 1024;  // whole blocks of every cipher
constexpr int kBlockSize = 8;
constexpr int kMostKeySize = 20;
constexpr int kSeedSize = 64;
const unsigned short* const kRandomSource = KEST_TEXT("/dev/urandom");

// A way to seal. A cipher writes a file, a code only its value.
struct SAlgorithm {
  const char* name;
  int keySize;
  int vectorSize;
};
constexpr int kAlgorithms = 5;
enum EAlgorithm { kDes, kRc2, kRc4, kHmacMd5, kHmacSha1 };
const SAlgorithm kTable[kAlgorithms] = {{"des-cbc", 8, kBlockSize},
                                        {"rc2-cbc", 16, kBlockSize},
                                        {"rc4", 16, 0},
                                        {"hmac-md5", 16, 0},
                                        {"hmac-sha1", 20, 0}};

struct SKey {
  unsigned char key[kMostKeySize];
  unsigned char vector[kBlockSize];
};

// One manifest on its way through all algorithms.
class Sealer {
 public:
  explicit Sealer(const SKey* ownKeys)
      : keys(ownKeys),
        des(TCipher::kOpEncrypt, keys[kDes].key, kTable[kDes].keySize),
        rc2(TCipher::kOpEncrypt, keys[kRc2].key, kTable[kRc2].keySize, 8 * kTable[kRc2].keySize),
        rc4(TCipher::kOpEncrypt, keys[kRc4].key, kTable[kRc4].keySize),
        crypters{{des, TBlockCipher::kModeCbc, keys[kDes].vector},
                 {rc2, TBlockCipher::kModeCbc, keys[kRc2].vector},
                 {rc4}},
        hmacMd5(md5, keys[kHmacMd5].key, kTable[kHmacMd5].keySize),
        hmacSha1(sha1, keys[kHmacSha1].key, kTable[kHmacSha1].keySize) {}
  Sealer(const Sealer&) = delete;
  Sealer& operator=(const Sealer&) = delete;

  // The next piece; a final one ends the message.
  void Feed(const unsigned char* data, int length, bool final) {
    hmacMd5.Update(data, length);
    hmacSha1.Update(data, length);
    for (int i = 0; i < kCiphers; ++i) {
      const int size = crypters[i].CryptData(data, length, sealed, final);
      outputs[i].PutBytes(sealed, size);
    }
  }
  void Finish() {
    hmacMd5.Finish(codes[0], 0);
    hmacSha1.Finish(codes[1], 0);
  }

  enum { kCiphers = 3 };
  OutputFile outputs[kCiphers];
  unsigned char codes[2][kMostKeySize];

 private:
  const SKey* keys;
  KEST::TDesCipher des;
  KEST::TRc2Cipher rc2;
  KEST::TRc4Cipher rc4;
  TCrypter crypters[kCiphers];
  KEST::TMd5Digest md5;
  KEST::TShaDigest sha1;
  KEST::THmac hmacMd5;
  KEST::THmac hmacSha1;
  unsigned char sealed[kPieceSize + kBlockSize];
};

bool ReadThrough(const TBstr& spec, Sealer* sealer) {
  ForgetError();
  TFile file;
  if (!file.Open(spec, 0, false)) return false;
  const long long length = file.GetLength();
  unsigned char data[kPieceSize];
  long long total = 0;
  for (int count = kPieceSize; count == kPieceSize; total += count) {
    count = file.Read(data, kPieceSize);
    sealer->Feed(data, count, count < kPieceSize);
  }
  sealer->Finish();
  return total == length;
}

void PutKey(OutputFile& out, const TBstr& name, const SAlgorithm& algorithm, const SKey& key,
            const TBstr& rest) {
  out.Put(name + KEST_TEXT("\t") + TBstr(algorithm.name) + KEST_TEXT("\t") +
          Hex(key.key, algorithm.keySize) + KEST_TEXT("\t") + rest + KEST_TEXT("\n"));
}

bool SealFile(OutputFolder& folder, const TBstr& name, OutputFile& list) {
  SKey keys[kAlgorithms];
  KestGenerateRandom(reinterpret_cast<unsigned char*>(keys), sizeof(keys));
  Sealer sealer(keys);
  for (int i = 0; i < Sealer::kCiphers; ++i) {
    const TBstr sealed = TBstr("sealed/") + name + TBstr(".") + TBstr(kTable[i].name);
    if (!folder.Begin(sealer.outputs[i], sealed, kBytes)) return false;
    PutKey(list, name, kTable[i], keys[i], Hex(keys[i].vector, kTable[i].vectorSize));
  }
  if (!ReadThrough(folder.PartOf(name), &sealer)) return folder.Fail(folder.PartOf(name));
  for (OutputFile& output : sealer.outputs) {
    if (!folder.End(output)) return false;
  }
  PutKey(list, name, kTable[kHmacMd5], keys[kHmacMd5], Hex(sealer.codes[0], 16));
  PutKey(list, name, kTable[kHmacSha1], keys[kHmacSha1], Hex(sealer.codes[1], 20));
  return true;
}

}  // namespace

bool SeedRandom(TBstr* reason) {
  ForgetError();
  TFile source;
  unsigned char seed[kSeedSize];
  if (!source.Open(kRandomSource, 0, false) || source.Read(seed, kSeedSize) != kSeedSize) {
    *reason = ErrorText();
    return false;
  }
  KestSeedRandom(seed, kSeedSize);
  return true;
}

bool SealManifests(OutputFolder& folder, bool keys) {
  OutputFile list;
  const int count = keys ? folder.GetCount() : 0;
  if (!folder.MakeFolder("sealed") || !folder.Begin(list, "seal.tsv", kBytes)) return false;
  for (int i = 0; i < count; ++i) {
    if (!SealFile(folder, folder.GetNameAt(i), list)) return false;
  }
  return folder.End(list);
}

}  // namespace census
