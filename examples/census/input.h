// What the census reads of the machine itself: small files, whole.

#ifndef CENSUS_INPUT_H
#define CENSUS_INPUT_H

#include "kest/collections.h"
#include "kest/string.h"

namespace census {

// The spec of a file of the machine, "/etc/hosts", below the folder that stands for its root; the
// root itself is empty.
KEST::TBstr SystemSpec(const KEST::TBstr& system, const KEST::TBstr& path);

// A whole file, one unit a byte. False with the reason when it cannot be read.
bool ReadWhole(const KEST::TBstr& spec, KEST::TBstr* bytes, KEST::TBstr* reason);

// The lines of a text, without their ends.
class Lines {
 public:
  explicit Lines(const KEST::TBstr& ownText) : text(ownText), at(0) {}

  // Moves to the next line; false behind the last.
  bool Next(KEST::TBstr* line);

 private:
  const KEST::TBstr& text;
  int at;
};

// The words of a line, between blanks and TABs.
class Words {
 public:
  explicit Words(const KEST::TBstr& ownLine) : line(ownLine), at(0) {}

  bool Next(KEST::TBstr* word);

 private:
  const KEST::TBstr& line;
  int at;
};

// A list of texts that it owns.
class TextList {
 public:
  TextList() = default;
  ~TextList();
  TextList(const TextList&) = delete;
  TextList& operator=(const TextList&) = delete;

  void Add(const KEST::TBstr& text);
  // By units, which for names are bytes.
  void Sort();
  void RemoveLast();
  int GetCount() const { return texts.GetSize(); }
  const KEST::TBstr& GetAt(int index) const { return *static_cast<KEST::TBstr*>(texts[index]); }

 private:
  KEST::TPtrArray texts;
};

}  // namespace census

#endif  // CENSUS_INPUT_H
