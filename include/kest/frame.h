#ifndef KEST_FRAME_H
#define KEST_FRAME_H

#include <stddef.h>
#include <time.h>
#include "kest/export.h"
namespace KEST {
class KEST_API TBstr;  // kest/string.h
struct KEST_API SAllocator {
  void* (*alloc)(unsigned int size);
  void* (*realloc)(void* block, unsigned int size);
  void (*free)(void* block);
};
KEST_API bool ModuleInit(void* instance);
KEST_API void ModuleTerm();
KEST_API void* ModuleGetInstance();
KEST_API TBstr ModuleGetFileSpec();
}  // namespace KEST
extern "C" {
KEST_API int KestInitialize(KEST::SAllocator* allocator);
KEST_API void KestUninitialize(void);
KEST_API bool SharedLibInit(const char* path);
KEST_API void SharedLibTerm(void);
KEST_API void* KestMemAlloc(unsigned int size);
KEST_API void* KestMemRealloc(void* block, unsigned int size);
KEST_API void KestMemFree(void* block);
KEST_API void* KestMemDebugAlloc(unsigned int size, ...);
KEST_API void* KestMemDebugRealloc(void* block, unsigned int size, ...);
KEST_API unsigned int KestMemGetTotalSize(void);
KEST_API void KestSetAssertProc(void (*proc)(const char* expression, const char* file, int line));
KEST_API void KestSetDebugStringProc(void (*proc)(const char* text));
KEST_API void KestAssert(const char* expression, const char* file, int line);
KEST_API void KestTrace(const char* format, ...);
KEST_API void KestTraceEx(unsigned int category, const char* format, ...);
KEST_API void KestDumpMem(const void* data, unsigned int size);
KEST_API void KestDebugBreak(void);
KEST_API int KestIsValidAddress(const void* address);
KEST_API int KestGetDebugSetting(const void* key, int defaultValue);
// The C runtime function table: 41 writable slots in this order.
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
}
// Called by the library frame and the platform layer.
namespace KEST {
KEST_API bool MemInit(SAllocator* allocator);
KEST_API void MemTerm();
KEST_API bool BstrInit();
KEST_API void BstrTerm();
KEST_API bool DebugInit();
KEST_API void DebugTerm();
KEST_API void PSTerm();
}  // namespace KEST

#endif  // KEST_FRAME_H
