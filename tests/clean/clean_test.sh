#!/usr/bin/env bash
# clean_test.sh FAULTS COMMAND...: the command runs without a report and with nothing suppressed; with each of
# the faults it is reported.

read -ra faults <<<"$1"
shift
unset "${!ASAN_@}" "${!LSAN_@}" "${!TSAN_@}" "${!UBSAN_@}" VALGRIND_OPTS
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
cd "$work" || exit 1

"$@" >"$work/output" 2>&1 || { echo "reported, or failed:"; cat "$work/output"; exit 1; }
if grep -E 'suppressed: [1-9]|Suppressions used' "$work/output"; then exit 1; fi
for fault in "${faults[@]}"; do
  if "$@" "$fault" >"$work/output" 2>&1; then
    echo "not reported: $fault"
    cat "$work/output"
    exit 1
  fi
  grep -qE 'ERROR SUMMARY: [1-9]|SUMMARY: [A-Za-z]+Sanitizer' "$work/output" || {
    echo "failed without a report: $fault"
    cat "$work/output"
    exit 1
  }
done
