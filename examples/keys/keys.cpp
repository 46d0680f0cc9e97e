// Keys: an RSA public key is read from its BER form, and a signature is checked with it.

#include <stdio.h>
#include <string.h>

#include "kest/crypto.h"
#include "kest/digest.h"
#include "kest/frame.h"

// What stands between the lines of a PUBLIC KEY file: an X.509 SubjectPublicKeyInfo.
static const unsigned short* const kPublicKey = KEST_TEXT(
    "MIGfMA0GCSqGSIb3DQEBAQUAA4GNADCBiQKBgQDXkg6DHiMuQ1apZEVrRz8hFpwhM8HI9FI5PipR"
    "s/uQTWU3Y1YWq9jASfehNMgW4U4s5szwpZkR66MoO2mEXVm2+Xb+Jh1/qOO95euiXNP6es1Jcmle"
    "Agmm/ce1pPPtUs0vbajJPOm1kYyx52vL4cec52D/Gn0x5NToOXIfBYh0awIDAQAB");
// The signature of "Release 1.0.0": PKCS #1, version 1.5, with SHA-1.
static const unsigned short* const kSignature = KEST_TEXT(
    "dtb1gvSpP2vKu4frQKiGrwrVtDH1+oMeD5ZggYi+VV/mQ1+meMqPwJlchYTK9erEBCLuY6P8LpeI"
    "/95Q6PPx3XDojscZ+bqJ4rX0Urset95aOKYZefMthAXe39qL0aa6IjA1uMvBS1S7v+SME2jqrujG"
    "AxuDujR2FGClICWsp24=");

// A SHA-1 digest is signed behind these bytes, which name the digest.
static const unsigned char kPrefix[15] = {0x30, 0x21, 0x30, 0x09, 0x06, 0x05, 0x2B, 0x0E,
                                          0x03, 0x02, 0x1A, 0x05, 0x00, 0x04, 0x14};

// The cipher is lenient with the padding: the whole structure is compared, its length included.
static bool IsSigned(KEST::TRsaPublicCipher& key, const char* message) {
  unsigned char block[256];  // it is decrypted in place, in the room of the modulus
  const int size = KestBase64ToBin(kSignature, block, sizeof(block));
  if (size != key.GetModulusSize() || key.DecryptData(block, size, true) != 35) return false;

  unsigned char expected[35];
  memcpy(expected, kPrefix, 15);
  KEST::TShaDigest sha;
  sha.Update(reinterpret_cast<const unsigned char*>(message), static_cast<int>(strlen(message)));
  sha.Finish(expected + 15, 0);
  return memcmp(block, expected, 35) == 0;
}

static bool Run() {
  unsigned char ber[256];
  const int length = KestBase64ToBin(kPublicKey, ber, sizeof(ber));
  KEST::TRsaPublicCipher key(KEST::TCipher::kOpDecrypt);
  if (length == 0 || key.BerInit(ber, length) != length || key.GetModulusSize() > 256) return false;
  printf("a key of %d bits\n", 8 * key.GetModulusSize());
  const char* const messages[] = {"Release 1.0.0", "Release 1.0.1"};
  for (const char* message : messages) {
    printf("%s is %s\n", message, IsSigned(key, message) ? "signed" : "not signed");
  }
  return true;
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  const bool done = Run();
  KestUninitialize();
  return done ? 0 : 1;
}
