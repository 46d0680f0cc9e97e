#!/usr/bin/env bash
# named_tests_test.sh: each row of docs/hostile-input.md and docs/weaknesses.md names at least one
# test, and every test that it names exists: FOLDER/FILE.SUITE.CASE in tests/FOLDER/FILE.cpp,
# build/NAME as the script tests/build/NAME_test.sh.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
status=0

existing=$(
  grep -oE '^(TYPED_)?TEST(_F|_P)?\(\w+, \w+\)' tests/*/*_test.cpp |
    sed -E 's/^tests.(.*)\.cpp:.*\((\w+), (\w+)\)/\1.\2.\3/'
  ls tests/build/*_test.sh | sed -E 's/^tests.(.*)_test\.sh/\1/'
)

check() {
  local page=$1 rows named row test
  complain() { echo "$page: $1"; status=1; }
  rows=$(grep '^|' "$page" | grep -vE '^\|(-+\|| (input|what) \|)')
  [ "$(grep -c . <<<"$rows")" -gt 50 ] || complain 'it has hardly any rows'

  # The tests are the last column.
  while read -r row; do complain "this row names no test: $row"; done < <(grep -vE '`[^|]*\|$' <<<"$rows")
  named=$(sed -E 's/ *\|$//; s/.*\|//' <<<"$rows" | grep -o '`[^`]*`' | tr -d '`')
  while read -r test; do complain "there is no test $test"; done < <(
    comm -13 <(sort -u <<<"$existing") <(sort -u <<<"$named"))
}

check docs/hostile-input.md
check docs/weaknesses.md
exit $status
