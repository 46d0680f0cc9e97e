// What the user sees while the census runs.

#ifndef CENSUS_PROGRESS_H
#define CENSUS_PROGRESS_H

#include "entry.h"
#include "kest/string.h"

namespace census {

// On a terminal one line, drawn over and over; elsewhere a line now and then. The clock decides
// when, so news may come as fast as it likes.
class Progress {
 public:
  explicit Progress(int workers);

  void Add(const Entry& entry);
  void AddBytes(long long count) { bytes += count; }
  // Shows the state if it is time.
  void Show();
  // Leaves the terminal's line for what follows.
  void End();

  unsigned int GetMilliseconds() const;

 private:
  KEST::TBstr Facts() const;
  KEST::TBstr Bar(const KEST::TBstr& facts, int width) const;

  const int workers;
  const bool terminal;
  const unsigned int start;  // milliseconds; the clock wraps, differences do not
  unsigned int shown;
  bool anyShown;
  int files;
  long long bytes;
  double share;  // of the tree, as the walk estimates it
};

}  // namespace census

#endif  // CENSUS_PROGRESS_H
