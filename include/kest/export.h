// How the library's symbols become visible to those who link against it.

#ifndef KEST_EXPORT_H
#define KEST_EXPORT_H

// Marks what the shared library exports. The library itself is compiled with -fvisibility=hidden.
#define KEST_API __attribute__((visibility("default")))

#endif  // KEST_EXPORT_H
