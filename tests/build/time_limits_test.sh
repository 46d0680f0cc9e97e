#!/usr/bin/env bash
# time_limits_test.sh CTEST BUILD: every test that runs the library has a time limit of its own, so
# that one which hangs fails. The scripts of this folder, which look at files, are left out.

# ctest writes the name of each test, which has a slash, before those of its properties.
"$1" --test-dir "$2" --show-only=json-v1 | awk -F'"' '
  function check() {
    if (test == "" || test ~ /^build\// || limited) return
    print test " has no time limit"
    status = 1
  }
  $2 == "name" && $4 ~ /\// { check(); test = $4; limited = 0; ++tests }
  $2 == "name" && $4 == "TIMEOUT" { limited = 1 }
  END { check(); exit tests == 0 || status }'
