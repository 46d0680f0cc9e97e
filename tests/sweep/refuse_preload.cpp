// Preloaded into a test program: runs it again and again, each time with another of the library's
// requests for memory refused, until one run asks less often than that.
//
// The requests are taken at the door, KestMemAlloc and KestMemRealloc, so that a test's own hooks
// make no difference. The program is forked before its main, so that hundreds of runs cost little.
//
//   KEST_TEST_REFUSE      "one" refuses the n-th request, "from" that one and all later ones
//   KEST_TEST_REFUSE_LOG  what a run prints goes to this file with .n behind its name; the file
//                         stays when the run neither passed nor merely failed a check
//   KEST_TEST_REFUSE_CAP  n takes every value up to this one, then grows by an eighth each time
//   KEST_TEST_REFUSE_FOR  after so many seconds a run is ended, as it may wait for what never
//   comes,
//                         and no further one is started
//
// To the file LOG itself: a line a run with n, its exit status (128 and more: the signal), and
// whether it was refused something. A last line "cut" tells that there was no time for more.

#include <dlfcn.h>
#include <fcntl.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

namespace {

using Alloc = void* (*)(unsigned int size);
using Realloc = void* (*)(void* block, unsigned int size);

Alloc s_alloc;
Realloc s_realloc;
int s_refuseAt = 0;
bool s_onlyOne;

// Seen by the process that forks the runs.
struct Shared {
  int requests, refused;
} * s_shared;

bool IsRefused() {
  if (s_refuseAt == 0) return false;
  const int n = __atomic_add_fetch(&s_shared->requests, 1, __ATOMIC_RELAXED);
  if (s_onlyOne ? n != s_refuseAt : n < s_refuseAt) return false;
  __atomic_store_n(&s_shared->refused, 1, __ATOMIC_RELAXED);
  return true;
}

int Number(const char* name, int usual) {
  const char* value = getenv(name);
  return value != nullptr ? atoi(value) : usual;
}

void BecomeRun(int n, const char* log, int seconds) {
  const int file = open(log, O_WRONLY | O_CREAT | O_TRUNC, 0666);
  dup2(file, 1);
  dup2(file, 2);
  close(file);
  alarm(static_cast<unsigned int>(seconds));
  s_refuseAt = n;
}

__attribute__((constructor)) void RunAgainAndAgain() {
  // By version, because there are tests that answer dlsym themselves.
  s_alloc = reinterpret_cast<Alloc>(dlvsym(RTLD_NEXT, "KestMemAlloc", "KEST_1"));
  s_realloc = reinterpret_cast<Realloc>(dlvsym(RTLD_NEXT, "KestMemRealloc", "KEST_1"));
  const char* mode = getenv("KEST_TEST_REFUSE");
  const char* log = getenv("KEST_TEST_REFUSE_LOG");
  if (s_alloc == nullptr || mode == nullptr || log == nullptr) return;
  unsetenv("LD_PRELOAD");  // not for what the test starts
  s_onlyOne = strcmp(mode, "one") == 0;
  const int cap = Number("KEST_TEST_REFUSE_CAP", 40);
  const int seconds = Number("KEST_TEST_REFUSE_FOR", 20);
  const time_t end = time(nullptr) + seconds;
  s_shared = static_cast<Shared*>(
      mmap(nullptr, sizeof(Shared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0));
  FILE* results = fopen(log, "w");
  if (results == nullptr || s_shared == MAP_FAILED) _exit(2);
  for (int n = 1;; n += n < cap ? 1 : n / 8) {
    char output[4096];
    snprintf(output, sizeof output, "%s.%d", log, n);
    *s_shared = {};
    fflush(results);
    const pid_t run = fork();
    if (run == 0) {
      BecomeRun(n, output, seconds);
      return;
    }
    int status = 0;
    waitpid(run, &status, 0);
    status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    fprintf(results, "%d %d %d\n", n, status, s_shared->refused);
    if (status <= 1) unlink(output);
    if (s_shared->refused == 0) break;
    if (time(nullptr) >= end) {
      fprintf(results, "cut\n");
      break;
    }
  }
  fclose(results);
  _exit(0);
}

}  // namespace

extern "C" {

__attribute__((visibility("default"))) void* KestMemAlloc(unsigned int size) {
  return IsRefused() ? nullptr : s_alloc(size);
}

__attribute__((visibility("default"))) void* KestMemRealloc(void* block, unsigned int size) {
  return IsRefused() ? nullptr : s_realloc(block, size);
}

}  // extern "C"
