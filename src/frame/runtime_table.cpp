// The C runtime function table: 41 writable slots that clients call through.

#include <ctype.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>

#include "kest/frame.h"
#include "kest/string.h"

// The order of the slots in the library's data is part of the binary interface. One section keeps
// them together; no_reorder keeps the compiler from sorting them.
#if defined(__clang__)
#define KEST_SLOT __attribute__((section("kest_slots")))
#else
#define KEST_SLOT __attribute__((section("kest_slots"), no_reorder))
#endif

// <string.h> overloads the searching functions on const in C++; the slots have the C form, which is
// the one that the C library has under these names.
extern "C" {
void* c_memchr(const void*, int, size_t) __asm__("memchr");
char* c_strchr(const char*, int) __asm__("strchr");
char* c_strrchr(const char*, int) __asm__("strrchr");
char* c_strstr(const char*, const char*) __asm__("strstr");
}

extern "C" {

KEST_SLOT void* (*kest_memset)(void*, int, size_t) = ::memset;
KEST_SLOT void* (*kest_memcpy)(void*, const void*, size_t) = ::memcpy;
KEST_SLOT void* (*kest_memmove)(void*, const void*, size_t) = ::memmove;
KEST_SLOT int (*kest_memcmp)(const void*, const void*, size_t) = ::memcmp;
KEST_SLOT void* (*kest_memchr)(const void*, int, size_t) = c_memchr;
KEST_SLOT int (*kest_snprintf)(char*, size_t, const char*, ...) = ::snprintf;
KEST_SLOT int (*kest_sprintf)(char*, const char*, ...) = ::sprintf;
KEST_SLOT size_t (*kest_strlen)(const char*) = ::strlen;
KEST_SLOT char* (*kest_strcpy)(char*, const char*) = ::strcpy;
KEST_SLOT char* (*kest_strncpy)(char*, const char*, size_t) = ::strncpy;
KEST_SLOT char* (*kest_strcat)(char*, const char*) = ::strcat;
KEST_SLOT int (*kest_strcmp)(const char*, const char*) = ::strcmp;
KEST_SLOT int (*kest_strncmp)(const char*, const char*, size_t) = ::strncmp;
KEST_SLOT char* (*kest_strchr)(const char*, int) = c_strchr;
KEST_SLOT char* (*kest_strrchr)(const char*, int) = c_strrchr;
KEST_SLOT char* (*kest_strstr)(const char*, const char*) = c_strstr;
KEST_SLOT long (*kest_strtol)(const char*, char**, int) = ::strtol;
KEST_SLOT unsigned long (*kest_strtoul)(const char*, char**, int) = ::strtoul;
KEST_SLOT int (*kest_tolower)(int) = ::tolower;
KEST_SLOT int (*kest_toupper)(int) = ::toupper;
KEST_SLOT unsigned int (*kest_strlcpy)(char*, const char*, unsigned int) = KEST::strlcpy;
KEST_SLOT unsigned int (*kest_strlcat)(char*, const char*, unsigned int) = KEST::strlcat;
KEST_SLOT unsigned int (*kest_ucslen)(const unsigned short*) = KEST::ucslen;
KEST_SLOT unsigned short* (*kest_ucscpy)(unsigned short*, const unsigned short*) = KEST::ucscpy;
KEST_SLOT unsigned short* (*kest_ucsncpy)(unsigned short*, const unsigned short*,
                                          unsigned int) = KEST::ucsncpy;
KEST_SLOT unsigned short* (*kest_ucscat)(unsigned short*, const unsigned short*) = KEST::ucscat;
KEST_SLOT int (*kest_ucscmp)(const unsigned short*, const unsigned short*) = KEST::ucscmp;
KEST_SLOT int (*kest_ucsncmp)(const unsigned short*, const unsigned short*,
                              unsigned int) = KEST::ucsncmp;
KEST_SLOT unsigned short* (*kest_ucschr)(const unsigned short*, unsigned short) = KEST::ucschr;
KEST_SLOT unsigned short* (*kest_ucsrchr)(const unsigned short*, unsigned short) = KEST::ucsrchr;
KEST_SLOT unsigned short* (*kest_ucsstr)(const unsigned short*,
                                         const unsigned short*) = KEST::ucsstr;
KEST_SLOT int (*kest_ucstol)(const unsigned short*, unsigned short**, int) = KEST::ucstol;
KEST_SLOT unsigned int (*kest_ucstoul)(const unsigned short*, unsigned short**,
                                       int) = KEST::ucstoul;
KEST_SLOT unsigned int (*kest_ucslcpy)(unsigned short*, const unsigned short*,
                                       unsigned int) = KEST::ucslcpy;
KEST_SLOT unsigned int (*kest_ucslcat)(unsigned short*, const unsigned short*,
                                       unsigned int) = KEST::ucslcat;
KEST_SLOT int (*kest_snuprintf)(unsigned short*, unsigned int, const unsigned short*,
                                ...) = KEST::snuprintf;
KEST_SLOT unsigned short (*kest_toulower)(unsigned short) = KEST::toulower;
KEST_SLOT unsigned short (*kest_touupper)(unsigned short) = KEST::touupper;
KEST_SLOT int (*kest_abs)(int) = ::abs;
KEST_SLOT int (*kest_rand)(void) = ::rand;
KEST_SLOT time_t (*kest_time)(time_t*) = ::time;

}  // extern "C"
