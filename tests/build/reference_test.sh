#!/usr/bin/env bash
# reference_test.sh: every exported name has a page that says all it must, the man pages and the site
# come out without a warning, and the lint sees what is taken away.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
export PYTHONDONTWRITEBYTECODE=1
for tool in python3 doxygen mandoc; do
  command -v $tool >/dev/null || { echo "there is no $tool: ./check installs it"; exit 1; }
done
scripts/reference.sh || exit 1
status=0
for page in KestInitialize KEST::TBstr KEST::TBstr::Append kest_memcpy; do
  [ -e "build/reference/man/man3/$page.3" ] || { echo "there is no page $page(3)"; status=1; }
done
for page in index guides names annotated files; do
  [ -s build/reference/html/$page.html ] || { echo "there is no page $page.html"; status=1; }
done

# What the site links to is there. Doxygen says so of its own links, not of those in its pages.
missing=$(cd build/reference/html && grep -oh 'href="[^":]*"' ./*.html | sort -u | sed 's/^href="//; s/[#"].*//' | sort -u |
  while read -r target; do [ -z "$target" ] || [ -e "$target" ] || echo "$target"; done)
[ -z "$missing" ] || { printf 'dead links of the site:\n%s\n' "$missing"; status=1; }

# One thing taken away at a time, in a copy: header, what to delete (for sed), what the lint says.
copy=$(mktemp -d)
trap 'rm -rf "$copy"' EXIT
mkdir -p "$copy/scripts"
cp -r include abi "$copy"
cp -r scripts/reference "$copy/scripts"
mkdir "$copy/examples"
cp -r examples/calls "$copy/examples"
while IFS='|' read -r file change problem; do
  cp "$file" "$copy/saved"
  sed -i "$change" "$copy/$file"
  cmp -s "$file" "$copy/$file" && { echo "nothing to change: $change"; status=1; }
  found=$(python3 "$copy/scripts/reference/lint.py") && { echo "the lint passes without: $change"; status=1; }
  grep -q "$problem" <<<"$found" || { echo "the lint does not say: $problem"; status=1; }
  cp "$copy/saved" "$copy/$file"
done <<'ROWS'
include/kest/frame.h|/^\/\/ Takes a block of memory\.$/d|KestMemAlloc: no purpose
include/kest/string.h|s/^  \/\/   keep    .*/  \/\/   keep/|AdjustBuffer: .*keep
include/kest/string.h|s/^\/\/   bstr     a BSTR, or null$/\/\/   bstr     a BSTR/|KestFreeString: may the pointer bstr be null
include/kest/text.h|/^\/\/   Cost  constant: the tables are small$/d;/^\/\/   Cost       Linear in the text\.$/d|KestZelToIsoLang: nothing about cost
include/kest/message.h|/^\/\/   Result  true; false without memory, or when the library is not started$/d|KestPostMessage: nothing about the result
include/kest/file.h|/^  \/\/   Width  times end/d|SetLastWriteTime: a type that differs
include/kest/thread.h|s/^\/\/   See        KestCreateThread$/\/\/   See        KestMakeThread/|see KestMakeThread
examples/calls/text.cpp|/\[html\]/d|KestPlainToHtml: no marked part
abi/libKest.m32.symbols|$a KestUndeclared|KestUndeclared is exported and has no page
ROWS
exit $status
