// kest-census: a sealed inventory of a directory tree, written on Kest.

#include "census.h"
#include "kest/bridge/session.h"
#include "kest/kest.h"
#include "manifests.h"
#include "numbers.h"
#include "options.h"
#include "output.h"
#include "posix.h"
#include "signature.h"

using KEST::TBstr;

namespace census {

namespace {

enum EStatus { kAllRead = 0, kSomeNotRead = 1, kBadUsage = 2, kFailed = 3, kSignalled = 128 };

int Complain(const TBstr& what, int status) {
  Print(kStandardError, TBstr("kest-census: ") + what + TBstr("\n"));
  return status;
}

void PrintSummary(const SResult& result, const Options& options, unsigned int ms) {
  const STotals& totals = result.inventory.GetTotals();
  TBstr text;
  text.Format(KEST_TEXT("%s files, %s, in %s directories, %u.%u seconds, %s/s\n"),
              Grouped(totals.files).GetString(), Amount(totals.bytes).GetString(),
              Grouped(totals.directories).GetString(), ms / 1000, ms / 100 % 10,
              Amount(totals.bytes * 1000 / (ms + 1)).GetString());
  Print(kStandardOut, text);
  text.Format(KEST_TEXT("%s links and %s special files listed, %s not read (skipped.txt)\n"),
              Grouped(totals.links).GetString(), Grouped(totals.special).GetString(),
              Grouped(totals.problems).GetString());
  Print(kStandardOut, text);
  text.Format(KEST_TEXT("%s groups of identical files, %s to spare (dups.txt)\n"),
              Grouped(result.duplicates.GetGroupCount()).GetString(),
              Amount(result.duplicates.GetSpareBytes()).GetString());
  Print(kStandardOut, text + TBstr("written to ") + options.output + TBstr("\n"));
}

int TakeCensus(const Options& options) {
  SResult result;
  result.pattern = options.pattern;
  result.directory = RealSpec(options.directory);
  if (result.directory.IsEmpty()) {
    return Complain(options.directory + KEST_TEXT(": ") + ErrorText(), kFailed);
  }
  if (!options.system.IsEmpty()) {
    result.system = RealSpec(options.system);
    if (result.system.IsEmpty()) {
      return Complain(options.system + KEST_TEXT(": ") + ErrorText(), kFailed);
    }
  }
  result.sealed = options.seal;
  result.formats = options.formats.IsEmpty() ? ProgramFolder() + TBstr("formats") : options.formats;
  SLook look;
  if (!LookAt(result.directory, &look) || look.kind != kDirectory) {
    return Complain(options.directory + KEST_TEXT(": not a directory"), kFailed);
  }

  OutputFolder folder(options.output);
  if (!folder.Prepare()) return Complain(folder.GetError(), kFailed);
  const TBstr output = RealSpec(options.output);
  if (output == result.directory) {
    return Complain(options.output + KEST_TEXT(": the results cannot lie in DIR itself"),
                    kBadUsage);
  }
  Census census(options, output, &result);
  if (!census.Run()) return Complain(census.GetError(), kFailed);
  ReadMachine(&result);
  if (!WriteManifests(folder, &result)) return Complain(folder.GetError(), kFailed);
  PrintSummary(result, options, census.GetMilliseconds());
  if (census.GetSignal() != 0) {
    return Complain("interrupted; the results hold what was done", kSignalled + census.GetSignal());
  }
  return result.inventory.GetTotals().problems > 0 ? kSomeNotRead : kAllRead;
}

int Verify(const Options& options) {
  const TBstr file = options.directoryGiven
                         ? options.directory
                         : KEST::TFile::AppendFileNameToSpec(options.output, "SHA1SUMS");
  TBstr text;
  switch (CheckSignature(options.key, options.signature, file, &text)) {
    case kSigned:
      Print(kStandardOut, file + TBstr(": signed, with ") + text + TBstr("\n"));
      return kAllRead;
    case kNotSigned:
      return Complain(file + TBstr(": NOT signed with this key and signature"), kSomeNotRead);
    case kCannotTell:
      break;
  }
  return Complain(text, kFailed);
}

int Main(int argc, const char* const* argv) {
  Options options;
  TBstr error;
  switch (options.Parse(argc, argv, &error)) {
    case Options::kShowHelp:
      Print(kStandardOut, kHelpText);
      return kAllRead;
    case Options::kShowVersion:
      Print(kStandardOut, TBstr("kest-census " KEST_VERSION_STRING " (Kest ") +
                              TBstr(KestGetVersion()) + TBstr(")\n"));
      return kAllRead;
    case Options::kRefuse:
      return Complain(error + KEST_TEXT("\nTry kest-census --help."), kBadUsage);
    case Options::kRun:
      break;
  }
  return options.key.IsEmpty() ? TakeCensus(options) : Verify(options);
}

}  // namespace

}  // namespace census

int main(int argc, char** argv) {
  KEST::TSession session;
  return session ? census::Main(argc, argv) : census::kFailed;
}
