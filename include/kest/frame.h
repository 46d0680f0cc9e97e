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
//   Ownership       Blocks of memory belong to whoever asked for them. Nothing else that is passed
//                   is kept, save where it says so.
//   Threads         Any thread, between start and stop, where nothing else is said.
//   Blocking        Never, save for what the allocator hooks do.
//   Cost            Constant, where nothing else is said.
//   Example         examples/strings/strings.cpp, as every other one
//   See             KestInitialize

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
  void* (*alloc)(unsigned int size);                 // As malloc.
  void* (*realloc)(void* block, unsigned int size);  // As realloc.
  void (*free)(void* block);                         // As free.
};

// The module's own start: ignores its argument and does nothing. SharedLibInit calls it.
//   instance  ignored, and may be null
//   Result    true
//   Failure   none
KEST_API bool ModuleInit(void* instance);

// The module's own stop: does nothing. SharedLibTerm calls it.
//   Failure  none
KEST_API void ModuleTerm();

// The handle that the module was loaded under. Always null: ModuleInit does not keep its argument.
//   Failure  none
KEST_API void* ModuleGetInstance();

// The path given to SharedLibInit, one unit a byte. Not to be called after SharedLibTerm. Calling
// it takes kest/string.h.
//   Result   the path; empty before SharedLibInit, or when there was no memory for it
//   Failure  empty without memory
//   Cost     a copy of the path
//   See      SharedLibInit
KEST_API TBstr ModuleGetFileSpec();

}  // namespace KEST

extern "C" {

// Starts the library, or, when it runs already, counts one more user and prepares the calling
// thread.
//   allocator  the hooks to use until the last KestUninitialize, read only by the call that starts
//              the library; null, or a record with a null hook, leaves malloc, realloc and free in
//              force
//   Result     1, or 0 when a subsystem could not start
//   Failure    after a 0 the count is as before, what had started stays, its hooks included, and
//              the next call begins again from the first step
//   Ownership  the record is copied; the hooks have to stay until the last KestUninitialize
//   Threads    one at a time: the count takes no lock
//   Cost       the first call makes the queue and the generator; further ones are constant
//   See        KestUninitialize, SAllocator
KEST_API int KestInitialize(KEST::SAllocator* allocator);

// Balances one KestInitialize: frees the calling thread's thread-local data. The last call stops
// everything, posted messages and the hooks included. Ignored when nothing is left to balance.
//
// Before the last call quit and join threads that wait for messages, unregister message callbacks,
// and let every other thread make its call: what they hold outlives the last one, and would go to
// whichever hooks are in force later.
//   Failure  none
//   Threads  one at a time: the count takes no lock
//   Cost     linear in the thread's blocks; the last call also in the messages that wait
//   See      KestInitialize, KestPostQuitMessage
KEST_API void KestUninitialize(void);

// The entry pair that a module loader (TLibrary in kest/file.h) calls after loading and before
// unloading a module; this is the library's own. One SharedLibTerm for each SharedLibInit; neither
// touches the count of KestInitialize.
//
//   Example  None: a module loader makes these calls.
//   Threads  the one that loads and unloads the module
//   See      SharedLibInit, SharedLibTerm, TLibrary, docs/modules.md

// Starts the module: keeps its path and calls ModuleInit. Returns ModuleInit's result.
//   path     the module's file, 8-bit and terminated; it is copied, null counts as no path
//   Failure  without memory for the copy ModuleGetFileSpec is empty, and the call still succeeds
//   Cost     a copy of the path
KEST_API bool SharedLibInit(const char* path);

// Stops the module: calls ModuleTerm and drops the path.
//   Failure  none
KEST_API void SharedLibTerm(void);

// Memory, from and to the current hooks, which are called with these very arguments. Usable before
// KestInitialize.
//
//   size       in bytes; what 0 gives is up to the hook
//   block      a block under the current hooks, or null
//   ...        accepted and ignored: a file name and a line, say
//   Result     the block, or null when the hook gives none
//   Failure    a failed request is the hook's null
//   Ownership  the block is the caller's, who gives it back with KestMemFree
//   Threads    any, as far as the hooks allow
//   Blocking   as the hooks do
//   Cost       that of the hooks
//   See        KestMemAlloc, KestMemRealloc, KestMemFree, SAllocator

// Takes a block of memory.
KEST_API void* KestMemAlloc(unsigned int size);

// Changes the size of a block of memory, which may move. After a failure the old block is as it
// was.
KEST_API void* KestMemRealloc(void* block, unsigned int size);

// Gives back a block of memory.
//   block    a block under the current hooks; null is passed on, and malloc's free ignores it
//   Failure  none
KEST_API void KestMemFree(void* block);

// Takes a block of memory, as KestMemAlloc does.
KEST_API void* KestMemDebugAlloc(unsigned int size, ...);

// Changes the size of a block of memory, as KestMemRealloc does.
KEST_API void* KestMemDebugRealloc(void* block, unsigned int size, ...);

// The bytes that have been taken. Always 0: no accounting is kept.
//   Failure  none
//   Blocking  never
//   Cost     constant
KEST_API unsigned int KestMemGetTotalSize(void);

// The debugging entry points. In this build they accept their arguments and do nothing; no
// argument is read and no callback is ever called.
//
//   proc        ignored, and may be null
//   expression  ignored, and may be null
//   file        ignored, and may be null
//   line        ignored
//   format      ignored, and may be null
//   ...         ignored
//   category    ignored
//   data        ignored, and may be null
//   size        in bytes; ignored
//   Failure     none
//   Threads     any
//   Blocking    never
//   See         KestAssert, KestTrace, KestTraceEx, KestDumpMem, KestSetAssertProc,
//               KestSetDebugStringProc, KestDebugBreak, KestIsValidAddress, KestGetDebugSetting

// Accepts what is to be called for a failed assertion; it never is.
KEST_API void KestSetAssertProc(void (*proc)(const char* expression, const char* file, int line));

// Accepts what is to be called with traced text; it never is.
KEST_API void KestSetDebugStringProc(void (*proc)(const char* text));

// Accepts a failed assertion, and does nothing.
KEST_API void KestAssert(const char* expression, const char* file, int line);

// Accepts a message to trace, and does nothing.
KEST_API void KestTrace(const char* format, ...);

// Accepts a message to trace in a category, and does nothing.
KEST_API void KestTraceEx(unsigned int category, const char* format, ...);

// Accepts memory to dump, and does nothing.
KEST_API void KestDumpMem(const void* data, unsigned int size);

// Stops in a debugger in other builds; in this one it does nothing.
KEST_API void KestDebugBreak(void);

// Whether an address is valid. Always 1, for null too.
//   address  not looked at; may be null
KEST_API int KestIsValidAddress(const void* address);

// The value of a debug setting, which is defaultValue for every key.
//   key           text of either width, or null; not looked at
//   defaultValue  what to return
KEST_API int KestGetDebugSetting(const void* key, int defaultValue);

// A slot of the C runtime function table. It has 41 writable slots, one after another in the
// library's data in this order, filled when the library is loaded. A client calls the basic runtime
// through them; what a host stores into a slot is what every later caller of that slot gets, so
// store before other threads run. The library itself calls through two of them only, kest_strlen
// and kest_strcpy, in SharedLibInit. Slots of C library functions count in size_t, the library's
// own in unsigned int; the ucs... functions and their kin are described in kest/string.h under the
// same names.
//   Threads  any, as long as none stores into the slot
//   Width    size_t, long and time_t have 32 bits in the 32-bit target and 64 in the other
//   See      docs/wide-strings.md
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

namespace KEST {

// Called by the library frame and the platform layer.
//
//   Failure  None: the Inits return true.
//   Result   true
//   Threads  The one that starts or stops the library, while no other is inside it.
//   Example  None: the library frame makes these calls.
//   See      KestInitialize, KestUninitialize

// Installs the three hooks if the record has them all.
//   allocator  copied; null, or a record with a null hook, leaves the hooks as they are
KEST_API bool MemInit(SAllocator* allocator);

// Brings the default hooks back.
KEST_API void MemTerm();

// A step of the start: nothing to do for BSTRs.
KEST_API bool BstrInit();

// A step of the stop: nothing to do for BSTRs.
KEST_API void BstrTerm();

// A step of the start: nothing to do for the debugging entry points.
KEST_API bool DebugInit();

// A step of the stop: nothing to do for the debugging entry points.
KEST_API void DebugTerm();

// A step of the stop: nothing to do for the platform layer.
KEST_API void PSTerm();

}  // namespace KEST

#endif  // KEST_FRAME_H
