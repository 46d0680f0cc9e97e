// The main of a fuzz target without libFuzzer: runs it over every file of the folder it is given.

#include <stdio.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "fuzz/fuzz.h"

int main(int argc, char** argv) {
  if (argc != 2) return fprintf(stderr, "usage: %s FOLDER\n", argv[0]), 2;
  constexpr size_t kLongest = 4096;
  static kest_fuzz::Guarded<uint8_t, kLongest> room;
  int replayed = 0;
  std::error_code error;
  for (const auto& file : std::filesystem::directory_iterator(argv[1], error)) {
    std::ifstream in(file.path(), std::ios::binary);
    const std::vector<char> bytes{std::istreambuf_iterator<char>(in), {}};
    // Said first, so that it is the last line when the input ends the process.
    printf("%s\n", file.path().c_str());
    fflush(stdout);
    if (bytes.size() > kLongest) return fprintf(stderr, "longer than %zu bytes\n", kLongest), 1;
    LLVMFuzzerTestOneInput(room.Copy(bytes.data(), bytes.size()), bytes.size());
    ++replayed;
  }
  if (replayed == 0) return fprintf(stderr, "no inputs in %s\n", argv[1]), 1;
  return 0;
}
