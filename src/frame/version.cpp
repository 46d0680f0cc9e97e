#include "kest/kest.h"

const char* KestGetVersion(void) { return KEST_VERSION_STRING; }
