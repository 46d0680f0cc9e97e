#!/usr/bin/env bash
# readme_figures_test.sh BUILD: the figures in README.md are those of the places that they come from.

root=$(cd "$(dirname "${BASH_SOURCE[0]}")/../.." && pwd)
figures=$("$root/scripts/readme_figures.sh" "$1") || exit 1
in_readme=$(sed -n '/^<!-- figures -->$/,/^<!-- figures end -->$/p' "$root/README.md" | sed '1d;$d')
[ -n "$in_readme" ] && [ "$in_readme" = "$figures" ] && exit
echo "README.md says:"
echo "$in_readme"
echo "but it is (scripts/readme_figures.sh --write BUILD puts it there):"
echo "$figures"
exit 1
