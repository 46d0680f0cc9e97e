#!/usr/bin/env bash
# performance_test.sh: docs/performance.md has every row that has a goal, a goal that is not met has a
# remark, every plot is there, and each subject of ./bench is built.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
page=docs/performance.md
status=0
rows=0
complain() { echo "$1"; status=1; }

for goals in benchmarks/*.goals; do
  while IFS=$'\t' read -r row goal _ remark; do
    rows=$((rows + 1))
    [[ $goal =~ ^[0-9.]+$ ]] || complain "$goals: no goal: $row"
    line=$(grep -F "| $row | " "$page") || { complain "$page has no row: $row (scripts/performance.sh makes it)"; continue; }
    [[ $line != *'NOT MET'* || -n $remark ]] || complain "$goals: not met, and no word why: $row"
  done < <(grep -v -e '^#' -e '^$' "$goals")
done
for source in benchmarks/*.cpp; do
  subject=$(basename "$source" .cpp)
  grep -q "^kest_bench($subject\b" benchmarks/CMakeLists.txt || complain "benchmarks/CMakeLists.txt does not build $subject"
done
for plot in $(sed -n 's/.*(\(performance\/.*\.svg\)).*/\1/p' "$page"); do
  tail -n 3 "docs/$plot" | grep -q '</svg>' || complain "$page shows docs/$plot, which is no plot"
done

[ "$rows" -gt 50 ] || complain "only $rows rows have a goal"
exit $status
