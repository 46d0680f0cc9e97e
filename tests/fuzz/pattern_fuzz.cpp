// File name patterns against the same rules by recursion, and against a true wildcard match, which
// has to agree with every match found and, without a "*", with every mismatch too.

#include "fuzz/fuzz.h"
#include "kest/file.h"

namespace {

constexpr size_t kLongest = 24;

int Model(const unsigned short* name, const unsigned short* pattern) {
  if (*pattern == '*') {
    if (*name == 0 || *name == pattern[1]) return Model(name, pattern + 1);
    return Model(name + 1, pattern);
  }
  if (*name == 0) return -*pattern;
  if (*pattern == '?' || *name == *pattern) return Model(name + 1, pattern + 1);
  return *name - *pattern;
}

// reached[i]: the pattern so far takes the first i units.
bool IsMatch(const unsigned short* name, size_t length, const unsigned short* pattern) {
  bool reached[kLongest + 1] = {true};
  for (; *pattern != 0; ++pattern) {
    if (*pattern == '*') {
      for (size_t i = 1; i <= length; ++i) reached[i] = reached[i] || reached[i - 1];
    } else {
      for (size_t i = length; i > 0; --i) {
        reached[i] = reached[i - 1] && (*pattern == '?' || *pattern == name[i - 1]);
      }
      reached[0] = false;
    }
  }
  return reached[length];
}

bool HasStar(const unsigned short* s) {
  while (*s != 0 && *s != '*') ++s;
  return *s != 0;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  kest_fuzz::Input in(data, size);
  const size_t nameLength = in.Byte() % (kLongest + 1);
  static kest_fuzz::GuardedText<kLongest> nameText, patternText;
  const unsigned short* name = nameText.Take(in, nameLength);
  const unsigned short* pattern = patternText.Take(in);
  const int difference = KEST::TFileFinder::ComparePattern(name, pattern);
  FUZZ_CHECK(difference == Model(name, pattern));
  const bool isMatch = IsMatch(name, nameText.Length(), pattern);
  FUZZ_CHECK(difference != 0 || isMatch);
  FUZZ_CHECK(difference == 0 || !isMatch || HasStar(pattern));
  FUZZ_CHECK(KEST::TFileFinder::ComparePattern(name, name) == 0 || HasStar(name));
  return 0;
}
