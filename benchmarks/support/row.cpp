#include "support/row.h"

#include <stdio.h>

#include "kest/frame.h"

int main(int argc, char** argv) {
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
  if (KestInitialize(nullptr) == 0) {
    fputs("the library does not start\n", stderr);
    return 1;
  }
  RegisterRows();
  benchmark::RunSpecifiedBenchmarks();
  KestUninitialize();
}
