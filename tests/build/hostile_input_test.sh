#!/usr/bin/env bash
# hostile_input_test.sh: each row of docs/hostile-input.md names at least one test, and every test
# that it names exists: FOLDER/FILE.SUITE.CASE in tests/FOLDER/FILE.cpp, build/NAME as the script
# tests/build/NAME_test.sh.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
page=docs/hostile-input.md
status=0
complain() { echo "$page: $1"; status=1; }

existing=$(
  grep -oE '^(TYPED_)?TEST(_F|_P)?\(\w+, \w+\)' tests/*/*_test.cpp |
    sed -E 's/^tests.(.*)\.cpp:.*\((\w+), (\w+)\)/\1.\2.\3/'
  ls tests/build/*_test.sh | sed -E 's/^tests.(.*)_test\.sh/\1/'
)
rows=$(grep '^|' "$page" | grep -vE '^\|(-+\|| input )')
[ -n "$rows" ] || complain 'it has no rows'

# The tests are the last column.
while read -r row; do complain "this row names no test: $row"; done < <(grep -vE '`[^|]*\|$' <<<"$rows")
named=$(sed -E 's/ *\|$//; s/.*\|//' <<<"$rows" | grep -o '`[^`]*`' | tr -d '`')
while read -r test; do complain "there is no test $test"; done < <(
  comm -13 <(sort -u <<<"$existing") <(sort -u <<<"$named"))
exit $status
