#!/usr/bin/env bash
# hostile_input_test.sh: each row of docs/hostile_input.md names at least one test, and every test
# that it names exists: FOLDER/FILE.SUITE.CASE in tests/FOLDER/FILE.cpp, build/NAME as the script
# tests/build/NAME_test.sh.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
page=docs/hostile_input.md
status=0
complain() { echo "$page: $1"; status=1; }

exists() {
  local suite case
  case $1 in
    build/*) [ -f "tests/$1_test.sh" ] ;;
    *)
      IFS=. read -r _ suite case <<<"$1"
      grep -qEs "^TEST(_F|_P)?\($suite, $case\)" "tests/${1%%.*}.cpp"
      ;;
  esac
}

rows=$(grep '^|' "$page" | grep -vE '^\|(-+\||  *input )')
[ -n "$rows" ] || complain 'it has no rows'
while IFS= read -r row; do
  # The tests are the last column.
  tests=$(sed 's/ *|$//; s/.*|//' <<<"$row" | grep -o '`[^`]*`' | tr -d '`')
  [ -n "$tests" ] || complain "this row names no test: $row"
  for test in $tests; do
    exists "$test" || complain "there is no test $test"
  done
done <<<"$rows"
exit $status
