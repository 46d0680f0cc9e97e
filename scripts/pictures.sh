#!/usr/bin/env bash
# Draws docs/pictures/*.svg from the *.dot beside them with graphviz; an argument names another folder for the SVGs
#
# What all pictures have in common is here: the font, the lines, and the colours, which a source
# names by what they say:
#
#   lightblue   made and freed by Kest      palegreen   yours
#   moccasin    take care                   whitesmoke  a step, or neither
#
# The SVG has a background of its own, for light and for dark pages, and carries the sum of what it was
# made from: tests/build/pictures_test.sh compares.

set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."
sources=docs/pictures
folder=${1:-$sources}
style='text{fill:#1f2328}
[stroke="black"]{stroke:#57606a}
[fill="black"]{fill:#57606a}
[fill="lightblue"]{fill:#ddf4ff}
[fill="palegreen"]{fill:#dafbe1}
[fill="moccasin"]{fill:#fff1d6}
[fill="whitesmoke"]{fill:#f6f8fa}
@media (prefers-color-scheme:dark){
text{fill:#e6edf3}
[stroke="black"]{stroke:#9da7b3}
[fill="black"]{fill:#9da7b3}
[fill="white"]{fill:#0d1117}
[stroke="white"]{stroke:#0d1117}
[fill="lightblue"]{fill:#0c2d6b}
[fill="palegreen"]{fill:#12361e}
[fill="moccasin"]{fill:#4b2900}
[fill="whitesmoke"]{fill:#21262d}
}'

# sum NAME: of everything that decides what NAME.svg looks like.
sum() { cat "$sources/$1.dot" scripts/pictures.sh | sha256sum | cut -d' ' -f1; }

# What each source begins with, behind its "digraph NAME {".
defaults='graph [bgcolor=white, pad=0.15, nodesep=0.3, ranksep=0.35, fontname="DejaVu Sans", fontsize=10];
node [fontname="DejaVu Sans", fontsize=10, shape=box, style="rounded,filled", fillcolor=whitesmoke, margin="0.17,0.08", height=0.3];
edge [fontname="DejaVu Sans", fontsize=9, arrowsize=0.7];'

draw() {
  sed "s|^digraph .*|&\n${defaults//$'\n'/\\n}|" "$sources/$1.dot" | dot -Tsvg |
    sed -e "s|^ viewBox=.*>\$|&\n<!-- sum: $(sum "$1") -->\n<style>${style//$'\n'/\\n}</style>|" \
      -e 's/font-family="DejaVu Sans"/font-family="DejaVu Sans,Verdana,sans-serif"/'
}

if [ "${1-}" = --sum ]; then
  sum "$2"
  exit
fi
for source in "$sources"/*.dot; do
  name=$(basename "$source" .dot)
  draw "$name" >"$folder/$name.svg.new"
  mv "$folder/$name.svg.new" "$folder/$name.svg"
done
