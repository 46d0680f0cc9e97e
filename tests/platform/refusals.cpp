// A library to preload. Each function here stands before the system's of the same name and passes
// calls on, except for the one call that the test program wants refused.

#include "platform/refusals.h"

#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <glob.h>
#include <link.h>
#include <pthread.h>
#include <sched.h>
#include <semaphore.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/utsname.h>
#include <time.h>
#include <unistd.h>
#include <utime.h>

#include <initializer_list>
#include <iterator>

namespace {

using kest_test::Kind;
using kest_test::Way;

// Every way in which a function that the library calls can fail, with an error that its manual page
// names. time and gettimeofday do fail: in a 32-bit process, from 2038 on.
constexpr Way kWays[] = {
    {"fopen", "", EMFILE},
    {"fread", "", EIO},
    {"fread", "short", EIO},
    {"fwrite", "", ENOSPC},
    {"fwrite", "short", ENOSPC},
    {"fflush", "", ENOSPC},
    {"fclose", "", EIO},
    {"fseek", "", EIO},
    {"ftell", "", EOVERFLOW},
    {"fileno", "", EBADF},
    {"ftruncate", "", EIO},
    {"mkdir", "", ENOSPC},
    {"rmdir", "", EBUSY},
    {"remove", "", EACCES},
    {"rename", "", EXDEV},
    {"utime", "", EPERM},
    {"glob", "no space", GLOB_NOSPACE},
    {"glob", "aborted", GLOB_ABORTED},
    {"glob", "no match", GLOB_NOMATCH},
    {"lstat64", "", EACCES},
    {"realpath", "", ELOOP},
    {"dlopen", "", 0},
    {"dlsym", "", 0},
    {"dlinfo", "", 0},
    {"dladdr1", "", 0},
    {"dlclose", "", 0},
    {"pthread_create", "", EAGAIN},
    {"pthread_join", "", EDEADLK},
    {"backtrace", "", 0},
    {"pthread_cancel", "", ESRCH},
    {"pthread_key_create", "", EAGAIN},
    {"pthread_setspecific", "", ENOMEM},
    {"pthread_mutex_init", "", ENOMEM},
    {"pthread_mutex_lock", "", EINVAL},
    {"pthread_mutex_unlock", "", EPERM},
    {"pthread_mutex_destroy", "", EBUSY},
    {"pthread_cond_init", "", EAGAIN},
    {"pthread_cond_wait", "", EINVAL},
    {"pthread_cond_wait", "for no reason", 0},
    {"pthread_cond_timedwait", "", ETIMEDOUT},
    {"pthread_cond_signal", "", EINVAL},
    {"pthread_cond_destroy", "", EBUSY},
    {"sem_wait", "", EINTR},
    {"sched_getaffinity", "", EINVAL},
    {"select", "", EINTR},
    {"uname", "", EFAULT},
    {"gettimeofday", "", EOVERFLOW},
    {"time", "", EOVERFLOW},
    {"mktime", "", EOVERFLOW},
    {"gmtime_r", "", EOVERFLOW},
    {"localtime_r", "", EOVERFLOW},
};

}  // namespace

static_assert(std::size(kWays) <= kest_test::kMaxWays);

kest_test::Refusals kest_test_refusals = {kWays, static_cast<int>(std::size(kWays))};

namespace {

kest_test::Refusals& s_refusals = kest_test_refusals;

// In a program that knows nothing of this library, what is created when a call has been refused, or
// null.
const char* s_trace = nullptr;

// Sanitizers that check the library call the system for themselves, and take no refusal. In a
// program that knows nothing of this, the library alone takes them.
bool TakesRefusals(const void* caller) {
  Dl_info info;
  if (dladdr(caller, &info) == 0) return false;
  const auto isIn = [&](const char* library) { return strstr(info.dli_fname, library) != nullptr; };
  return s_trace != nullptr ? isIn("/libKest.so") : !isIn("/libasan.so");
}

// The way in which this call of function is to fail, or null. Sets errno.
const Way* Refused(const char* function, const void* caller) {
  if (!s_refusals.on || !TakesRefusals(caller)) return nullptr;
  const Way* refused = nullptr;
  const int aim = s_refusals.call;
  for (int i = 0; i < s_refusals.wayCount; ++i) {
    if (strcmp(kWays[i].function, function) != 0) continue;
    const int call = ++s_refusals.calls[i];
    if (aim == 0 || i != s_refusals.way) continue;
    if (s_refusals.allFromThere ? call >= aim : call == aim) refused = &kWays[i];
  }
  if (refused == nullptr) return nullptr;
  ++s_refusals.refused;
  if (s_trace != nullptr) close(creat(s_trace, 0600));
  errno = refused->error;
  return refused;
}

// Refuses in any program: KEST_TEST_REFUSE is the way's index and the call, KEST_TEST_REFUSED a
// file that tells afterwards whether there was such a call.
__attribute__((constructor)) void AimByEnvironment() {
  const char* const aim = getenv("KEST_TEST_REFUSE");
  int way = 0, call = 0;
  if (aim == nullptr || sscanf(aim, "%d %d", &way, &call) != 2) return;
  s_trace = getenv("KEST_TEST_REFUSED");
  s_refusals.way = way;
  s_refusals.call = call;
  s_refusals.on = s_trace != nullptr;
}

using Dlsym = void*(void*, const char*);

// dlsym stands here too, so the system's is found by its version: of today, of old (32 and 64
// bits).
Dlsym* TrueDlsym() {
  static Dlsym* found = nullptr;
  for (const char* version : {"GLIBC_2.34", "GLIBC_2.0", "GLIBC_2.2.5"}) {
    if (found == nullptr) {
      found = reinterpret_cast<Dlsym*>(dlvsym(RTLD_NEXT, "dlsym", version));
    }
  }
  return found;
}

bool Succeeded(int result) { return result == 0; }
bool Succeeded(const void* result) { return result != nullptr; }

}  // namespace

// BEFORE(result, name, parameters): begins a function that stands before the system's. The label
// gives it its name; under that name the headers have declared what it may throw.
#define BEFORE(result, name, parameters)                     \
  extern "C" result before_##name parameters __asm__(#name); \
  result before_##name parameters

// The way in which the function's present call is to fail, or null.
#define REFUSED(name) Refused(name, __builtin_return_address(0))

// The system's own.
#define TRUE(name)                                                                      \
  ([] {                                                                                 \
    static decltype(&before_##name) next = nullptr;                                     \
    if (next == nullptr) {                                                              \
      next = reinterpret_cast<decltype(&before_##name)>(TrueDlsym()(RTLD_NEXT, #name)); \
    }                                                                                   \
    return next;                                                                        \
  }())

// A function of which nothing but its failure matters. refusal is its result then; way may be in
// it.
#define REFUSABLE(result, name, parameters, arguments, refusal) \
  BEFORE(result, name, parameters) {                            \
    const Way* const way = REFUSED(#name);                      \
    return way != nullptr ? (refusal) : TRUE(name) arguments;   \
  }

// One that gives out a thing of that kind when it succeeds.
#define TAKES(kind, result, name, parameters, arguments, refusal) \
  BEFORE(result, name, parameters) {                              \
    const Way* const way = REFUSED(#name);                        \
    if (way != nullptr) return refusal;                           \
    result const taken = TRUE(name) arguments;                    \
    if (Succeeded(taken)) ++s_refusals.held[kest_test::kind];     \
    return taken;                                                 \
  }

// One that takes it back, also when it reports a failure.
#define GIVES_BACK(kind, result, name, parameters, arguments, refusal) \
  BEFORE(result, name, parameters) {                                   \
    const Way* const way = REFUSED(#name);                             \
    --s_refusals.held[kest_test::kind];                                \
    result const given = TRUE(name) arguments;                         \
    return way != nullptr ? (refusal) : given;                         \
  }

TAKES(kStreams, FILE*, fopen, (const char* path, const char* mode), (path, mode), nullptr)
TAKES(kStreams, FILE*, fopen64, (const char* path, const char* mode), (path, mode), nullptr)
GIVES_BACK(kStreams, int, fclose, (FILE * stream), (stream), EOF)
REFUSABLE(int, fflush, (FILE * stream), (stream), EOF)
REFUSABLE(int, fseek, (FILE * stream, long offset, int origin), (stream, offset, origin), -1)
REFUSABLE(long, ftell, (FILE * stream), (stream), -1)
REFUSABLE(int, fileno, (FILE * stream), (stream), -1)
REFUSABLE(int, ftruncate, (int descriptor, off_t length), (descriptor, length), -1)

// Half of what is wanted is transferred when the way is "short".
size_t Granted(const Way* way, size_t count) {
  if (way == nullptr) return count;
  return *way->how != '\0' ? count / 2 : 0;
}
BEFORE(size_t, fread, (void* buffer, size_t size, size_t count, FILE* stream)) {
  return TRUE(fread)(buffer, size, Granted(REFUSED("fread"), count), stream);
}
BEFORE(size_t, fwrite, (const void* buffer, size_t size, size_t count, FILE* stream)) {
  return TRUE(fwrite)(buffer, size, Granted(REFUSED("fwrite"), count), stream);
}

REFUSABLE(int, mkdir, (const char* path, mode_t mode), (path, mode), -1)
REFUSABLE(int, rmdir, (const char* path), (path), -1)
REFUSABLE(int, remove, (const char* path), (path), -1)
REFUSABLE(int, rename, (const char* from, const char* to), (from, to), -1)
REFUSABLE(int, utime, (const char* path, const utimbuf* times), (path, times), -1)
REFUSABLE(int, lstat64, (const char* path, struct stat64* status), (path, status), -1)

// A search that fails has found some paths all the same.
BEFORE(int, glob,
       (const char* pattern, int flags, int (*onError)(const char*, int), glob_t* found)) {
  const Way* const way = REFUSED("glob");
  const int result = TRUE(glob)(pattern, flags, onError, found);
  if (found->gl_pathv != nullptr) ++s_refusals.held[kest_test::kGlobs];
  return way != nullptr ? way->error : result;
}
BEFORE(void, globfree, (glob_t * found)) {
  if (found->gl_pathv != nullptr) --s_refusals.held[kest_test::kGlobs];
  TRUE(globfree)(found);
}

REFUSABLE(char*, realpath, (const char* path, char* resolved), (path, resolved), nullptr)
// What the compiler makes of realpath where it knows the buffer's size.
BEFORE(char*, __realpath_chk, (const char* path, char* resolved, size_t size)) {
  return REFUSED("realpath") != nullptr ? nullptr : TRUE(__realpath_chk)(path, resolved, size);
}
TAKES(kModules, void*, dlopen, (const char* path, int flags), (path, flags), nullptr)
REFUSABLE(int, dlinfo, (void* module, int request, void* result), (module, request, result), -1)
REFUSABLE(int, dladdr1, (const void* address, Dl_info* info, void** extra, int flags),
          (address, info, extra, flags), 0)

// The last step is a jump, not a call: to the system's dlsym the caller is who called this.
BEFORE(void*, dlsym, (void* module, const char* name)) {
  return REFUSED("dlsym") != nullptr ? nullptr : TrueDlsym()(module, name);
}

// A refusal leaves the module where it is.
BEFORE(int, dlclose, (void* module)) {
  if (REFUSED("dlclose") != nullptr) {
    s_refusals.keptModule = module;
    return -1;
  }
  if (s_refusals.keptModule == module) s_refusals.keptModule = nullptr;
  --s_refusals.held[kest_test::kModules];
  return TRUE(dlclose)(module);
}

TAKES(kThreads, int, pthread_create,
      (pthread_t * thread, const pthread_attr_t* attributes, void* (*routine)(void*), void* arg),
      (thread, attributes, routine, arg), way->error)
GIVES_BACK(kThreads, int, pthread_detach, (pthread_t thread), (thread), way->error)
BEFORE(int, pthread_join, (pthread_t thread, void** value)) {
  const Way* const way = REFUSED("pthread_join");
  if (way != nullptr) return way->error;
  --s_refusals.held[kest_test::kThreads];
  return TRUE(pthread_join)(thread, value);
}
REFUSABLE(int, backtrace, (void** frames, int count), (frames, count), 0)
REFUSABLE(int, pthread_cancel, (pthread_t thread), (thread), way->error)

TAKES(kKeys, int, pthread_key_create, (pthread_key_t * key, void (*destructor)(void*)),
      (key, destructor), way->error)
GIVES_BACK(kKeys, int, pthread_key_delete, (pthread_key_t key), (key), way->error)
REFUSABLE(int, pthread_setspecific, (pthread_key_t key, const void* value), (key, value),
          way->error)

TAKES(kMutexes, int, pthread_mutex_init,
      (pthread_mutex_t * mutex, const pthread_mutexattr_t* attributes), (mutex, attributes),
      way->error)
GIVES_BACK(kMutexes, int, pthread_mutex_destroy, (pthread_mutex_t * mutex), (mutex), way->error)
REFUSABLE(int, pthread_mutex_lock, (pthread_mutex_t * mutex), (mutex), way->error)
REFUSABLE(int, pthread_mutex_unlock, (pthread_mutex_t * mutex), (mutex), way->error)

TAKES(kConditions, int, pthread_cond_init,
      (pthread_cond_t * condition, const pthread_condattr_t* attributes), (condition, attributes),
      way->error)
GIVES_BACK(kConditions, int, pthread_cond_destroy, (pthread_cond_t * condition), (condition),
           way->error)
REFUSABLE(int, pthread_cond_signal, (pthread_cond_t * condition), (condition), way->error)

void BeforeWait() {
  void (*const call)() = s_refusals.beforeWait;
  if (call != nullptr) call();
}
BEFORE(int, pthread_cond_wait, (pthread_cond_t * condition, pthread_mutex_t* mutex)) {
  const Way* const way = REFUSED("pthread_cond_wait");
  if (way != nullptr) return way->error;
  BeforeWait();
  return TRUE(pthread_cond_wait)(condition, mutex);
}
BEFORE(int, pthread_cond_timedwait,
       (pthread_cond_t * condition, pthread_mutex_t* mutex, const timespec* deadline)) {
  const Way* const way = REFUSED("pthread_cond_timedwait");
  if (way != nullptr) return way->error;
  BeforeWait();
  return TRUE(pthread_cond_timedwait)(condition, mutex, deadline);
}

TAKES(kSemaphores, int, sem_init, (sem_t * semaphore, int shared, unsigned int value),
      (semaphore, shared, value), -1)
GIVES_BACK(kSemaphores, int, sem_destroy, (sem_t * semaphore), (semaphore), -1)
REFUSABLE(int, sem_wait, (sem_t * semaphore), (semaphore), -1)

REFUSABLE(int, sched_getaffinity, (pid_t thread, size_t size, cpu_set_t* cores),
          (thread, size, cores), -1)
REFUSABLE(int, select,
          (int count, fd_set* readers, fd_set* writers, fd_set* exceptions, timeval* timeout),
          (count, readers, writers, exceptions, timeout), -1)
REFUSABLE(int, uname, (utsname * system), (system), -1)
REFUSABLE(int, gettimeofday, (timeval * now, void* zone), (now, zone), -1)
REFUSABLE(time_t, time, (time_t * now), (now), -1)
REFUSABLE(time_t, mktime, (tm * fields), (fields), -1)
REFUSABLE(tm*, gmtime_r, (const time_t* time, tm* fields), (time, fields), nullptr)
REFUSABLE(tm*, localtime_r, (const time_t* time, tm* fields), (time, fields), nullptr)
