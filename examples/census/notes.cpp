#include "notes.h"

#include <new>

using KEST::TBstr;

namespace census {

Notes::~Notes() {
  for (int i = 0; i < notes.GetSize(); ++i) delete static_cast<SNote*>(notes[i]);
}

void Notes::Add(const char* part, const TBstr& subject, const TBstr& reason) {
  auto* note = new (std::nothrow) SNote{part, subject, reason};
  const int count = notes.GetSize();
  if (note != nullptr) notes.Add(note);
  if (notes.GetSize() == count) delete note;
}

}  // namespace census
