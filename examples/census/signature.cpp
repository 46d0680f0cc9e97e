// RFC 8017, section 8.2.2: what the signature holds is compared as a whole.

#include "signature.h"

#include <string.h>

#include "ber.h"
#include "input.h"
#include "kest/crypto.h"
#include "kest/digest.h"
#include "kest/file.h"
#include "posix.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

namespace {

constexpr int kMostKeyBytes = 4096;      // of its DER form
constexpr int kMostModulusBytes = 2048;  // 16384 bits
constexpr int kPieceSize = 64 * 1024;

// What stands before a digest: its algorithm, and that so many bytes follow.
constexpr unsigned char kMd5Prefix[] = {0x30, 0x20, 0x30, 0x0C, 0x06, 0x08, 0x2A, 0x86, 0x48,
                                        0x86, 0xF7, 0x0D, 0x02, 0x05, 0x05, 0x00, 0x04, 0x10};
constexpr unsigned char kSha1Prefix[] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                         0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};

struct SDigestInfo {
  unsigned char bytes[40];
  int length;
};

template <int prefixLength>
void Finish(KEST::TMessageDigest& digest, const unsigned char (&prefix)[prefixLength],
            SDigestInfo* info) {
  memcpy(info->bytes, prefix, prefixLength);
  info->length = prefixLength + digest.Finish(info->bytes + prefixLength, 0);
}

bool DigestFile(const TBstr& spec, SDigestInfo* md5Info, SDigestInfo* sha1Info) {
  TFile file;
  if (!file.Open(spec, 0, false)) return false;
  const long long length = file.GetLength();
  KEST::TMd5Digest md5;
  KEST::TShaDigest sha1;
  unsigned char data[kPieceSize];
  long long total = 0;
  for (int count = kPieceSize; count == kPieceSize; total += count) {
    count = file.Read(data, kPieceSize);
    md5.Update(data, count);
    sha1.Update(data, count);
  }
  Finish(md5, kMd5Prefix, md5Info);
  Finish(sha1, kSha1Prefix, sha1Info);
  return total == length;
}

// The bytes of text that holds one unit a byte; 0 when there are too many.
int CopyBytes(const TBstr& text, unsigned char* bytes, int size) {
  if (text.GetLength() > size) return 0;
  for (int i = 0; i < text.GetLength(); ++i) bytes[i] = static_cast<unsigned char>(text.GetAt(i));
  return text.GetLength();
}

// The DER form of a key; 0 for what is neither DER nor PEM.
int KeyBytes(const TBstr& text, unsigned char* der, int size) {
  TBstr line, base64;
  bool inside = false;
  for (Lines lines(text); lines.Next(&line);) {
    line.Remove(u'\r');
    if (line == KEST_TEXT("-----BEGIN PUBLIC KEY-----")) {
      inside = true;
    } else if (inside && line == KEST_TEXT("-----END PUBLIC KEY-----")) {
      return KestBase64ToBin(base64.GetString(), der, size);
    } else if (inside) {
      base64 += line;
    }
  }
  return CopyBytes(text, der, size);
}

// The cipher looks at little, so what it is given is checked here: a whole structure for RSA.
bool LoadKey(const TBstr& text, KEST::TRsaPublicCipher* cipher) {
  unsigned char der[kMostKeyBytes];
  const int length = KeyBytes(text, der, kMostKeyBytes);
  SBerItem info, algorithm, object;
  BerReader reader(der, length);
  if (!reader.Next(&info, kBerSequence) || !reader.IsAtEnd()) return false;
  if (!BerReader(info).Next(&algorithm, kBerSequence)) return false;
  if (!BerReader(algorithm).Next(&object, kBerObject)) return false;
  if (ObjectText(object) != KEST_TEXT("1.2.840.113549.1.1.1")) return false;
  return cipher->BerInit(der, length) == length && cipher->GetModulusSize() <= kMostModulusBytes;
}

bool Holds(const unsigned char* message, int length, const SDigestInfo& info) {
  return length == info.length && memcmp(message, info.bytes, static_cast<size_t>(length)) == 0;
}

EVerdict Unable(const TBstr& spec, const TBstr& why, TBstr* text) {
  *text = spec + KEST_TEXT(": ") + why;
  return kCannotTell;
}

}  // namespace

EVerdict CheckSignature(const TBstr& key, const TBstr& signature, const TBstr& file, TBstr* text) {
  TBstr keyText, signatureText, reason;
  if (!ReadWhole(key, &keyText, &reason)) return Unable(key, reason, text);
  if (!ReadWhole(signature, &signatureText, &reason)) return Unable(signature, reason, text);
  KEST::TRsaPublicCipher cipher(KEST::TCipher::kOpDecrypt);
  if (!LoadKey(keyText, &cipher)) return Unable(key, "no public RSA key", text);
  SDigestInfo md5, sha1;
  ForgetError();
  if (!DigestFile(file, &md5, &sha1)) return Unable(file, ErrorText(), text);

  unsigned char block[kMostModulusBytes];
  const int size = CopyBytes(signatureText, block, kMostModulusBytes);
  if (size != cipher.GetModulusSize()) return kNotSigned;
  const int length = cipher.DecryptData(block, size, true);
  if (Holds(block, length, sha1)) {
    *text = "SHA-1";
  } else if (Holds(block, length, md5)) {
    *text = "MD5";
  } else {
    return kNotSigned;
  }
  return kSigned;
}

}  // namespace census
