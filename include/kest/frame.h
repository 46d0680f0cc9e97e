// The library frame: start and stop, memory, the module entry pair, the C runtime function table
// and the debugging entry points.
//
//   Start and stop  KestInitialize before any other service, KestUninitialize when done. Calls are
//                   counted. The first starts every subsystem and the last stops them; make both
//                   from one thread. Every further thread that uses the library pairs the two
//                   calls as well, because its KestUninitialize frees its thread-local data. The
//                   count takes no lock: where threads come and go, serialise these calls.
//   Memory          Everything the library hands out or takes back goes through three replaceable
//                   hooks, malloc, realloc and free unless the host says otherwise. Memory taken
//                   under one set of hooks and released under another is the host's mistake.
//   Failure         Results only: false, 0 or null. Nothing throws, logs or shows a message.

#ifndef KEST_FRAME_H
#define KEST_FRAME_H

#include <stddef.h>
#include <time.h>

#include "kest/export.h"

namespace KEST {

class TBstr;  // kest/string.h

// A host's allocator. All three hooks have to be there, or the record is ignored as a whole. They
// may be called from any thread, with the contracts of malloc, realloc and free; sizes are bytes.
struct KEST_API SAllocator {
  void* (*alloc)(unsigned int size);
  void* (*realloc)(void* block, unsigned int size);
  void (*free)(void* block);
};

// The module's own start and stop, called by SharedLibInit and SharedLibTerm. ModuleInit ignores
// the handle, does nothing and returns true; ModuleTerm does nothing.
KEST_API bool ModuleInit(void* instance);
KEST_API void ModuleTerm();

// The handle that the module was loaded under. Always null: ModuleInit does not keep its argument.
KEST_API void* ModuleGetInstance();

// The path given to SharedLibInit, one unit a byte; empty before, or when there was no memory for
// it. Not to be called after SharedLibTerm. Calling it takes kest/string.h.
KEST_API TBstr ModuleGetFileSpec();

}  // namespace KEST

extern "C" {

// Starts the library, or, when it runs already, counts one more user and prepares the calling
// thread. allocator holds the hooks to use until the last KestUninitialize and is read only by the
// call that starts the library; null, or a record with a null hook, leaves malloc, realloc and free
// in force. Returns 1, or 0 when a subsystem could not start: the count is then as before, what
// had started stays, its hooks included, and the next call begins again from the first step.
KEST_API int KestInitialize(KEST::SAllocator* allocator);

// Balances one KestInitialize: frees the calling thread's thread-local data, and on the last call
// stops everything, posted messages and the hooks included. Ignored when nothing is left to
// balance. Before the last call quit and join threads that wait for messages, unregister message
// callbacks, and let every other thread make its call: what they hold outlives the last one, and
// would go to whichever hooks are in force later.
KEST_API void KestUninitialize(void);

// The entry pair that a module loader (TLibrary in kest/file.h) calls after loading and before
// unloading a module; this is the library's own. path is the module's file, 8-bit and terminated;
// it is copied, null counts as no path. Without memory for the copy ModuleGetFileSpec is empty and
// the call still succeeds. Returns ModuleInit's result. One SharedLibTerm for each SharedLibInit;
// neither touches the count of KestInitialize.
KEST_API bool SharedLibInit(const char* path);
KEST_API void SharedLibTerm(void);

// The current hooks, called with these very arguments; sizes are bytes. A failed request is the
// hook's null. Usable before KestInitialize. Any thread.
KEST_API void* KestMemAlloc(unsigned int size);
KEST_API void* KestMemRealloc(void* block, unsigned int size);
KEST_API void KestMemFree(void* block);

// The same as KestMemAlloc and KestMemRealloc. What follows the size (a file name and a line, say)
// is accepted and ignored.
KEST_API void* KestMemDebugAlloc(unsigned int size, ...);
KEST_API void* KestMemDebugRealloc(void* block, unsigned int size, ...);

// Always 0: no accounting is kept.
KEST_API unsigned int KestMemGetTotalSize(void);

// The debugging entry points. In this build they accept their arguments and do nothing; no
// argument is read and no callback is ever called. Any thread.
KEST_API void KestSetAssertProc(void (*proc)(const char* expression, const char* file, int line));
KEST_API void KestSetDebugStringProc(void (*proc)(const char* text));
KEST_API void KestAssert(const char* expression, const char* file, int line);
KEST_API void KestTrace(const char* format, ...);
KEST_API void KestTraceEx(unsigned int category, const char* format, ...);
KEST_API void KestDumpMem(const void* data, unsigned int size);
KEST_API void KestDebugBreak(void);

// Always 1, for null too.
KEST_API int KestIsValidAddress(const void* address);

// defaultValue, for every key: text of either width, or null.
KEST_API int KestGetDebugSetting(const void* key, int defaultValue);

// The C runtime function table: 41 writable slots, one after another in the library's data in this
// order, filled when the library is loaded. A client calls the basic runtime through them; what a
// host stores into a slot is what every later caller of that slot gets, so store before other
// threads run. The library itself calls through two of them only, kest_strlen and kest_strcpy, in
// SharedLibInit. Slots of C library functions count in size_t, the library's own in unsigned int;
// the ucs... functions and their kin are described in kest/string.h under the same names.
extern KEST_API void* (*kest_memset)(void*, int, size_t);
extern KEST_API void* (*kest_memcpy)(void*, const void*, size_t);
extern KEST_API void* (*kest_memmove)(void*, const void*, size_t);
extern KEST_API int (*kest_memcmp)(const void*, const void*, size_t);
extern KEST_API void* (*kest_memchr)(const void*, int, size_t);
extern KEST_API int (*kest_snprintf)(char*, size_t, const char*, ...);
extern KEST_API int (*kest_sprintf)(char*, const char*, ...);
extern KEST_API size_t (*kest_strlen)(const char*);
extern KEST_API char* (*kest_strcpy)(char*, const char*);
extern KEST_API char* (*kest_strncpy)(char*, const char*, size_t);
extern KEST_API char* (*kest_strcat)(char*, const char*);
extern KEST_API int (*kest_strcmp)(const char*, const char*);
extern KEST_API int (*kest_strncmp)(const char*, const char*, size_t);
extern KEST_API char* (*kest_strchr)(const char*, int);
extern KEST_API char* (*kest_strrchr)(const char*, int);
extern KEST_API char* (*kest_strstr)(const char*, const char*);
extern KEST_API long (*kest_strtol)(const char*, char**, int);
extern KEST_API unsigned long (*kest_strtoul)(const char*, char**, int);
extern KEST_API int (*kest_tolower)(int);
extern KEST_API int (*kest_toupper)(int);
extern KEST_API unsigned int (*kest_strlcpy)(char*, const char*, unsigned int);
extern KEST_API unsigned int (*kest_strlcat)(char*, const char*, unsigned int);
extern KEST_API unsigned int (*kest_ucslen)(const unsigned short*);
extern KEST_API unsigned short* (*kest_ucscpy)(unsigned short*, const unsigned short*);
extern KEST_API unsigned short* (*kest_ucsncpy)(unsigned short*, const unsigned short*,
                                                unsigned int);
extern KEST_API unsigned short* (*kest_ucscat)(unsigned short*, const unsigned short*);
extern KEST_API int (*kest_ucscmp)(const unsigned short*, const unsigned short*);
extern KEST_API int (*kest_ucsncmp)(const unsigned short*, const unsigned short*, unsigned int);
extern KEST_API unsigned short* (*kest_ucschr)(const unsigned short*, unsigned short);
extern KEST_API unsigned short* (*kest_ucsrchr)(const unsigned short*, unsigned short);
extern KEST_API unsigned short* (*kest_ucsstr)(const unsigned short*, const unsigned short*);
extern KEST_API int (*kest_ucstol)(const unsigned short*, unsigned short**, int);
extern KEST_API unsigned int (*kest_ucstoul)(const unsigned short*, unsigned short**, int);
extern KEST_API unsigned int (*kest_ucslcpy)(unsigned short*, const unsigned short*, unsigned int);
extern KEST_API unsigned int (*kest_ucslcat)(unsigned short*, const unsigned short*, unsigned int);
extern KEST_API int (*kest_snuprintf)(unsigned short*, unsigned int, const unsigned short*, ...);
extern KEST_API unsigned short (*kest_toulower)(unsigned short);
extern KEST_API unsigned short (*kest_touupper)(unsigned short);
extern KEST_API int (*kest_abs)(int);
extern KEST_API int (*kest_rand)(void);
extern KEST_API time_t (*kest_time)(time_t*);

}  // extern "C"

// Called by the library frame and the platform layer.
namespace KEST {

// Installs the three hooks if the record has them all, and returns true; MemTerm brings the
// defaults back. Only while no other thread is inside the library.
KEST_API bool MemInit(SAllocator* allocator);
KEST_API void MemTerm();

// Steps of the start and the stop with nothing to do here. The Inits return true.
KEST_API bool BstrInit();
KEST_API void BstrTerm();
KEST_API bool DebugInit();
KEST_API void DebugTerm();
KEST_API void PSTerm();

}  // namespace KEST

#endif  // KEST_FRAME_H
