// Digests: of a message in pieces, with a key, and as base64; and the Internet checksum.

#include <stdio.h>
#include <string.h>

#include "kest/digest.h"
#include "kest/frame.h"
#include "kest/string.h"

static const unsigned char* Bytes(const char* text) {
  return reinterpret_cast<const unsigned char*>(text);
}

static void PrintHex(const char* label, const unsigned char* bytes, int count) {
  printf("%s", label);
  for (int i = 0; i < count; ++i) printf("%02x", bytes[i]);
  puts("");
}

static bool Run() {
  unsigned char digest[20];
  KEST::TShaDigest sha;
  sha.Update(Bytes("a"), 1);
  sha.Update(Bytes("bc"), 2);
  if (sha.Finish(digest, 0) != 20) return false;
  PrintHex("SHA-1    ", digest, 20);

  unsigned short text[28 + 1];  // 4 units for each 3 bytes or less, and the terminator
  if (KestBinToBase64(digest, 20, text, 29) != 28) return false;
  printf("base64   %s\n", KEST::TBstr(text).GetMultibyteString());
  unsigned char decoded[20];
  if (KestBase64ToBin(text, decoded, 20) != 20 || memcmp(digest, decoded, 20) != 0) return false;

  // A MAC tells that the message comes from one who has the key.
  const char message[] = "what do ya want for nothing?";
  const int length = static_cast<int>(strlen(message));
  KEST::TMd5Digest md5;
  KEST::THmac hmac(md5, Bytes("Jefe"), 4);
  hmac.Update(Bytes(message), length);
  if (hmac.Finish(digest, 0) != 16) return false;
  PrintHex("HMAC-MD5 ", digest, 16);

  printf("checksum %04x\n", KestComputeChecksum(Bytes(message), length));
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
