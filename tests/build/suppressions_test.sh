#!/usr/bin/env bash
# suppressions_test.sh: the tree holds nothing that keeps a memory checker or sanitizer from reporting, but for
# the mark of the routines that read whole vectors.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
status=0
files() { find . -path ./build -prune -o -path ./.git -prune -o -type f ! -name 'suppressions_test.sh' "$@" -print; }

files -name '*.supp' | grep . && { echo 'these are files of suppressions'; status=1; }
# Options and functions of Valgrind, the sanitizers and the compilers that name what is not to be reported.
ways='--suppressions|--(gen-)?default-suppressions=|[^-]suppressions=|__[a-z]+_default_suppressions|detect_leaks=0'
ways="$ways|leak_check_at_exit=0|report_bugs=0|__lsan_(ignore|disable)|fsanitize-(ignore|black)list"
files \( -name '*.sh' -o -name '*.cmake' -o -name 'CMake*' -o -name '*.cpp' -o -name '*.h' -o -name '*.py' -o -name check \
  -o -name try -o -name bench \) |
  xargs grep -nE -e "$ways" && { echo 'these suppress reports'; status=1; }

# One mark, on routines whose plain versions the sanitizers do look at.
marks=$(grep -rlE 'no_sanitize|__attribute__.*disable_sanitizer|ASAN_POISON' include src | sort)
[ "$marks" = src/cpu/level.h ] || { echo "marked for a sanitizer: $marks"; status=1; }
grep -rl KEST_READS_PAST_END src | grep -vE '_(sse2|ssse3|avx2|avx512)\.(cpp|h)$|_kernel\.h$|^src/cpu/level\.h$' && {
  echo 'only vector routines may read past the end'
  status=1
}
exit $status
