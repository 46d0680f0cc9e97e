#!/usr/bin/env bash
# assurance_test.sh: the table of figures in docs/assurance.md is the one that docs/assurance.tsv gives.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
[ "$(wc -l <docs/assurance.tsv)" -gt 20 ] || { echo 'docs/assurance.tsv holds hardly any figure'; exit 1; }
scripts/figures.sh page | diff docs/assurance.md - && exit 0
echo 'docs/assurance.md has other figures: see scripts/figures.sh'
exit 1
