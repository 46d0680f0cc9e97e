#include "options.h"

#include <algorithm>

#include "kest/file.h"
#include "posix.h"

using KEST::TBstr;
using KEST::TFile;

namespace census {

const char* const kHelpText =
    "Usage: kest-census [DIR] [-o OUT] [--workers N] [--pattern P] [--system ROOT]\n"
    "                   [--formats DIR] [--no-seal]\n"
    "       kest-census --verify KEY SIG [FILE]\n"
    "Takes an inventory of the directory tree DIR (/usr/share) that other tools can check.\n"
    "\n"
    "  -o, --output OUT   the folder for the results (census)\n"
    "  --workers N        threads that read files, 1 to 64 (one for each processor)\n"
    "  --pattern P        only names that match P, as a shell would match them; directories\n"
    "                     are entered whatever their names\n"
    "  --formats DIR      where the modules of more output formats are (formats, beside the "
    "program)\n"
    "  --no-seal          do not encipher the results into OUT/sealed\n"
    "  --system ROOT      where the machine's own /etc, /usr and /var are looked for (/)\n"
    "  --verify KEY SIG   count nothing; tell whether SIG is the signature of FILE "
    "(OUT/SHA1SUMS):\n"
    "                     PKCS #1 v1.5 with SHA-1 or MD5; KEY is a public RSA key in PEM or DER\n"
    "  --help, --version  this text, the version\n"
    "\n"
    "OUT then holds files.tsv, MD5SUMS, SHA1SUMS, MD4SUMS, dups.txt, skipped.txt, report.txt,\n"
    "report.u16, report.html, the text in it (report.html.txt) and totals.txt; CKSUMS, checksums\n"
    "of these and of some of DIR, is a module's work. Links are listed, not followed; fifos,\n"
    "sockets and devices are listed, not opened. Of the machine itself OUT tells\n"
    "  certificates.*     the certificates that it trusts\n"
    "  people.tsv         who maintains its packages\n"
    "  addresses.tsv      the IPv4 addresses of its hosts and name servers, as numbers and back\n"
    "  languages.tsv      its locales, with the numbers of language and encoding\n"
    "  notes.txt          what of this is missing here or cannot be read\n"
    "OUT/sealed holds each of these files enciphered with DES, RC2 and RC4, and OUT/seal.tsv the\n"
    "keys and HMACs: keep that one to yourself.\n"
    "\n"
    "Exit status:\n"
    "  0    everything was read; FILE is signed\n"
    "  1    done, but something could not be read: see skipped.txt; FILE is not signed\n"
    "  2    a mistake on the command line\n"
    "  3    DIR cannot be listed, OUT cannot be written, or memory ran out; OUT is as it was;\n"
    "       KEY, SIG or FILE cannot be read\n"
    "  130  interrupted (128 and the signal's number): OUT holds what was done until then\n";

namespace {

bool NeedsValue(const TBstr& name) {
  return name == KEST_TEXT("-o") || name == KEST_TEXT("--output") ||
         name == KEST_TEXT("--workers") || name == KEST_TEXT("--pattern") ||
         name == KEST_TEXT("--system") || name == KEST_TEXT("--verify") ||
         name == KEST_TEXT("--formats");
}

// The number that text is from its first unit to its last; 0 for anything else.
int WholeNumber(const TBstr& text) {
  constexpr int kMostDigits = 9;
  for (int i = 0; i < text.GetLength(); ++i) {
    if (!kest_isudigit(text.GetAt(i))) return 0;
  }
  return text.GetLength() <= kMostDigits ? text.ToLong() : 0;
}

}  // namespace

Options::Options()
    : directory("/usr/share"),
      output("census"),
      directoryGiven(false),
      workers(std::min<int>(ProcessorCount(), kMaxWorkers)),
      seal(true) {}

Options::EAction Options::Parse(int argc, const char* const* argv, TBstr* error) {
  bool optionsOver = false;
  for (int i = 1; i < argc; ++i) {
    TBstr name(argv[i]), value;
    if (!optionsOver && name == KEST_TEXT("--")) {
      optionsOver = true;
    } else if (optionsOver || name.GetAt(0) != u'-' || name.GetLength() == 1) {
      if (directoryGiven) {
        *error = TBstr("one directory at a time: ") + name;
        return kRefuse;
      }
      directoryGiven = true;
      directory = name;
    } else {
      const int equals = name.Find(u'=');
      if (name.Left(2) == KEST_TEXT("--") && equals > 0) {
        value = name.Mid(equals + 1);
        name = name.Left(equals);
      } else if (NeedsValue(name)) {
        if (i + 1 < argc) value = argv[++i];
      }
      if (name == KEST_TEXT("--verify") && i + 1 < argc) signature = argv[++i];
      const EAction action = ParseOption(name, value, error);
      if (action != kRun) return action;
    }
  }
  if (!directory.IsEmpty()) return kRun;
  *error = "an empty name is no directory";
  return kRefuse;
}

Options::EAction Options::ParseOption(const TBstr& name, const TBstr& value, TBstr* error) {
  if (name == KEST_TEXT("--help") && value.IsEmpty()) return kShowHelp;
  if (name == KEST_TEXT("--version") && value.IsEmpty()) return kShowVersion;
  if (name == KEST_TEXT("--no-seal") && value.IsEmpty()) {
    seal = false;
    return kRun;
  }
  if (!NeedsValue(name)) {
    *error = TBstr("unknown option ") + name;
    return kRefuse;
  }
  if (value.IsEmpty()) {
    *error = name + KEST_TEXT(" needs a value");
    return kRefuse;
  }
  if (name == KEST_TEXT("--workers")) {
    workers = WholeNumber(value);
    if (workers >= 1 && workers <= kMaxWorkers) return kRun;
    *error = TBstr("--workers takes a number from 1 to 64, not ") + value;
    return kRefuse;
  }
  if (name == KEST_TEXT("--verify")) {
    key = value;
    if (!signature.IsEmpty()) return kRun;
    *error = "--verify needs a key and a signature";
    return kRefuse;
  }
  if (name == KEST_TEXT("--pattern")) {
    pattern = value;
    if (pattern.Find(TFile::kDirectorySeparator) < 0) return kRun;
    *error = TBstr("--pattern is matched with single names, so it holds no /: ") + value;
    return kRefuse;
  }
  TBstr& text = name == KEST_TEXT("--system")    ? system
                : name == KEST_TEXT("--formats") ? formats
                                                 : output;
  text = value;
  return kRun;
}

}  // namespace census
