// The calls of kest/digest.h.

#include "kest/digest.h"

#include <string.h>

#include "check.h"
#include "kest/frame.h"
#include "kest/string.h"

static const unsigned char kText[] = {'a', 'b', 'c'};

static void Digests() {
  //! [md5]
  KEST::TMd5Digest md5;
  md5.Update(kText, 3);  // any number of times
  unsigned char digest[16];
  Check(md5.Finish(digest, 0) == 16);  // and ready for the next message
  Check(digest[0] == 0x90 && digest[15] == 0x72);
  //! [md5]

  //! [sha]
  KEST::TShaDigest sha;
  sha.Update(kText, 1);
  KEST::TShaDigest fork(sha);  // goes on from the same state
  fork.Update(kText + 1, 2);
  unsigned char bytes[20];
  Check(fork.GetDigestSize() == 20 && fork.Finish(bytes, 0) == 20 && bytes[0] == 0xA9);
  //! [sha]

  //! [digest]
  KEST::TMd4Digest md4;
  KEST::TMessageDigest& any = md4;  // whichever it is
  any.Update(kText, 3);
  any.Reset();  // discards what was fed
  any.Update(kText, 3);
  unsigned char result[20];
  Check(any.Finish(result, 0) == any.GetDigestSize() && result[0] == 0xA4);
  KEST::TMdXDigest& mdx = md4;  // what MD4 and MD5 share
  Check(mdx.GetDigestSize() == 16 && mdx.Finish(result, 0) == 16);
  //! [digest]

  //! [transform]
  // What Update does with each block: for a digest of your own, built on another one.
  unsigned int state[5] = {1, 2, 3, 4, 5};
  const unsigned char block[64] = {0};
  KEST::TMd4Digest().Transform(state, block);
  KEST::TMd5Digest().Transform(state, block);
  KEST::TShaDigest().Transform(state, block);
  KEST::TMd5Digest other;
  KEST::TMessageDigest& base = other;
  base.Transform(state, block);
  Check(state[4] != 5);
  //! [transform]

  //! [hmac]
  KEST::TMd5Digest inner;  // has to outlive the object
  KEST::THmac hmac(inner, kText, 3);
  hmac.Update(kText, 3);
  unsigned char mac[16], again[16];
  Check(hmac.Finish(mac, 0) == 16);  // 0 when the key was refused
  hmac.Update(kText, 2);
  hmac.Reset();   // discards the message,
  inner.Reset();  // here too
  hmac.Update(kText, 3);
  Check(hmac.Finish(again, 0) == 16 && memcmp(mac, again, 16) == 0);
  //! [hmac]
}

static void Random() {
  //! [random]
  unsigned char seed[16] = {1, 2, 3};  // from a source that nobody can guess, such as /dev/urandom
  KestSeedRandom(seed, 16);
  unsigned char bytes[32];
  KestGenerateRandom(bytes, 32);
  //! [random]

  //! [prng]
  KEST::TMd5Prng one, two;  // a KEST::TDigestPrng with its digest and buffers
  one.Seed(seed, 16);
  two.Seed(seed, 16);
  unsigned char first[8], second[8];
  one.Generate(first, 8);
  two.Generate(second, 8);
  Check(memcmp(first, second, 8) == 0);  // the same seeds, the same bytes
  //! [prng]

  //! [prng-digest]
  KEST::TShaDigest sha;
  unsigned char buffers[3 * 20];  // counter, increment, output
  KEST::TDigestPrng generator(sha, buffers, 20);
  generator.Seed(seed, 16);
  generator.Generate(first, 8);
  //! [prng-digest]
}

static void Encodings() {
  //! [ber]
  const KEST::SBerItem item = {0x04, 3, kText};  // OCTET STRING "abc"
  unsigned char element[8];
  Check(KestBerEncode(element, 8, &item) == 5);  // 0 when there is no room
  KEST::SBerItem found;
  Check(KestBerDecode(element, 5, &found) == 5);
  Check(found.tag == 0x04 && found.length == 3 && found.value == element + 2);
  //! [ber]

  //! [base64]
  unsigned short text[4 + 1];
  Check(KestBinToBase64(kText, 3, text, 5) == 4);
  unsigned char back[3];
  Check(KestBase64ToBin(text, back, 3) == 3 && memcmp(back, kText, 3) == 0);
  //! [base64]

  //! [checksum]
  const unsigned char packet[] = {0x00, 0x01, 0xF2, 0x03};
  KEST::TInetChecksum sum;
  sum.Update(packet, 2);
  const unsigned short half = sum.GetCurrent();
  sum.Reset();
  sum.SetCurrent(half, 2);  // goes on after two bytes
  sum.Update(packet + 2, 2);
  Check(sum.Finish() == KestComputeChecksum(packet, 4));
  //! [checksum]
}

int main() {
  if (!KestInitialize(nullptr)) return 1;
  Digests();
  Random();
  Encodings();
  KestUninitialize();
  puts("as shown");
  return 0;
}
