#!/usr/bin/env bash
# plain_configure_test.sh: "cmake -B build" alone builds for 32 bits, and stops with the package's
# name where the compiler has no 32-bit runtime.

source=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
status=0
export CMAKE_GENERATOR=Ninja  # what the presets use; make need not be here

cmake -S "$source" -B "$work/plain" >"$work/log" 2>&1 || { echo 'a plain configure fails:'; tail "$work/log"; status=1; }
grep -q '^KEST_BUILD_TESTS:BOOL=OFF$' "$work/plain/CMakeCache.txt" || { echo 'a plain build wants the tests, and so GoogleTest'; status=1; }
grep -q '^KEST_BITS:STRING=32$' "$work/plain/CMakeCache.txt" || { echo 'a plain build is not the 32-bit one'; status=1; }

# A compiler that refuses -m32.
cat >"$work/c++" <<'END'
#!/bin/sh
for argument; do [ "$argument" = -m32 ] && { echo 'cannot find 32-bit libraries' >&2; exit 1; }; done
exec g++ "$@"
END
chmod +x "$work/c++"
if cmake -S "$source" -B "$work/no32" -DCMAKE_CXX_COMPILER="$work/c++" >"$work/log" 2>&1; then
  echo 'it configures although the compiler has no 32-bit runtime'
  status=1
fi
tr -s ' \n' ' ' <"$work/log" | grep -q 'apt-get install g++-multilib.*-DKEST_BITS=64' || { echo 'the message does not help:'; tail "$work/log"; status=1; }
cmake -S "$source" -B "$work/native" -DCMAKE_CXX_COMPILER="$work/c++" -DKEST_BITS=64 >"$work/log" 2>&1 ||
  { echo 'the native build fails to configure:'; tail "$work/log"; status=1; }
exit $status
