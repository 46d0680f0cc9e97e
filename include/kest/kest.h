// Everything Kest offers, in one include.
//
//   Failure    None.
//   Ownership  Nothing changes hands.
//   Threads    Any.
//   Blocking   Never.
//   Cost       Constant.
//   See        KestInitialize

#ifndef KEST_KEST_H
#define KEST_KEST_H

#include "kest/collections.h"
#include "kest/crypto.h"
#include "kest/digest.h"
#include "kest/export.h"
#include "kest/file.h"
#include "kest/frame.h"
#include "kest/message.h"
#include "kest/string.h"
#include "kest/text.h"
#include "kest/thread.h"

// A part of the version of these headers. The major number is that of the shared object's name.
#define KEST_VERSION_MAJOR 1
#define KEST_VERSION_MINOR 0
#define KEST_VERSION_PATCH 0
#define KEST_VERSION_STRING "1.0.0"

// The KEST_VERSION_STRING that the library was built with: static text, never null.
extern "C" KEST_API const char* KestGetVersion(void);

#endif  // KEST_KEST_H
