// The seal: each manifest enciphered, with the keys, and the codes that tell whether it was
// changed.

#ifndef CENSUS_SEAL_H
#define CENSUS_SEAL_H

#include "kest/string.h"
#include "output.h"

namespace census {

// Seeds the generator of random bytes from the system. False when that cannot be done: a key would
// then be the same in every run.
bool SeedRandom(KEST::TBstr* reason);

// Enciphers every file that folder has taken up so far, three times, into its folder "sealed", and
// writes seal.tsv: name, algorithm, key, and the vector or the code. False when that fails.
// Without keys only the empty seal.tsv is written, in place of an older one.
bool SealManifests(OutputFolder& folder, bool keys);

}  // namespace census

#endif  // CENSUS_SEAL_H
