// Ciphers: a message is encrypted in place and decrypted again, with DES in CBC mode and with RC4.
// They are here for formats that call for them, not for new designs.

#include <stdio.h>
#include <string.h>

#include "kest/crypto.h"
#include "kest/frame.h"

using KEST::TCipher;

// The example of FIPS 81.
static const unsigned char kKey[8] = {0x01, 0x23, 0x45, 0x67, 0x89, 0xAB, 0xCD, 0xEF};
static const unsigned char kIv[8] = {0x12, 0x34, 0x56, 0x78, 0x90, 0xAB, 0xCD, 0xEF};
static const char kMessage[] = "Now is the time for all ";

static void PrintHex(const char* label, const unsigned char* bytes, int count) {
  printf("%s", label);
  for (int i = 0; i < count; ++i) printf("%02x", bytes[i]);
  puts("");
}

static bool RunBlocks() {
  // Padding makes the message up to a block longer.
  unsigned char data[sizeof(kMessage) + 8];
  const int length = static_cast<int>(strlen(kMessage));
  memcpy(data, kMessage, sizeof(kMessage));
  KEST::TDesCipher des(TCipher::kOpEncrypt, kKey, sizeof(kKey));
  KEST::TCrypter encrypter(des, KEST::TBlockCipher::kModeCbc, kIv);
  const int size = encrypter.CryptData(data, length, true);
  if (size != length + 8) return false;
  PrintHex("DES ", data, size);

  KEST::TDesCipher reverse(TCipher::kOpDecrypt, kKey, sizeof(kKey));
  KEST::TCrypter decrypter(reverse, KEST::TBlockCipher::kModeCbc, kIv);
  return decrypter.CryptData(data, size, true) == length && memcmp(data, kMessage, length) == 0;
}

static bool RunStream() {
  unsigned char data[] = "Plaintext";
  const int length = 9;
  KEST::TRc4Cipher rc4(TCipher::kOpEncrypt, reinterpret_cast<const unsigned char*>("Key"), 3);
  KEST::TCrypter crypter(rc4);
  if (crypter.CryptData(data, 4, false) != 4) return false;  // in pieces, the last one final
  if (crypter.CryptData(data + 4, length - 4, true) != length - 4) return false;
  PrintHex("RC4 ", data, length);
  // The same key stream again gives the text.
  return crypter.CryptData(data, length, true) == length && memcmp(data, "Plaintext", 9) == 0;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = RunBlocks() && RunStream();
  KestUninitialize();
  return done ? 0 : 1;
}
