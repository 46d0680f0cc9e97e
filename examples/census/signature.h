// RSA signatures of files.

#ifndef CENSUS_SIGNATURE_H
#define CENSUS_SIGNATURE_H

#include "kest/string.h"

namespace census {

enum EVerdict { kSigned, kNotSigned, kCannotTell };

// Whether the file at signature signs the one at file: PKCS #1 v1.5 with SHA-1 or MD5, checked with
// the public key at key, a SubjectPublicKeyInfo in PEM or DER. *text says it in words: the digest's
// name, or why it cannot be told.
EVerdict CheckSignature(const KEST::TBstr& key, const KEST::TBstr& signature,
                        const KEST::TBstr& file, KEST::TBstr* text);

}  // namespace census

#endif  // CENSUS_SIGNATURE_H
