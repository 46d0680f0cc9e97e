// What the programs of this folder share. Each calls the functions of one header; the parts between
// two markers are the examples of the reference, and a check that does not hold ends the program.

#ifndef KEST_EXAMPLES_CALLS_CHECK_H
#define KEST_EXAMPLES_CALLS_CHECK_H

#include <stdio.h>
#include <stdlib.h>

inline void Check(bool holds, int line = __builtin_LINE()) {
  if (holds) return;
  printf("line %d: this does not hold\n", line);
  exit(1);
}

#endif  // KEST_EXAMPLES_CALLS_CHECK_H
