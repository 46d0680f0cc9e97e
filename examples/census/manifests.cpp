#include "manifests.h"

#include "names.h"
#include "numbers.h"
#include "report.h"

using KEST::TBstr;

namespace census {

namespace {

const unsigned short* const kTab = KEST_TEXT("\t");
const unsigned short* const kNewLine = KEST_TEXT("\n");

void WriteFiles(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.inventory.GetCount(); ++i) {
    const Entry& entry = result.inventory.GetAt(i);
    if (entry.kind != kRegular) continue;
    out.Put(EscapeForTable(entry.path) + kTab + Decimal(entry.size) + kTab +
            UtcTime(entry.modified) + kNewLine);
  }
}

// The coreutils form: the digest, two spaces, the name; a backslash in front when the name is
// escaped.
template <typename Digest, int size>
void WriteSums(OutputFile& out, const SResult& result, Digest (Entry::*digest)[size]) {
  for (int i = 0; i < result.inventory.GetCount(); ++i) {
    const Entry& entry = result.inventory.GetAt(i);
    if (!entry.digested) continue;
    bool escaped;
    const TBstr name = EscapeForSums(entry.path, &escaped);
    out.Put(TBstr(escaped ? "\\" : "") + Hex(entry.*digest, size) + KEST_TEXT("  ") + name +
            kNewLine);
  }
}

void WriteMd5Sums(OutputFile& out, const SResult& result) { WriteSums(out, result, &Entry::md5); }
void WriteSha1Sums(OutputFile& out, const SResult& result) { WriteSums(out, result, &Entry::sha1); }
void WriteMd4Sums(OutputFile& out, const SResult& result) { WriteSums(out, result, &Entry::md4); }

// The lines of MD5SUMS that have company, an empty line between groups.
void WriteDuplicates(OutputFile& out, const SResult& result) {
  const Duplicates& duplicates = result.duplicates;
  for (int first = 0, end; first < duplicates.GetCount(); first = end) {
    if (first > 0) out.Put(kNewLine);
    end = duplicates.EndOfGroup(first);
    for (int i = first; i < end; ++i) {
      const Entry& entry = duplicates.GetAt(i);
      out.Put(Hex(entry.md5, sizeof(entry.md5)) + KEST_TEXT("  ") + EscapeForTable(entry.path) +
              kNewLine);
    }
  }
}

void WriteSkipped(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.inventory.GetCount(); ++i) {
    const Entry& entry = result.inventory.GetAt(i);
    if (entry.reason.IsEmpty()) continue;
    out.Put(EscapeForTable(entry.path) + kTab + TBstr(KindName(entry.kind)) + kTab + entry.reason +
            kNewLine);
  }
}

void PutTotal(OutputFile& out, const char* name, const TBstr& value) {
  out.Put(TBstr(name) + kTab + value + kNewLine);
}

void WriteTotals(OutputFile& out, const SResult& result) {
  const STotals& totals = result.inventory.GetTotals();
  PutTotal(out, "directory", EscapeForTable(result.directory));
  if (!result.pattern.IsEmpty()) PutTotal(out, "pattern", EscapeForTable(result.pattern));
  PutTotal(out, "state", result.interrupted ? "interrupted" : "complete");
  PutTotal(out, "files", Decimal(totals.files));
  PutTotal(out, "bytes", Decimal(totals.bytes));
  PutTotal(out, "directories", Decimal(totals.directories));
  PutTotal(out, "links", Decimal(totals.links));
  PutTotal(out, "special", Decimal(totals.special));
  PutTotal(out, "digested", Decimal(totals.digested));
  PutTotal(out, "problems", Decimal(totals.problems));
  PutTotal(out, "duplicate-groups", Decimal(result.duplicates.GetGroupCount()));
  PutTotal(out, "duplicate-bytes", Decimal(result.duplicates.GetSpareBytes()));
  for (int i = 0; i < result.inventory.GetExtensionCount(); ++i) {
    const SExtension& extension = result.inventory.GetExtensionAt(i);
    PutTotal(out, "extension",
             EscapeForTable(extension.name) + kTab + Decimal(extension.files) + kTab +
                 Decimal(extension.bytes));
  }
}

// The last one seals the others.
const SManifest<SResult> kManifests[] = {
    {KEST_TEXT("files.tsv"), kBytes, WriteFiles},
    {KEST_TEXT("MD5SUMS"), kBytes, WriteMd5Sums},
    {KEST_TEXT("SHA1SUMS"), kBytes, WriteSha1Sums},
    {KEST_TEXT("MD4SUMS"), kBytes, WriteMd4Sums},
    {KEST_TEXT("dups.txt"), kBytes, WriteDuplicates},
    {KEST_TEXT("skipped.txt"), kBytes, WriteSkipped},
    {KEST_TEXT("report.txt"), kUtf8, WriteReport},
    {KEST_TEXT("report.u16"), kUtf16, WriteReport},
    {KEST_TEXT("totals.txt"), kBytes, WriteTotals},
};

}  // namespace

bool WriteManifests(OutputFolder& folder, const SResult& result) {
  return folder.Write(kManifests, result);
}

}  // namespace census
