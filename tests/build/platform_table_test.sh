#!/usr/bin/env bash
# platform_table_test.sh STATIC_LIBRARY: src/platform/README.md lists every function that
# src/platform/posix defines, and no other.

static=$1
readme=$(dirname "${BASH_SOURCE[0]}")/../../src/platform/README.md
folder=$(dirname "${BASH_SOURCE[0]}")/../../src/platform/posix

# The members of the archive that come from the platform folder are named after its files.
# A file of the same name elsewhere (file.cpp, say) is told apart by its objects' path.
defined=$(
  for object in $(find "$(dirname "$static")" -path '*kest_objects.dir/src/platform/posix/*.o'); do
    nm --defined-only --extern-only --demangle "$object" | awk '$2 == "T" && $3 !~ /^__x86/ { $1 = $2 = ""; print }'
  done | sed -e 's/^ *//' -e 's/(.*//' -e 's/^KEST:://' | sort -u
)
listed=$(sed -n 's/^| *`\([A-Za-z0-9_:]*\)`.*/\1/p' "$readme" | sort -u)
[ -n "$defined" ] && [ -d "$folder" ] || { echo 'no platform objects found'; exit 1; }
diff <(echo "$listed") <(echo "$defined") | sed -n -e 's/^</not a platform function, but listed:/p' -e 's/^>/not listed in src\/platform\/README.md:/p' | grep . && exit 1
exit 0
