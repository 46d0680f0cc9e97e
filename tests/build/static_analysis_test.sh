#!/usr/bin/env bash
# static_analysis_test.sh BUILD: clang-tidy and cppcheck report nothing in src/ but what
# explained_reports.txt explains.

build=$1
cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
explained=tests/build/explained_reports.txt
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

find src -name '*.cpp' -print0 |
  xargs -0 -n 8 -P "$(nproc)" clang-tidy -p "$build" --quiet >"$work/tidy" 2>"$work/tidy.err"
cppcheck --platform=unix32 --std=c++17 --language=c++ --enable=warning,performance,portability \
  --error-exitcode=0 --quiet -j "$(nproc)" -I include -I src --template='{file}:{line}:{column}: warning: {message} [{id}]' \
  src >"$work/cppcheck" 2>&1

# FILE: CHECK, one report a line; a report under two names counts as two.
grep -hE '(warning|error): .*\[[^]]+\]$' "$work/tidy" "$work/cppcheck" |
  sed -E "s|^$PWD/||; s|^([^:]+):[0-9]+:[0-9]+: .*\[([^]]+)\]\$|\1: \2|" |
  awk -F': ' '{ n = split($2, names, ","); for (i = 1; i <= n; i++) print $1 ": " names[i] }' |
  LC_ALL=C sort -u >"$work/reported"
sed -n '/^#/!s/^\([^:]*: [^:]*\): .*/\1/p' "$explained" >"$work/explained"

LC_ALL=C sort -c "$work/explained" || exit 1
diff "$work/explained" "$work/reported" >"$work/difference" && exit 0
echo "< explained and not reported, > reported and not explained:"
grep '^[<>]' "$work/difference"
grep -hE '(warning|error): ' "$work/tidy" "$work/cppcheck"
exit 1
