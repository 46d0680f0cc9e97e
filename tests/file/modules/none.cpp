// No entry point of its own.

#include "report.h"
