#include "inventory.h"

#include <algorithm>
#include <new>

#include "kest/file.h"
#include "names.h"

using KEST::__POSITION;
using KEST::TBstr;

namespace census {

namespace {

constexpr int kEntriesPerBlock = 1024;
constexpr unsigned int kExtensionBuckets = 1021;  // a prime; maps keep the 17 they are born with

bool PathOrder(void* a, void* b) {
  return static_cast<Entry*>(a)->path < static_cast<Entry*>(b)->path;
}

bool NameOrder(void* a, void* b) {
  return static_cast<SExtension*>(a)->name < static_cast<SExtension*>(b)->name;
}

}  // namespace

Inventory::Inventory() : entries(kEntriesPerBlock) {
  extensionsByName.InitHashTable(kExtensionBuckets, false);
}

Inventory::~Inventory() {
  for (__POSITION* at = entries.GetHeadPosition(); at != nullptr;) {
    delete static_cast<Entry*>(entries.GetNext(at));
  }
  for (__POSITION* at = extensionsByName.GetStartPosition(); at != nullptr;) {
    TBstr name;
    void* extension;
    extensionsByName.GetNextAssoc(at, name, extension);
    delete static_cast<SExtension*>(extension);
  }
}

bool Inventory::Add(Entry* entry) {
  if (entries.AddTail(entry) == nullptr) {
    delete entry;
    return false;
  }
  Count(*entry);
  return entry->kind != kRegular || CountExtension(*entry);
}

bool Inventory::Complete() {
  // The list has the count, so the array is made once, at its final size.
  sorted.SetSize(entries.GetCount());
  if (sorted.GetSize() != entries.GetCount()) return false;
  int index = 0;
  for (__POSITION* at = entries.GetHeadPosition(); at != nullptr;) {
    sorted[index++] = entries.GetNext(at);
  }
  std::sort(sorted.GetData(), sorted.GetData() + index, PathOrder);

  extensions.SetSize(extensionsByName.GetCount());
  if (extensions.GetSize() != extensionsByName.GetCount()) return false;
  index = 0;
  for (__POSITION* at = extensionsByName.GetStartPosition(); at != nullptr; ++index) {
    TBstr name;
    extensionsByName.GetNextAssoc(at, name, extensions[index]);
  }
  std::sort(extensions.GetData(), extensions.GetData() + index, NameOrder);
  return true;
}

void Inventory::Count(const Entry& entry) {
  if (entry.problem) ++totals.problems;
  switch (entry.kind) {
    case kRegular:
      ++totals.files;
      totals.bytes += entry.size;
      if (entry.digested) ++totals.digested;
      break;
    case kDirectory:
      if (entry.path != KEST::TFileFinder::kCurrentDirectory) ++totals.directories;
      break;
    case kLink:
      ++totals.links;
      break;
    case kFifo:
    case kSocket:
    case kDevice:
      ++totals.special;
      break;
    case kUnknown:
      break;
  }
}

bool Inventory::CountExtension(const Entry& entry) {
  const TBstr name = ExtensionOf(entry.path);
  void* known = nullptr;
  if (!extensionsByName.Lookup(name.GetString(), known)) {
    known = new (std::nothrow) SExtension;
    if (known == nullptr || !extensionsByName.SetAt(name.GetString(), known)) {
      delete static_cast<SExtension*>(known);
      return false;
    }
    static_cast<SExtension*>(known)->name = name;
  }
  SExtension* extension = static_cast<SExtension*>(known);
  ++extension->files;
  extension->bytes += entry.size;
  return true;
}

}  // namespace census
