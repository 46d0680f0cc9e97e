#include "people.h"

#include <algorithm>
#include <new>

using KEST::TBstr;

namespace census {

namespace {

const char* const kPart = "people";
const unsigned short* const kStatus = KEST_TEXT("/var/lib/dpkg/status");
constexpr unsigned int kBuckets = 509;  // a prime

bool NameOrder(void* a, void* b) {
  return static_cast<SMaintainer*>(a)->name < static_cast<SMaintainer*>(b)->name;
}

// What stands behind the name of a field at the start of its line.
bool TakeField(const TBstr& line, const TBstr& name, TBstr* value) {
  if (line.Left(name.GetLength()) != name) return false;
  *value = line.Mid(name.GetLength());
  value->TrimLeft(u' ');
  value->TrimRight(u' ');
  return true;
}

bool IsInstalled(const TBstr& status) {
  TBstr word;
  Words words(status);
  return words.Next(&word) && words.Next(&word) && words.Next(&word) &&
         word == KEST_TEXT("installed");
}

}  // namespace

People::People() { maintainers.InitHashTable(kBuckets, false); }

People::~People() {
  for (KEST::__POSITION* at = maintainers.GetStartPosition(); at != nullptr;) {
    TBstr name;
    void* maintainer;
    maintainers.GetNextAssoc(at, name, maintainer);
    delete static_cast<SMaintainer*>(maintainer);
  }
}

void People::Read(const TBstr& system, Notes& notes) {
  TBstr text, reason, line, package, status, maintainer;
  if (!ReadWhole(SystemSpec(system, kStatus), &text, &reason)) {
    return notes.Add(kPart, kStatus, reason);
  }
  // An empty line ends a package, and so does the end.
  Lines lines(text);
  for (bool more = true; more;) {
    more = lines.Next(&line);
    if (more && !line.IsEmpty()) {
      if (TakeField(line, "Package:", &package) || TakeField(line, "Status:", &status)) continue;
      TakeField(line, "Maintainer:", &maintainer);
      continue;
    }
    if (IsInstalled(status) && !package.IsEmpty()) Add(maintainer, package);
    package.Empty();
    status.Empty();
    maintainer.Empty();
  }
  if (maintainers.IsEmpty()) notes.Add(kPart, kStatus, "no packages here");
  Sort();
}

void People::Add(const TBstr& name, const TBstr& package) {
  void* known = nullptr;
  if (!maintainers.Lookup(name.GetString(), known)) {
    known = new (std::nothrow) SMaintainer;
    if (known == nullptr || !maintainers.SetAt(name.GetString(), known)) {
      delete static_cast<SMaintainer*>(known);
      return;
    }
    static_cast<SMaintainer*>(known)->name = name;
  }
  static_cast<SMaintainer*>(known)->packages.Add(package);
}

void People::Sort() {
  for (KEST::__POSITION* at = maintainers.GetStartPosition(); at != nullptr;) {
    TBstr name;
    void* maintainer;
    maintainers.GetNextAssoc(at, name, maintainer);
    static_cast<SMaintainer*>(maintainer)->packages.Sort();
    sorted.Add(maintainer);
  }
  if (!sorted.IsEmpty()) {
    std::sort(sorted.GetData(), sorted.GetData() + sorted.GetSize(), NameOrder);
  }
}

}  // namespace census
