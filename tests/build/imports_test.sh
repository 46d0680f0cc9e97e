#!/usr/bin/env bash
# imports_test.sh LIBRARY LIST: its name, the libraries it needs, what it takes from them: names of
# the list alone.

library=$1 list=$2
status=0
complain() { echo "$1"; status=1; }

dynamic=$(readelf --wide --dynamic "$library")
soname=$(sed -n 's/.*(SONAME).*\[\(.*\)\]/\1/p' <<<"$dynamic")
[ "$soname" = libKest.so.1 ] || complain "the shared object is named '$soname', not libKest.so.1"

while read -r needed; do
  case $needed in
    libc.so.6 | libm.so.6 | libgcc_s.so.1 | libstdc++.so.6 | ld-linux.so.2 | ld-linux-x86-64.so.2) ;;
    *) complain "it needs $needed" ;;
  esac
done < <(sed -n 's/.*(NEEDED).*\[\(.*\)\]/\1/p' <<<"$dynamic")
grep -q SYMBOLIC <<<"$dynamic" && complain 'it binds its own symbols to itself: stores into the slots would not be seen'

imports=$(nm --dynamic --undefined-only --with-symbol-versions "$library" | awk '{ print $NF }')
grep -q '^malloc@' <<<"$imports" || complain 'malloc is no import: the list cannot be right'
while read -r import; do
  case $import in
    __cxa_throw* | __cxa_rethrow* | __cxa_allocate_exception* | *bad_array_new_length* | *__throw_*)
      complain "it can throw: $import" ;;
    *@GLIBC_* | *@GLIBCXX_* | *@CXXABI_* | *@GCC_*) ;;
    _ITM_* | __gmon_start__ | __cxa_finalize) ;;
    *) complain "an import from elsewhere: $import" ;;
  esac
  grep -qxF "${import%%@*}" "$list" || complain "not in $(basename "$list"): $import"
done <<<"$imports"
grep -v '^#' "$list" | LC_ALL=C sort -uc || complain "$(basename "$list") is not sorted"
exit $status
