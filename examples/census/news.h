// What the threads tell the main thread, as messages in the process's queue.

#ifndef CENSUS_NEWS_H
#define CENSUS_NEWS_H

#include "entry.h"

namespace census {

class Census;

// The identifiers are requested once, by the main thread, before any thread starts. The first
// parameter of each message is the Census.
struct SNews {
  Census* census;
  unsigned int entryId;      // second parameter: a complete Entry, from now on the census's
  unsigned int bytesId;      // second parameter: a number of bytes read, of a file not yet complete
  unsigned int endedId;      // a thread has posted its last
  unsigned int interruptId;  // second parameter: the signal's number

  void PostEntry(Entry* entry) const;
  void PostBytes(long long bytes) const;
  void PostEnded() const;
  void PostInterrupt(int signal) const;
};

}  // namespace census

#endif  // CENSUS_NEWS_H
