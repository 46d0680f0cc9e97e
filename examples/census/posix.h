// The little that the census asks of the system without Kest: what kind of file a name is, why a
// call failed, signals, and the terminal. A port of the census rewrites this file and no other.

#ifndef CENSUS_POSIX_H
#define CENSUS_POSIX_H

#include "entry.h"
#include "kest/bridge/lock.h"
#include "kest/string.h"
#include "kest/thread.h"

namespace census {

// A snapshot of what the system knows of one file. Two that are equal mean that nobody wrote to
// the file, or put another one in its place, in between.
struct SLook {
  EKind kind;
  long long size;      // bytes
  long modified;       // seconds since 1970
  long long stamp[4];  // device, inode, and the fine parts of the times of change
};
bool operator==(const SLook& a, const SLook& b);

// Looks at a name itself, never through a link. False when it is gone or out of reach.
bool LookAt(const KEST::TBstr& spec, SLook* look);

// The reason that the system gave for the latest failure in this thread; empty when it gave none
// since ForgetError.
KEST::TBstr ErrorText();
void ForgetError();

// Why a folder cannot be listed; empty when nothing stands in the way.
KEST::TBstr WhyNotListed(const KEST::TBstr& spec);

// The one absolute spec without links that a spec stands for; empty when it does not exist.
KEST::TBstr RealSpec(const KEST::TBstr& spec);

// The folder of the program that runs, with "/" at its end; empty when the system does not say.
KEST::TBstr ProgramFolder();

int ProcessorCount();

// Where text goes that is no file of the census. Bytes as they are; a reader who left is no error.
enum EStream { kStandardOut = 1, kStandardError = 2 };
void Print(EStream stream, const KEST::TBstr& text);
bool IsTerminal(EStream stream);
int TerminalWidth(EStream stream);  // columns

// Turns interrupt, terminate and hang-up signals into calls on a thread of their own, so that the
// receiver may lock and post as it likes. A second signal ends the process on the spot. Start
// before any other thread: they inherit which signals are held back.
class Interrupts {
 public:
  Interrupts(void (*receiver)(void* data, int signal), void* data);
  ~Interrupts();
  Interrupts(const Interrupts&) = delete;
  Interrupts& operator=(const Interrupts&) = delete;

  bool Start();
  void Stop();

 private:
  static int ThreadProc(void* self);
  void Wait();
  bool IsStopping();

  void (*receiver)(void* data, int signal);
  void* data;
  KEST::TThread thread;
  KEST::TMutex lock;  // guards stopping
  bool stopping;
  bool running;
};

}  // namespace census

#endif  // CENSUS_POSIX_H
