#!/usr/bin/env bash
# includes_test.sh: every #include of the library follows allowed_edges.txt, and headers of the
# platform stay in src/platform.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
table=tests/build/allowed_edges.txt
status=0
checked=0
complain() { echo "$1: $2"; status=1; }

# Standard headers that reach nothing outside the process. <time.h> and <pthread.h> are in public
# headers for their types alone.
portable=' <ctype.h> <errno.h> <limits.h> <stdarg.h> <stddef.h> <stdint.h> <stdlib.h> <string.h> <time.h> <new> <utility> <algorithm> <type_traits> <atomic> '
declare -A allowed
while IFS=: read -r from to; do
  allowed[$from]=$to
done < <(grep -v -e '^#' -e '^$' "$table")

# may FROM TO: an entry of the table
may() { [[ " ${allowed[$1]-} " == *" $2 "* ]]; }

check() {
  local file=$1 node=$2 include target
  while read -r include; do
    checked=$((checked + 1))
    case $include in
      '"kest/'*)
        target=${include#\"kest/} target=${target%.h\"}
        [ "$target" = export ] && continue
        # A subsystem's own public header; the digests are part of crypto.
        [ "${node#src/}" = "$target" ] || [ "$node-$target" = src/crypto-digest ] ||
          [ "$node-$target" = src/crypto-crypto ] || may "$node" "$target" ||
          complain "$file" "$include is an edge that $table does not have" ;;
      '"'*)
        target=${include#\"} target=${target%%/*}
        [ "${node#src/}" = "$target" ] || may "$node" "$target" ||
          complain "$file" "$include is an edge that $table does not have" ;;
      *)
        [[ $node == src/platform || $portable == *" $include "* ]] || may "$file" "$include" ||
          # The bridges are there for the C++ library.
          [[ $node == include/bridge/* && $include =~ ^'<'[a-z_]+'>'$ ]] ||
          # Vector instructions stay in files named after the level that they take.
          [[ $include == '<immintrin.h>' && $file =~ _(sse2|ssse3|avx2|avx512|sha)\.(cpp|h)$ ]] ||
          { [ "$file" = include/kest/thread.h ] && [ "$include" = '<pthread.h>' ]; } ||
          complain "$file" "$include belongs to src/platform" ;;
    esac
  done < <(sed -n 's/^[[:space:]]*#[[:space:]]*include[[:space:]]*\([<"][^>"]*[>"]\).*/\1/p' "$file")
}

for file in include/kest/bridge/*.h; do check "$file" "include/bridge/$(basename "$file" .h)"; done
for file in include/kest/*.h; do check "$file" "include/$(basename "$file" .h)"; done
while read -r file; do
  node=${file#src/}
  check "$file" "src/${node%%/*}"
done < <(find src -name '*.cpp' -o -name '*.h' | sort)

[ "$checked" -gt 100 ] || complain "$0" "only $checked includes found"
exit $status
