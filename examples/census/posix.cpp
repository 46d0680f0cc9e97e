#include "posix.h"

#include <errno.h>
#include <fcntl.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "kest/bridge/session.h"
#include "kest/file.h"
#include "kest/frame.h"

using KEST::TBstr;

namespace census {

namespace {

constexpr int kDefaultWidth = 80;
constexpr int kWakeUp = SIGUSR1;  // ends the wait in Interrupts when nobody interrupts

EKind KindOf(mode_t mode) {
  if (S_ISREG(mode)) return kRegular;
  if (S_ISDIR(mode)) return kDirectory;
  if (S_ISLNK(mode)) return kLink;
  if (S_ISFIFO(mode)) return kFifo;
  if (S_ISSOCK(mode)) return kSocket;
  return S_ISCHR(mode) || S_ISBLK(mode) ? kDevice : kUnknown;
}

// A signal that was ignored when the program started stays so: that is how nohup and background
// jobs ask to be left alone.
void AddUnlessIgnored(sigset_t* set, int signal) {
  struct sigaction action;
  if (sigaction(signal, nullptr, &action) == 0 && action.sa_handler == SIG_IGN) return;
  sigaddset(set, signal);
}

void WaitedSignals(sigset_t* set) {
  sigemptyset(set);
  AddUnlessIgnored(set, SIGINT);
  AddUnlessIgnored(set, SIGTERM);
  AddUnlessIgnored(set, SIGHUP);
  sigaddset(set, kWakeUp);
}

}  // namespace

bool operator==(const SLook& a, const SLook& b) {
  return a.kind == b.kind && a.size == b.size && a.modified == b.modified &&
         memcmp(a.stamp, b.stamp, sizeof(a.stamp)) == 0;
}

bool LookAt(const TBstr& spec, SLook* look) {
  struct stat64 info;
  if (lstat64(spec.GetMultibyteString(), &info) != 0) return false;
  look->kind = KindOf(info.st_mode);
  look->size = info.st_size;
  look->modified = info.st_mtim.tv_sec;
  look->stamp[0] = static_cast<long long>(info.st_dev);
  look->stamp[1] = static_cast<long long>(info.st_ino);
  look->stamp[2] = info.st_ctim.tv_sec;
  look->stamp[3] = info.st_mtim.tv_nsec * 1000000000LL + info.st_ctim.tv_nsec;
  return true;
}

TBstr ErrorText() {
  char text[128];
  return errno == 0 ? TBstr() : TBstr(strerror_r(errno, text, sizeof(text)));
}

void ForgetError() { errno = 0; }

TBstr WhyNotListed(const TBstr& spec) {
  const int found = faccessat(AT_FDCWD, spec.GetMultibyteString(), R_OK | X_OK, AT_EACCESS);
  return found == 0 ? TBstr() : ErrorText();
}

TBstr RealSpec(const TBstr& spec) {
  char path[PATH_MAX];
  return realpath(spec.GetMultibyteString(), path) != nullptr ? TBstr(path) : TBstr();
}

TBstr ProgramFolder() { return KEST::TFile::DirSpecFromFullSpec(RealSpec("/proc/self/exe")); }

int ProcessorCount() {
  const long count = sysconf(_SC_NPROCESSORS_ONLN);
  return count < 1 ? 1 : count > INT_MAX ? INT_MAX : static_cast<int>(count);
}

void Print(EStream stream, const TBstr& text) {
  const char* bytes = text.GetMultibyteString();
  size_t left = strlen(bytes);
  while (left > 0) {
    const ssize_t written = write(stream, bytes, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;
    bytes += written;
    left -= static_cast<size_t>(written);
  }
}

bool IsTerminal(EStream stream) { return isatty(stream) == 1; }

int TerminalWidth(EStream stream) {
  winsize size;
  return ioctl(stream, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : kDefaultWidth;
}

Interrupts::Interrupts(void (*ownReceiver)(void*, int), void* ownData)
    : receiver(ownReceiver), data(ownData), stopping(false), running(false) {}

Interrupts::~Interrupts() { Stop(); }

bool Interrupts::Start() {
  signal(SIGPIPE, SIG_IGN);
  sigset_t set;
  WaitedSignals(&set);
  pthread_sigmask(SIG_BLOCK, &set, nullptr);
  running = thread.Create(ThreadProc, this, false);
  return running;
}

void Interrupts::Stop() {
  if (!running) return;
  {
    KEST::TLockGuard guard(lock);
    stopping = true;
  }
  kill(getpid(), kWakeUp);
  thread.WaitForExit(nullptr);
  running = false;
}

int Interrupts::ThreadProc(void* self) {
  KEST::TThreadSession session;
  static_cast<Interrupts*>(self)->Wait();
  return 0;
}

void Interrupts::Wait() {
  sigset_t set;
  WaitedSignals(&set);
  bool received = false;
  for (int signal = 0; sigwait(&set, &signal) == 0;) {
    if (IsStopping()) return;
    if (signal == kWakeUp) continue;
    if (received) _exit(128 + signal);
    received = true;
    receiver(data, signal);
  }
}

bool Interrupts::IsStopping() {
  KEST::TLockGuard guard(lock);
  return stopping;
}

}  // namespace census
