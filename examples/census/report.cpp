#include "report.h"

#include <algorithm>

#include "kest/collections.h"
#include "names.h"
#include "numbers.h"

using KEST::TBstr;
using KEST::TPtrArray;

namespace census {

namespace {

constexpr int kRows = 10;  // of each list
constexpr int kNumberWidth = 16;
constexpr int kBarWidth = 30;
constexpr unsigned short kFullBlock = 0x2588;
const unsigned short* const kNewLine = KEST_TEXT("\n");

void PutCount(TBstr& out, const char* name, long long count) {
  constexpr int kNameWidth = 20;
  TBstr line(name);
  line += TBstr(u' ', kNameWidth - line.GetLength());
  out += line + PadLeft(Grouped(count), kNumberWidth) + kNewLine;
}

void PutHeading(TBstr& out, const char* text) { out += TBstr(kNewLine) + TBstr(text) + kNewLine; }

void PutTotals(TBstr& out, const SResult& result) {
  const STotals& totals = result.inventory.GetTotals();
  out += TBstr("Census of ") + Readable(result.directory) +
         TBstr(result.interrupted ? " (interrupted)" : "");
  if (!result.pattern.IsEmpty()) out += TBstr(", ") + Readable(result.pattern);
  out += TBstr(kNewLine) + kNewLine;
  PutCount(out, "Files", totals.files);
  PutCount(out, "Bytes", totals.bytes);
  PutCount(out, "Directories", totals.directories);
  PutCount(out, "Symbolic links", totals.links);
  PutCount(out, "Special files", totals.special);
  PutCount(out, "Not read", totals.problems);
  PutCount(out, "Identical groups", result.duplicates.GetGroupCount());
  PutCount(out, "Bytes to spare", result.duplicates.GetSpareBytes());
}

bool CommonFirst(void* a, void* b) {
  const SExtension& first = *static_cast<SExtension*>(a);
  const SExtension& second = *static_cast<SExtension*>(b);
  return first.files != second.files ? first.files > second.files : first.name < second.name;
}

bool LargeFirst(void* a, void* b) {
  const Entry& first = *static_cast<Entry*>(a);
  const Entry& second = *static_cast<Entry*>(b);
  return first.size != second.size ? first.size > second.size : first.path < second.path;
}

// Brings the first rows of a list into order and returns how many there are.
int SortRows(TPtrArray& array, bool (*order)(void*, void*)) {
  const int rows = std::min(kRows, array.GetSize());
  void** begin = array.GetData();
  if (rows > 0) std::partial_sort(begin, begin + rows, begin + array.GetSize(), order);
  return rows;
}

void PutExtensions(TBstr& out, const Inventory& inventory) {
  TPtrArray all;
  all.SetSize(inventory.GetExtensionCount());
  for (int i = 0; i < all.GetSize(); ++i) {
    all[i] = const_cast<SExtension*>(&inventory.GetExtensionAt(i));
  }
  const int rows = SortRows(all, CommonFirst);
  PutHeading(out, "Most common extensions");
  for (int i = 0; i < rows; ++i) {
    const SExtension& extension = *static_cast<SExtension*>(all[i]);
    const int most = static_cast<SExtension*>(all[0])->files;
    const int bar = static_cast<int>((kBarWidth * 1LL * extension.files + most - 1) / most);
    const TBstr name = extension.name.IsEmpty() ? TBstr("(none)") : Readable(extension.name);
    out += PadLeft(Grouped(extension.files), kNumberWidth) + KEST_TEXT("  ") +
           TBstr(kFullBlock, bar) + TBstr(u' ', kBarWidth + 2 - bar) + name + kNewLine;
  }
}

void PutLargest(TBstr& out, const Inventory& inventory) {
  TPtrArray files;
  files.SetSize(inventory.GetTotals().files);
  for (int i = 0, next = 0; i < inventory.GetCount() && next < files.GetSize(); ++i) {
    const Entry& entry = inventory.GetAt(i);
    if (entry.kind == kRegular) files[next++] = const_cast<Entry*>(&entry);
  }
  const int rows = SortRows(files, LargeFirst);
  PutHeading(out, "Largest files");
  for (int i = 0; i < rows; ++i) {
    const Entry& entry = *static_cast<Entry*>(files[i]);
    out += PadLeft(Grouped(entry.size), kNumberWidth) + KEST_TEXT("  ") + Readable(entry.path) +
           kNewLine;
  }
}

}  // namespace

TBstr ReportText(const SResult& result) {
  TBstr text;
  PutTotals(text, result);
  PutExtensions(text, result.inventory);
  PutLargest(text, result.inventory);
  return text;
}

void WriteReport(OutputFile& out, const SResult& result) { out.Put(ReportText(result)); }

}  // namespace census
