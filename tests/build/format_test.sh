#!/usr/bin/env bash
# format_test.sh: every source is as .clang-format lays it out.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
mapfile -t files < <(find include src tests examples \( -name '*.h' -o -name '*.cpp' \) | sort)
[ ${#files[@]} -gt 50 ] || { echo "only ${#files[@]} sources found"; exit 1; }
clang-format --dry-run --Werror "${files[@]}" 2>&1 | grep -E 'error: ' && {
  echo 'to mend: clang-format -i FILE'
  exit 1
}
clang-format --dry-run --Werror "${files[@]}" 2>/dev/null
