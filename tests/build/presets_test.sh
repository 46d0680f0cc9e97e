#!/usr/bin/env bash
# presets_test.sh: what an editor or a terminal configures by a preset it can build by one of the same name; what
# ./check tests has a test preset, and a workflow that does all three.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
status=0
presets() { cmake --list-presets="$1" | sed -n 's/^  "\([^"]*\)".*/\1/p' | sort; }
differ() { diff <(echo "$1") <(echo "$2") || { echo "$3"; status=1; }; }

differ "$(presets configure)" "$(presets build)" 'configure presets (<) and build presets (>) differ'
tested=$(sed -n 's/^presets=(\(.*\))$/\1/p' check | tr ' ' '\n' | sort)
[ "$(wc -l <<<"$tested")" -ge 4 ] || { echo './check names hardly any preset'; status=1; }
differ "$tested" "$(presets test)" 'presets of ./check (<) and test presets (>) differ'
differ "$tested" "$(presets workflow)" 'presets of ./check (<) and workflow presets (>) differ'
# CMake itself looks into the steps.
for preset in $tested; do
  [ "$(grep -c "\"name\": \"$preset\"" CMakePresets.json)" -ge 7 ] || { echo "$preset lacks a step"; status=1; }
done
exit $status
