#!/usr/bin/env bash
# performance.sh: makes docs/performance.md and its plots of what ./bench has measured.

. "$(dirname "${BASH_SOURCE[0]}")/steps.sh"
need python3 gnuplot-nox
[ -d build/bench/results ] || die 'performance: nothing has been measured; ./bench does it'
commit=$(git rev-parse --short HEAD)
[ -z "$(git status --porcelain --untracked-files=no -- src include benchmarks)" ] || commit="$commit, changed"
step 'write docs/performance.md' performance python3 scripts/performance.py "$(g++ --version | head -n 1)" "$commit"
