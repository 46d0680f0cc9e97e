# shellcheck shell=bash
# What a deep piece (scripts/deep/NAME.sh) builds on: the steps, and the ledger of figures.
#
# A piece runs in the project's folder, takes its arguments as ./check --deep hands them over, exits
# with 0 when what it holds for true is true, and calls figure for every number worth publishing.

. "$(dirname "${BASH_SOURCE[0]}")/steps.sh"

piece=$(basename "$0" .sh)
deep=$root/build/deep        # for whatever the piece writes
ledger=$deep/figures.tsv
mkdir -p "$deep"

# A change in the tree that is not committed is part of what was measured: say so.
commit=$(git rev-parse --short HEAD 2>/dev/null || echo unknown)
[ -z "$(git status --porcelain --untracked-files=no 2>/dev/null)" ] || commit=$commit+

# figure NAME VALUE [sum|last]: one line of the ledger. A sum adds up over runs (executions, messages),
# anything else stands for the last run alone.
figure() { printf '%s\t%s\t%s\t%s\t%s\t%s\n' "$piece" "$1" "$2" "${3:-last}" "$commit" "$(date +%F)" >>"$ledger"; }
