#!/usr/bin/env bash
# reference.sh [lint|man|html]...: the reference, made from the comments of the public headers.
#
# Without an argument all of it. "lint" checks that every comment says what its page needs; "man"
# writes the man pages to build/reference/man/man3 and has mandoc check them; "html" writes the site
# to build/reference/html, which begins at index.html. Whatever a tool has to say is an error.

set -u
cd "$(dirname "${BASH_SOURCE[0]}")/.." || exit 1
for tool in python3 doxygen mandoc; do
  command -v $tool >/dev/null || { echo "reference.sh: there is no $tool; Debian's package has that name" >&2; exit 2; }
done
export PYTHONDONTWRITEBYTECODE=1
KEST_VERSION=$(sed -n 's/^#define KEST_VERSION_STRING "\(.*\)"$/\1/p' include/kest/kest.h)
export KEST_VERSION
out=build/reference
mkdir -p $out

lint() { python3 scripts/reference/lint.py; }

man() {
  local date
  date=$(LC_ALL=C date -u -d "@${SOURCE_DATE_EPOCH:-$(git log -1 --format=%ct -- include 2>/dev/null || stat -c %Y include/kest)}" '+%B %-d, %Y')
  python3 scripts/reference/man.py $out/man/man3 "$date" "$KEST_VERSION" || return 1
  # mandoc looks for what a page refers to among the system's pages alone: look here instead.
  local found name status=0
  while read -r found; do
    name=$(sed -n 's/.*STYLE: referenced manual not found: Xr \(.*\) 3\( .*\)\?$/\1/p' <<<"$found")
    [ -n "$name" ] && [ -e "$out/man/man3/$name.3" ] && continue
    echo "$found"
    status=1
  done < <(mandoc -T lint $out/man/man3/*.3 2>&1)
  return $status
}

html() {
  rm -rf $out/html
  python3 scripts/reference/names.py >$out/names.md || return 1
  # Doxygen takes any README.md for the first page.
  sed '1s/$/ {#guides}/; s,](\([a-z]\),](docs/\1,g; s,](\.\./,](,g' docs/README.md >$out/guides.md || return 1
  # The log is Doxygen's own, which it fills with every warning.
  doxygen scripts/reference/Doxyfile && return
  cat $out/doxygen.log
  return 1
}

[ $# -gt 0 ] || set -- lint man html
for part; do
  case $part in
    lint | man | html) "$part" || exit 1 ;;
    *) echo "reference.sh: lint, man or html, not $part" >&2; exit 2 ;;
  esac
done
