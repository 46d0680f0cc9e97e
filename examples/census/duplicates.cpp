#include "duplicates.h"

#include <string.h>

#include <algorithm>

using KEST::_GUID;
using KEST::TPtrFromGuidMap;

namespace census {

namespace {

constexpr int kEntriesPerBlock = 1024;

// A digest has the size of a GUID and is as good as random: just the key for such a map.
_GUID KeyOf(const Entry& entry) {
  static_assert(sizeof(_GUID) == sizeof(entry.md5));
  _GUID key;
  memcpy(&key, entry.md5, sizeof(key));
  return key;
}

int CompareContent(const Entry& a, const Entry& b) {
  const int md5 = memcmp(a.md5, b.md5, sizeof(a.md5));
  return md5 != 0 ? md5 : memcmp(a.sha1, b.sha1, sizeof(a.sha1));
}

bool ContentOrder(void* a, void* b) {
  const Entry& first = *static_cast<Entry*>(a);
  const Entry& second = *static_cast<Entry*>(b);
  const int content = CompareContent(first, second);
  return content != 0 ? content < 0 : first.path < second.path;
}

bool SameContent(const Entry& a, const Entry& b) {
  return a.size == b.size && CompareContent(a, b) == 0;
}

}  // namespace

bool Duplicates::Find(const Inventory& inventory) {
  if (!CollectCandidates(inventory)) return false;
  if (!files.IsEmpty()) {
    std::sort(files.GetData(), files.GetData() + files.GetSize(), ContentOrder);
  }
  KeepGroups();
  return true;
}

int Duplicates::EndOfGroup(int first) const {
  int end = first + 1;
  while (end < GetCount() && SameContent(GetAt(first), GetAt(end))) ++end;
  return end;
}

// Most files have no twin: only those that share an MD5 with another are collected. The map holds
// the first file with each MD5, or null once that one is collected.
bool Duplicates::CollectCandidates(const Inventory& inventory) {
  TPtrFromGuidMap firsts(kEntriesPerBlock);
  firsts.InitHashTable(static_cast<unsigned int>(inventory.GetCount()) | 1);
  files.SetSize(0, kEntriesPerBlock);
  for (int i = 0; i < inventory.GetCount(); ++i) {
    const Entry& entry = inventory.GetAt(i);
    if (!entry.digested) continue;
    void* self = const_cast<Entry*>(&entry);
    void* first = nullptr;
    if (!firsts.Lookup(KeyOf(entry), first)) {
      if (!firsts.SetAt(KeyOf(entry), self)) return false;
      continue;
    }
    if (first != nullptr && files.Add(first) < 0) return false;
    if (files.Add(self) < 0 || !firsts.SetAt(KeyOf(entry), nullptr)) return false;
  }
  return true;
}

// Drops the candidates that share no more than their MD5.
void Duplicates::KeepGroups() {
  int kept = 0;
  for (int first = 0, end; first < GetCount(); first = end) {
    end = EndOfGroup(first);
    if (end - first < 2) continue;
    ++groups;
    spare += GetAt(first).size * (end - first - 1);
    for (int i = first; i < end; ++i) files[kept++] = files[i];
  }
  files.SetSize(kept);
}

}  // namespace census
