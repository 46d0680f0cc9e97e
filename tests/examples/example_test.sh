#!/usr/bin/env bash
# example_test.sh EXPECTED PROGRAM ARGUMENTS...: the program ends well, prints what is expected and
# leaves no file in its working directory.

expected=$1
shift
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

actual=$("$@" 2>&1; echo "exit status $?")
status=0
diff "$expected" <(echo "$actual" | sed '$d') || { echo 'output differs (< expected, > printed)'; status=1; }
[ "${actual##*$'\n'}" = 'exit status 0' ] || { echo "${actual##*$'\n'}"; status=1; }
[ -z "$(ls -A)" ] || { echo "left behind: $(ls -A)"; status=1; }
exit $status
