#!/usr/bin/env bash
# symbols_test.sh LIBRARY LIST EXPORT_NEW: the library exports exactly the symbols of the list, all
# of them under the version node KEST_1. The operators are there only with EXPORT_NEW.

library=$1 list=$2 export_new=$3

expected=$(grep -v '^#' "$list" | LC_ALL=C sort)
case $export_new in
  ON | 1 | TRUE) ;;
  *) expected=$(grep -Ev '^_Z(n[wa]|d[la]P)' <<<"$expected") ;;
esac
versioned=$(nm --dynamic --defined-only --with-symbol-versions "$library" | awk '$3 != "KEST_1" && $3 != "KEST_1@@KEST_1" { print $3 }')
actual=$(sed 's/@.*//' <<<"$versioned" | LC_ALL=C sort)

status=0
difference=$(diff <(printf '%s\n' "$expected") <(printf '%s\n' "$actual")) || {
  echo "exports differ from $(basename "$list") (< listed, > in the library):"
  grep '^[<>]' <<<"$difference" | c++filt
  status=1
}
if grep -v '@@KEST_1$' <<<"$versioned" | grep .; then
  echo 'the symbols above are not in the version node KEST_1'
  status=1
fi
[ "$(wc -l <<<"$actual")" -gt 100 ] || { echo 'hardly anything is exported'; status=1; }
exit $status
