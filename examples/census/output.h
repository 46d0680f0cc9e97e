// The output folder: files that appear all together and whole, or not at all.

#ifndef CENSUS_OUTPUT_H
#define CENSUS_OUTPUT_H

#include "input.h"
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
  // As given to Open.
  const KEST::TBstr& GetSpec() const { return spec; }

 private:
  KEST::TFile file;
  KEST::TBstr spec;
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

// Files are written beside their final names, with ".part" behind; only when all are whole are they
// renamed. One of them is the seal: without it the others count for nothing, and it is the first to
// go and the last to come.
class OutputFolder {
 public:
  explicit OutputFolder(const KEST::TBstr& spec) : folder(spec) {}

  // Makes the folder and tries it out, so that a long run does not fail at its end.
  bool Prepare();
  // Makes a folder in it.
  bool MakeFolder(const KEST::TBstr& name);

  // Takes a file up, to be written by the caller and ended.
  bool Begin(OutputFile& out, const KEST::TBstr& name, EEncoding encoding);
  bool End(OutputFile& out);

  // Takes up all files of a table.
  template <typename Subject, int count>
  bool Write(const SManifest<Subject> (&manifests)[count], const Subject& subject) {
    for (int i = 0; i < count; ++i) {
      OutputFile out;
      if (!Begin(out, manifests[i].name, manifests[i].encoding)) return false;
      manifests[i].write(out, subject);
      if (!End(out)) return false;
    }
    return true;
  }

  // The files taken up, in that order, and where each is until it is published.
  int GetCount() const { return names.GetCount(); }
  const KEST::TBstr& GetNameAt(int index) const { return names.GetAt(index); }
  KEST::TBstr PartOf(const KEST::TBstr& name) const;

  // Removes the latest of them again.
  void Drop();

  // Gives all files their names, or, after a failure, removes them.
  bool Publish(const KEST::TBstr& seal);
  void Discard();

  // Remembers a failure with the file at spec. Always false.
  bool Fail(const KEST::TBstr& spec);
  // What went wrong: the file and the system's reason.
  const KEST::TBstr& GetError() const { return error; }

 private:
  bool Rename(const KEST::TBstr& name);
  KEST::TBstr SpecOf(const KEST::TBstr& name) const;

  KEST::TBstr folder;
  TextList names;
  KEST::TBstr error;
};

}  // namespace census

#endif  // CENSUS_OUTPUT_H
