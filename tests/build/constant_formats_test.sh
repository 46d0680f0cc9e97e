#!/usr/bin/env bash
# constant_formats_test.sh: the library formats with constants only, so that no text from outside is
# ever read as a format. Its own formatter, which takes formats from callers, is left out.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
calls=$(grep -rnE '\b(Format|FormatV|v?s?n?u?printf|v?f?printf|syslog|strftime)\(' src |
  grep -vE '^src/string/(bstr_format|format)\.cpp:|^src/frame/runtime_table\.cpp:')
[ -n "$calls" ] || { echo 'no call found: the pattern cannot be right'; exit 1; }
# The format is the first argument of Format, and the last fixed one of the others.
! grep -vE '\.Format\(KEST_TEXT\("|printf\([^"()]*"' <<<"$calls"
