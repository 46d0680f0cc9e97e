// RSA with a public key on single blocks: PKCS #1 version 1.5 (RFC 2313), block types 1 and 2.

#include <string.h>
#include <algorithm>

#include "crypto/ber_items.h"
#include "crypto/big_int_exp_mod.h"
#include "crypto/wipe.h"
#include "frame/layout.h"
#include "frame/object.h"
#include "kest/crypto.h"
#include "kest/digest.h"

namespace KEST {

namespace {

KEST_SIZE_IS(TRsaPublicCipher, 24, 48);

// Two bytes in front, at least eight of padding, a zero after them.
constexpr int kOverhead = 11;
constexpr unsigned char kSignatureBlock = 1;
constexpr unsigned char kMessageBlock = 2;
constexpr unsigned char kSignaturePadding = 0xFF;

// One block of the cipher: on the stack where it fits, and wiped in the end.
class WorkingBlock {
 public:
  explicit WorkingBlock(int count) : size(static_cast<unsigned int>(count)), bytes(local) {
    if (size > sizeof local) bytes = static_cast<unsigned char*>(KestMemAlloc(size));
    if (bytes != nullptr) memset(bytes, 0, size);
  }
  ~WorkingBlock() {
    if (bytes != nullptr) Wipe(bytes, size);
    if (bytes != local) KestMemFree(bytes);
  }
  WorkingBlock(const WorkingBlock&) = delete;
  WorkingBlock& operator=(const WorkingBlock&) = delete;

  // Null when there is no memory.
  unsigned char* Get() const { return bytes; }

 private:
  unsigned int size;
  unsigned char* bytes;
  unsigned char local[256];
};

// Null when there is nothing to copy, or no memory.
unsigned char* CopyBytes(const unsigned char* source, int count) {
  if (source == nullptr) return nullptr;
  auto* copy = static_cast<unsigned char*>(KestMemAlloc(static_cast<unsigned int>(count)));
  if (copy != nullptr && count != 0) memcpy(copy, source, static_cast<size_t>(count));
  return copy;
}

void FreeBytes(unsigned char* bytes, int count) {
  if (bytes == nullptr) return;
  Wipe(bytes, static_cast<size_t>(count));
  KestMemFree(bytes);
}

// Replaces a part of the key. Without memory the part is null, and its length stays.
bool LoadPart(unsigned char*& part, int& size, const unsigned char* source, int count) {
  FreeBytes(part, size);
  part = CopyBytes(source, count);
  if (part == nullptr) return false;
  size = count;
  return true;
}

// The elements of a public key, read one after the other. None reaches past the end of the input.
class KeyReader {
 public:
  KeyReader(const unsigned char* ber, int length) : end(ber + length) {}

  // The element at start, which has remaining bytes at most and this tag.
  bool Read(SBerItem& item, const unsigned char* start, int remaining, unsigned char tag) const {
    const int room = static_cast<int>(std::min<ptrdiff_t>(remaining, end - start));
    return KestBerDecode(start, room, &item) != 0 && item.tag == tag;
  }

  // The element after previous in outer; there is none after one of indefinite length. What is
  // taken from the remaining length is the previous element's content without its tag and length,
  // on purpose.
  bool ReadNext(SBerItem& item, const SBerItem& outer, const SBerItem& previous,
                unsigned char tag) const {
    return Read(item, Past(previous, previous.length), outer.length - previous.length, tag);
  }

  // Whether the whole content of item is there; that of one of indefinite length is not.
  bool IsWhole(const SBerItem& item) const { return item.length <= end - item.value; }

  // Where the content of item goes on after count bytes, or the end of the input.
  const unsigned char* Past(const SBerItem& item, int count) const {
    return count <= end - item.value ? item.value + count : end;
  }

 private:
  const unsigned char* end;
};

// A SubjectPublicKeyInfo (RFC 5280, section 4.1) that holds an RSAPublicKey (RFC 2313, section
// 7.1). The algorithm identifier and the count of unused bits are not looked at.
bool ReadKey(const unsigned char* ber, int length, SBerItem& modulus, SBerItem& exponent) {
  const KeyReader reader(ber, length);
  SBerItem info, algorithm, bits, key;
  return reader.Read(info, ber, length, kBerSequence) &&
         reader.Read(algorithm, info.value, info.length, kBerSequence) &&
         reader.ReadNext(bits, info, algorithm, kBerBitString) &&
         reader.Read(key, reader.Past(bits, 1), bits.length - 1, kBerSequence) &&
         reader.Read(modulus, key.value, key.length, kBerInteger) &&
         reader.ReadNext(exponent, key, modulus, kBerInteger) && modulus.length != 0 &&
         reader.IsWhole(exponent);
}

// A byte other than 0, or 0 when there is no generator: so many zeros in a row are no chance.
unsigned char DrawPadding() {
  unsigned char byte = 0;
  for (int draws = 0; byte == 0 && draws < 64; ++draws) KestGenerateRandom(&byte, 1);
  return byte;
}

// 00 02, random bytes other than 0, 00, message. False when there is no generator.
bool BuildMessageBlock(unsigned char* block, int size, const unsigned char* message, int length) {
  const int zero = size - length - 1;
  block[0] = 0;
  block[1] = kMessageBlock;
  for (int i = 2; i < zero; ++i) {
    block[i] = DrawPadding();
    if (block[i] == 0) return false;
  }
  block[zero] = 0;
  if (length != 0) memcpy(block + zero + 1, message, static_cast<size_t>(length));
  return true;
}

// Where the message begins in 00 01, any number of FF, 00, message; 0 when this is no such block.
int FindSignedMessage(const unsigned char* block, int size) {
  if (block[0] != 0 || block[1] != kSignatureBlock) return 0;
  int i = 2;
  while (i < size - 1 && block[i] == kSignaturePadding) ++i;
  return block[i] == 0 ? i + 1 : 0;
}

// A number as big-endian bytes.
struct SNumber {
  const unsigned char* bytes;
  int count;
};

// Whether value, made of number, had the memory it needed.
bool IsLoaded(const TBigInt& value, const SNumber& number) {
  return number.count == 0 || value.GetCapacity() != 0;
}

// r = base^exponent mod modulus. False when there is no memory.
bool Raise(TBigInt& r, const SNumber& base, const SNumber& exponent, const SNumber& modulus) {
  const TBigInt b(base.bytes, base.count);
  const TBigInt e(exponent.bytes, exponent.count);
  const TBigInt n(modulus.bytes, modulus.count);
  return IsLoaded(b, base) && IsLoaded(e, exponent) && IsLoaded(n, modulus) &&
         TryExpMod(r, b, e, n);
}

}  // namespace

TRsaPublicCipher::TRsaPublicCipher(TCipher::ECipherOp operation)
    : TRsaCipher(operation), modulus(nullptr), modulusSize(0), exponent(nullptr), exponentSize(0) {}

TRsaPublicCipher::TRsaPublicCipher(TCipher::ECipherOp operation, const unsigned char* newModulus,
                                   int modulusLen, const unsigned char* newExponent,
                                   int exponentLen)
    : TRsaPublicCipher(operation) {
  Construct(newModulus, modulusLen, newExponent, exponentLen);
}

TRsaPublicCipher::~TRsaPublicCipher() {
  FreeBytes(modulus, modulusSize);
  FreeBytes(exponent, exponentSize);
}

int TRsaPublicCipher::BerInit(const unsigned char* ber, int len) {
  SBerItem n, e;
  if (len < 0 || !ReadKey(ber, len, n, e)) return 0;
  // The first byte of the modulus is taken for the zero that DER puts before a top bit, on purpose.
  return Construct(n.value + 1, n.length - 1, e.value, e.length) ? len : 0;
}

// Writing a key is not supported.
int TRsaPublicCipher::BerDump(unsigned char*, int) { return 0; }

int TRsaPublicCipher::ProcessData(unsigned char* data, int len, bool final) {
  return op != kOpEncrypt ? DecryptData(data, len, final) : EncryptData(data, len, final);
}

bool TRsaPublicCipher::Construct(const unsigned char* newModulus, int modulusLen,
                                 const unsigned char* newExponent, int exponentLen) {
  KEST_FIELD_AT(TRsaPublicCipher, modulus, 8, 16);
  KEST_FIELD_AT(TRsaPublicCipher, modulusSize, 12, 24);
  KEST_FIELD_AT(TRsaPublicCipher, exponent, 16, 32);
  KEST_FIELD_AT(TRsaPublicCipher, exponentSize, 20, 40);
  if (modulusLen < 0 || exponentLen < 0) return false;
  const bool hasModulus = LoadPart(modulus, modulusSize, newModulus, modulusLen);
  const bool hasExponent = LoadPart(exponent, exponentSize, newExponent, exponentLen);
  return hasModulus && hasExponent;
}

int TRsaPublicCipher::EncryptData(unsigned char* data, int len, bool final) {
  if (modulus == nullptr || exponent == nullptr) return 0;
  if (!final || len < 0 || len > modulusSize - kOverhead) return 0;
  const WorkingBlock block(modulusSize);
  if (block.Get() == nullptr || !BuildMessageBlock(block.Get(), modulusSize, data, len)) return 0;
  TBigInt cipher;
  const bool raised =
      Raise(cipher, {block.Get(), modulusSize}, {exponent, exponentSize}, {modulus, modulusSize});
  return raised ? cipher.Dump(data, modulusSize) : 0;
}

// TBigInt::Dump decides for which lengths of the modulus a block comes out: multiples of 4 and one
// more, on purpose.
int TRsaPublicCipher::DecryptData(unsigned char* data, int len, bool final) {
  if (modulus == nullptr || exponent == nullptr) return 0;
  if (!final || len < 0 || len > modulusSize) return 0;
  const WorkingBlock block(modulusSize);
  if (block.Get() == nullptr) return 0;
  TBigInt plain;
  if (!Raise(plain, {data, len}, {exponent, exponentSize}, {modulus, modulusSize})) return 0;
  if (plain.Dump(block.Get(), modulusSize) == 0) return 0;
  const int message = FindSignedMessage(block.Get(), modulusSize);
  if (message == 0) return 0;
  const int count = modulusSize - message;
  if (count != 0) memcpy(data, block.Get() + message, static_cast<size_t>(count));
  return count;
}

int TRsaPublicCipher::GetModulusSize() const { return modulusSize; }

}  // namespace KEST
