#include "progress.h"

#include <algorithm>

#include "kest/thread.h"
#include "numbers.h"
#include "posix.h"

using KEST::TBstr;

namespace census {

namespace {

constexpr unsigned int kTerminalMs = 100;
constexpr unsigned int kPlainMs = 1000;
constexpr unsigned int kSettledMs = 1000;  // before that, no guess at the time left
constexpr int kSmallestBar = 5;
constexpr double kMostShare = 0.99;  // what is found has still to be read

}  // namespace

Progress::Progress(int ownWorkers)
    : workers(ownWorkers),
      terminal(IsTerminal(kStandardOut)),
      start(KestGetMilliseconds()),
      shown(0),
      anyShown(false),
      files(0),
      bytes(0),
      share(0) {}

void Progress::Add(const Entry& entry) {
  if (entry.kind == kDirectory) share = std::min(share + entry.share, kMostShare);
  if (entry.kind != kRegular) return;
  ++files;
  if (entry.digested && entry.size > entry.announced) bytes += entry.size - entry.announced;
}

void Progress::Show() {
  const unsigned int now = GetMilliseconds();
  if (anyShown && now - shown < (terminal ? kTerminalMs : kPlainMs)) return;
  anyShown = true;
  shown = now;
  const TBstr facts = Facts();
  if (terminal) {
    // Drawn over the line before, whose rest is erased.
    Print(kStandardOut, TBstr("\r") + Bar(facts, TerminalWidth(kStandardOut)) + TBstr("\x1B[K"));
  } else {
    Print(kStandardOut, facts + TBstr("\n"));
  }
}

void Progress::End() {
  if (terminal && anyShown) Print(kStandardOut, TBstr("\r\x1B[K"));
}

unsigned int Progress::GetMilliseconds() const { return KestGetMilliseconds() - start; }

TBstr Progress::Facts() const {
  const unsigned int ms = GetMilliseconds();
  TBstr facts;
  facts.Format(KEST_TEXT("%3d%%  %s files  %s  %s/s  %d workers"), static_cast<int>(share * 100),
               Grouped(files).GetString(), Amount(bytes).GetString(),
               Amount(bytes * 1000 / (ms + 1)).GetString(), workers);
  if (ms < kSettledMs || share <= 0) return facts;
  const double left = (1 - share) / share * ms / 1000;
  return facts + TBstr("  ") + Duration(static_cast<long long>(left)) + TBstr(" left");
}

// The last column stays free: some terminals move on when it is written.
TBstr Progress::Bar(const TBstr& facts, int width) const {
  const int room = width - 1 - facts.GetLength() - 3;
  if (room < kSmallestBar) return facts.Left(width - 1);
  const int full = static_cast<int>(share * room);
  TBstr bar(u'[', 1);
  return bar + TBstr(u'#', full) + TBstr(u'-', room - full) + TBstr("] ") + facts;
}

}  // namespace census
