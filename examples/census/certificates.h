// The certificates that the machine trusts.

#ifndef CENSUS_CERTIFICATES_H
#define CENSUS_CERTIFICATES_H

#include "kest/collections.h"
#include "kest/string.h"
#include "notes.h"

namespace census {

struct SCertificate {
  SCertificate() = default;
  ~SCertificate();
  SCertificate(const SCertificate&) = delete;
  SCertificate& operator=(const SCertificate&) = delete;

  KEST::TBstr file;     // as the machine names it
  KEST::TBstr subject;  // the bytes of its UTF-8 form
  unsigned char* der = nullptr;
  int size = 0;  // bytes
  unsigned char sha1[20];
};

class Certificates {
 public:
  Certificates() = default;
  ~Certificates();
  Certificates(const Certificates&) = delete;
  Certificates& operator=(const Certificates&) = delete;

  // Reads the bundle of the machine below system; without one, the files beside it; without these,
  // the files that the bundle is made of.
  void Read(const KEST::TBstr& system, Notes& notes);

  // By file, then as they stand in it.
  int GetCount() const { return certificates.GetSize(); }
  const SCertificate& GetAt(int index) const {
    return *static_cast<SCertificate*>(certificates[index]);
  }

 private:
  void ReadFile(const KEST::TBstr& system, const KEST::TBstr& file, Notes& notes);
  bool Add(const KEST::TBstr& file, const KEST::TBstr& base64);

  KEST::TPtrArray certificates;
};

}  // namespace census

#endif  // CENSUS_CERTIFICATES_H
