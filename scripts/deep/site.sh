#!/usr/bin/env bash
# Opens every page of the reference site in a browser: links, console, telephone width, light and dark; screenshots stay in build/deep/site
#
# scripts/site.py says what it looks at; it is first tried on a small site that has each fault.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need doxygen mandoc python3 chromium chromium-driver python3-selenium fonts-dejavu-core

# The driver's profile and caches stay below build/ too.
work=$deep/site
rm -rf "$work"
mkdir -p "$work/home"
export HOME=$work/home XDG_CONFIG_HOME=$work/home XDG_CACHE_HOME=$work/home

step 'make the site' deep-site-make scripts/reference.sh
step 'find planted faults' deep-site-faults /usr/bin/python3 scripts/site.py --self-test "$work"
failed=
try_step 'open every page' deep-site-open /usr/bin/python3 scripts/site.py build/reference/html "$work" || failed=yes

# value NAME: of the summary that the run left.
value() { sed -n "s/^ \"$1\": \([0-9]*\),\{0,1\}$/\1/p" "$work/summary.json"; }
figure 'pages opened' "$(value pages)"
figure 'links followed' "$(value links)"
figure 'complaints' "$(value complaints)"
figure 'screenshots' "$(find "$work" -maxdepth 1 -name '*.png' | wc -l)"
rm -rf "$work/home"
[ -z "$failed" ]
