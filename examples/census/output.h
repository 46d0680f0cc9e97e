// The output folder: files that appear all together and whole, or not at all.

#ifndef CENSUS_OUTPUT_H
#define CENSUS_OUTPUT_H

#include "kest/file.h"
#include "kest/string.h"

namespace census {

// How text becomes bytes: one byte a unit, UTF-8, or UTF-16 with a byte-order mark.
enum EEncoding { kBytes, kUtf8, kUtf16 };

// One file being written. A failure is remembered and told at the end, so that writers need not
// ask after each piece.
class OutputFile {
 public:
  OutputFile() : encoding(kBytes), failed(false) {}
  OutputFile(const OutputFile&) = delete;
  OutputFile& operator=(const OutputFile&) = delete;

  bool Open(const KEST::TBstr& spec, EEncoding encoding);
  void Put(const KEST::TBstr& text);
  void PutBytes(const void* bytes, int count);
  // True when everything has reached the system.
  bool Close();

 private:
  KEST::TFile file;
  EEncoding encoding;
  bool failed;
};

// A row of the table of files that OutputFolder writes from a subject of type Subject.
template <typename Subject>
struct SManifest {
  const unsigned short* name;
  EEncoding encoding;
  void (*write)(OutputFile& out, const Subject& subject);
};

// Files are written beside their final names, with ".part" behind; only when the last of them is
// whole are they renamed. The last of the table is the seal: without it the others count for
// nothing, and it is the first to go and the last to come.
class OutputFolder {
 public:
  explicit OutputFolder(const KEST::TBstr& spec) : folder(spec) {}

  // Makes the folder and tries it out, so that a long run does not fail at its end.
  bool Prepare();

  template <typename Subject, int count>
  bool Write(const SManifest<Subject> (&manifests)[count], const Subject& subject) {
    bool good = true;
    for (int i = 0; good && i < count; ++i) {
      OutputFile out;
      good = Begin(out, manifests[i].name, manifests[i].encoding);
      if (good) manifests[i].write(out, subject);
      good = good && End(out, manifests[i].name);
    }
    good = good && Remove(manifests[count - 1].name);
    for (int i = 0; good && i < count; ++i) good = Publish(manifests[i].name);
    for (int i = 0; !good && i < count; ++i) Discard(manifests[i].name);
    return good;
  }

  // What went wrong: the file and the system's reason.
  const KEST::TBstr& GetError() const { return error; }

 private:
  bool Begin(OutputFile& out, const unsigned short* name, EEncoding encoding);
  bool End(OutputFile& out, const unsigned short* name);
  bool Remove(const unsigned short* name);
  bool Publish(const unsigned short* name);
  void Discard(const unsigned short* name);
  KEST::TBstr SpecOf(const unsigned short* name) const;
  KEST::TBstr PartOf(const unsigned short* name) const;
  bool Fail(const KEST::TBstr& spec);

  KEST::TBstr folder;
  KEST::TBstr error;
};

}  // namespace census

#endif  // CENSUS_OUTPUT_H
