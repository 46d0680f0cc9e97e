#!/usr/bin/env bash
# The figures of deep runs: build/deep/figures.tsv holds one line a measurement, docs/assurance.tsv one
# line a figure, with sums over every run that was recorded.
#
#   scripts/figures.sh table    prints what this tree has measured since the last record
#   scripts/figures.sh record   adds it to docs/assurance.tsv and to the table in docs/assurance.md
#   scripts/figures.sh page     prints docs/assurance.md with the table as docs/assurance.tsv has it

set -eu
cd "$(dirname "${BASH_SOURCE[0]}")/.."
ledger=build/deep/figures.tsv
book=docs/assurance.tsv
page=docs/assurance.md

# Columns: piece, figure, value, sum or last, commit, date. A figure stays in the place of its first line.
gather() {
  awk -F'\t' -v OFS='\t' '
    { key = $1 FS $2 }
    !(key in kind) { order[++n] = key }
    { value[key] = $4 == "sum" && key in value ? sprintf("%.0f", value[key] + $3) : $3
      kind[key] = $4; commit[key] = $5; date[key] = $6 }
    END { for (i = 1; i <= n; i++) { k = order[i]; print k, value[k], kind[k], commit[k], date[k] } }' "$@" |
    sort -s -t "$(printf '\t')" -k1,1
}

case ${1-} in
  table)
    [ -s "$ledger" ] || { echo 'no figures yet'; exit 0; }
    gather "$ledger" | awk -F'\t' '{ printf "%-12s %-52s %18s  %s\n", $1, $2, $3, $5 }' ;;
  record)
    [ -s "$ledger" ] || { echo 'no figures to record' >&2; exit 1; }
    touch "$book"
    gather "$book" "$ledger" >"$book.new"
    mv "$book.new" "$book"
    mv "$ledger" "$ledger.recorded"
    "$0" page >"$page.new"
    mv "$page.new" "$page" ;;
  page)
    awk -F'\t' '
      FILENAME == ARGV[1] {
        row[++n] = sprintf("| %s | %s | %s | %s | %s |", $1, $2, $3 ($4 == "sum" ? " in all" : ""), $5, $6); next }
      /^<!-- figures end -->$/ { inside = 0 }
      !inside { print }
      /^<!-- figures -->$/ {
        inside = 1
        print "| piece | figure | value | commit | date |"
        print "|---|---|---|---|---|"
        for (i = 1; i <= n; i++) print row[i]
      }' "$book" "$page" ;;
  *) sed -n '2,/^$/s/^# \{0,1\}//p' "$0" >&2; exit 2 ;;
esac
