#include "manifests.h"

#include "addresses.h"
#include "ber.h"
#include "formats.h"
#include "languages.h"
#include "names.h"
#include "numbers.h"
#include "page.h"
#include "report.h"
#include "seal.h"

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

// File, SHA-1, bytes and subject.
void WriteCertificates(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.certificates.GetCount(); ++i) {
    const SCertificate& certificate = result.certificates.GetAt(i);
    out.Put(EscapeForTable(certificate.file) + kTab +
            Hex(certificate.sha1, sizeof(certificate.sha1)) + kTab + Decimal(certificate.size) +
            kTab + certificate.subject + kNewLine);
  }
}

void WriteDer(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.certificates.GetCount(); ++i) {
    const SCertificate& certificate = result.certificates.GetAt(i);
    out.PutBytes(certificate.der, certificate.size);
  }
}

// Where the next certificate begins in certificates.der, and where its structure goes.
struct SStructure {
  OutputFile& out;
  int start;
};

void PutElement(void* structure, const SBerElement& element) {
  const SStructure& self = *static_cast<SStructure*>(structure);
  self.out.Put(Decimal(self.start + element.offset) + kTab + Decimal(element.depth) + kTab +
               Decimal(element.header) + kTab + Decimal(element.item.length) + kTab +
               Hex(&element.item.tag, 1) + kNewLine);
}

// Offset, depth, bytes of header and of content, and tag of every element.
void WriteStructure(OutputFile& out, const SResult& result) {
  SStructure structure = {out, 0};
  for (int i = 0; i < result.certificates.GetCount(); ++i) {
    const SCertificate& certificate = result.certificates.GetAt(i);
    WalkBer(certificate.der, certificate.size, PutElement, &structure);
    structure.start += certificate.size;
  }
}

// Maintainer, number of packages, and their names with blanks between.
void WritePeople(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.people.GetCount(); ++i) {
    const SMaintainer& maintainer = result.people.GetAt(i);
    const TextList& packages = maintainer.packages;
    TBstr names;
    int count = 0;
    for (int k = 0; k < packages.GetCount(); ++k) {
      if (k > 0 && packages.GetAt(k) == packages.GetAt(k - 1)) continue;
      if (count++ > 0) names += KEST_TEXT(" ");
      names += packages.GetAt(k);
    }
    out.Put(EscapeForTable(maintainer.name) + kTab + Decimal(count) + kTab + names + kNewLine);
  }
}

void WriteRows(OutputFile& out, const TextList& rows) {
  for (int i = 0; i < rows.GetCount(); ++i) out.Put(rows.GetAt(i) + kNewLine);
}

void WriteAddresses(OutputFile& out, const SResult& result) { WriteRows(out, result.addresses); }
void WriteLanguages(OutputFile& out, const SResult& result) { WriteRows(out, result.languages); }

void WriteNotes(OutputFile& out, const SResult& result) {
  for (int i = 0; i < result.notes.GetCount(); ++i) {
    const SNote& note = result.notes.GetAt(i);
    out.Put(note.part + kTab + EscapeForTable(note.subject) + kTab + note.reason + kNewLine);
  }
}

void PutTotal(OutputFile& out, const char* name, const TBstr& value) {
  out.Put(TBstr(name) + kTab + value + kNewLine);
}

void WriteTotals(OutputFile& out, const SResult& result) {
  const STotals& totals = result.inventory.GetTotals();
  PutTotal(out, "directory", EscapeForTable(result.directory));
  if (!result.pattern.IsEmpty()) PutTotal(out, "pattern", EscapeForTable(result.pattern));
  if (!result.system.IsEmpty()) PutTotal(out, "system", EscapeForTable(result.system));
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

const SManifest<SResult> kManifests[] = {
    {KEST_TEXT("files.tsv"), kBytes, WriteFiles},
    {KEST_TEXT("MD5SUMS"), kBytes, WriteMd5Sums},
    {KEST_TEXT("SHA1SUMS"), kBytes, WriteSha1Sums},
    {KEST_TEXT("MD4SUMS"), kBytes, WriteMd4Sums},
    {KEST_TEXT("dups.txt"), kBytes, WriteDuplicates},
    {KEST_TEXT("skipped.txt"), kBytes, WriteSkipped},
    {KEST_TEXT("report.txt"), kUtf8, WriteReport},
    {KEST_TEXT("report.u16"), kUtf16, WriteReport},
    {KEST_TEXT("report.html"), kUtf8, WritePage},
    {KEST_TEXT("report.html.txt"), kUtf8, WritePageText},
    {KEST_TEXT("certificates.tsv"), kBytes, WriteCertificates},
    {KEST_TEXT("certificates.der"), kBytes, WriteDer},
    {KEST_TEXT("certificates.asn1"), kBytes, WriteStructure},
    {KEST_TEXT("people.tsv"), kBytes, WritePeople},
    {KEST_TEXT("addresses.tsv"), kBytes, WriteAddresses},
    {KEST_TEXT("languages.tsv"), kBytes, WriteLanguages},
};

// What follows when all that can fail without harm has been tried.
const SManifest<SResult> kLastManifests[] = {
    {KEST_TEXT("notes.txt"), kBytes, WriteNotes},
    {KEST_TEXT("totals.txt"), kBytes, WriteTotals},
};

}  // namespace

void ReadMachine(SResult* result) {
  TBstr reason("not sealed, as asked");
  result->sealed = result->sealed && SeedRandom(&reason);
  if (!result->sealed) result->notes.Add("seal", "random bytes", reason);
  result->certificates.Read(result->system, result->notes);
  result->people.Read(result->system, result->notes);
  ReadAddresses(result->system, &result->addresses, result->notes);
  ReadLanguages(result->system, &result->languages, result->notes);
}

bool WriteManifests(OutputFolder& folder, SResult* result) {
  const bool good = folder.Write(kManifests, *result) &&
                    WriteFormats(folder, result->formats, result) &&
                    folder.Write(kLastManifests, *result) &&
                    SealManifests(folder, result->sealed) && folder.Publish("totals.txt");
  if (!good) folder.Discard();
  return good;
}

}  // namespace census
