// The generator of the whole process.

#include "kest/digest.h"

#include <stdlib.h>
#include <time.h>

#include "crypto/wipe.h"
#include "frame/object.h"

namespace {

KEST::TMd5Prng* s_generator = nullptr;

}  // namespace

extern "C" {

void KestSeedRandom(const unsigned char* data, int length) {
  if (s_generator != nullptr) s_generator->Seed(data, length);
}

void KestGenerateRandom(unsigned char* out, int length) {
  if (s_generator != nullptr) s_generator->Generate(out, length);
}

}  // extern "C"

namespace KEST {

// A generator that is live stays, with what it was seeded with. Seeding the C library's rand
// serves temporary file names; the generator itself stays unseeded.
bool RandInit() {
  if (s_generator != nullptr) return true;
  srand(static_cast<unsigned int>(::time(nullptr)));
  s_generator = CreateObject<TMd5Prng>();
  return s_generator != nullptr;
}

void RandTerm() {
  // What it holds would tell what it has given out.
  if (s_generator != nullptr) Wipe(s_generator, sizeof(*s_generator));
  DestroyObject(s_generator);
  s_generator = nullptr;
}

}  // namespace KEST
