#!/usr/bin/env bash
# The figures in README.md, taken from where they are kept.
#
#   scripts/readme_figures.sh BUILD           prints the paragraph; BUILD is a folder configured with tests
#   scripts/readme_figures.sh --write BUILD   puts it into README.md

set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."
write=
[ "${1-}" != --write ] || { write=yes; shift; }
build=${1:?usage: scripts/readme_figures.sh [--write] BUILD}

version=$(sed -n 's/^#define KEST_VERSION_STRING "\(.*\)"$/\1/p' include/kest/kest.h)
# In whole hundreds, so that a new test changes nothing here.
tests=$(ctest --test-dir "$build" -N | sed -n 's/^Total Tests: //p')
tests=$(printf "%d,%03d" $((tests / 1000)) $((tests / 100 * 100 % 1000)))
coverage() { awk -F'\t' -v of="$1" '$1 == "coverage" && $2 == of { print $3 }' docs/assurance.tsv; }
share() { sed 's/ (.*//; s/ of / /' <<<"$1" | awk '{ s = sprintf("%.1f", int(1000 * $1 / $2) / 10); sub(/\.0$/, "", s); print s }'; }
lines=$(share "$(coverage lines)")
branches=$(share "$(coverage branches)")
met=$(sed -n 's/^\([0-9]* of [0-9]*\) goals are met.*/\1/p' docs/performance.md)
# Of the rows with a goal those whose ratio, the only bold figure, begins with a 0.
faster=$(grep -E '\| (met|stretch met|NOT MET) \|$' docs/performance.md | grep -c '\*\*0\.')
peers=$(grep -c '^[a-z]*:' benchmarks/peers.txt)
peers=$((peers - 1))  # the framework that measures is in that list too

paragraph=$(fold -s -w 120 <<END | sed 's/ *$//'
Version $version. Over $tests tests in each width, also under the address, undefined-behaviour and thread sanitizers ([assurance](docs/assurance.md)). They run $lines % of the lines of \`src\` and $branches % of its branches. Beside the fastest of $peers other libraries, Kest is faster at $faster of ${met#* of } tasks, and $met goals for speed are met ([performance](docs/performance.md)).
END
)
if [ -z "$write" ]; then
  echo "$paragraph"
  exit
fi
PARAGRAPH=$paragraph awk '
  /^<!-- figures end -->$/ { inside = 0 }
  !inside { print }
  /^<!-- figures -->$/ { inside = 1; print ENVIRON["PARAGRAPH"] }' README.md >README.md.new
mv README.md.new README.md
