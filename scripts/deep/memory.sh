#!/usr/bin/env bash
# Every 32-bit test with each of its requests for memory refused, then over watching allocators ([REGEX] picks tests)
#
#   ./check --deep memory string/     a part; tests are named FOLDER/PROGRAM.Suite.Case, as ctest has them
#   CAP=40 FOR=20 ...                 each request up to this one (10) is refused, then every eighth of the way on; a
#                                     test gets so many seconds (1) for that, then it counts as cut
#   PARTS=refuse|hooks ...            one of the two halves alone
#
# Refused requests make checks of the tests fail, and tests that expect no null crash in code of their own. Neither is a
# finding. A finding is a report of a sanitizer whose innermost frame of ours is in the library, or a leak of a block
# that no function handed to the test. Over the watching allocators every test has to pass, and every block to be freed
# once, by the hook that made it. scripts/deep/memory.known names the tests where that is the test's own doing, and why.

. "$(dirname "${BASH_SOURCE[0]}")/../deep.sh"

need g++ g++-multilib cmake ninja-build googletest

pattern=${1:-.}
export CAP=${CAP:-10} FOR=${FOR:-1}
parts=${PARTS:-refuse hooks}
known=$root/scripts/deep/memory.known
work=$deep/memory
mkdir -p "$work"
failed=

# cases PRESET: "PROGRAM FOLDER/PROGRAM.Suite.Case" a line. Not those that run programs of their own (examples), and
# not those that refuse and watch themselves (sweep).
cases() {
  local program
  for program in "build/$1"/tests/*/*_test; do
    case $program in */examples/* | */sweep/* | */fuzz/*) continue ;; esac
    "$program" --gtest_list_tests | awk -v program="$program" -v folder="$(basename "$(dirname "$program")")" \
      -v name="$(basename "$program")" '
      /^[^ ]/ { suite = $1; next }
      { print program, folder "/" name "." suite $1 }'
  done | grep -v DISABLED_ | grep -E -- "$pattern"
}

# in_parallel FUNCTION: calls it with the words of each line of its input, on every core.
in_parallel() {
  export -f "${1?}" filter_of
  xargs -P "$jobs" -L 1 bash -c "$1 \"\$@\"" _
}

# filter_of TEST: what GoogleTest calls it.
filter_of() {
  local name=${1#*/}
  echo "${name#*.}"
}

# unknown PART FILE: the lines of the file, but those that name a test of memory.known.
unknown() { grep -vE -f <(awk -F '\t' -v part="$1" '$1 == part { print $2 }' "$known") "$2"; }

# refuse PROGRAM TEST: runs one test again and again; see tests/sweep/refuse_preload.cpp.
refuse() {
  local mode
  for mode in one from; do
    KEST_TEST_REFUSE=$mode KEST_TEST_REFUSE_LOG=$out/${2//\//:}.$mode KEST_TEST_REFUSE_CAP=$CAP \
      KEST_TEST_REFUSE_FOR=$FOR LD_PRELOAD="$asan $preload" "$1" --gtest_filter="$(filter_of "$2")" >/dev/null 2>&1
  done
  return 0
}

# judge LOG...: a line a report: library or test, what, where, the log.
#
# Paths are relative to the build folder, so ours begin with ../../src or ../../tests; an inline member is its caller's.
# A leaked block belongs to whoever called the outermost function of the library: to the test, if that hands it over.
judge() {
  awk '
    function say(who) { print who "\t" kind "\t" where "\t" FILENAME; kind = "" }
    FNR == 1 { kind = "" }
    /ERROR: AddressSanitizer/ { kind = $3; where = entry = "" }
    /runtime error:/ { kind = "undefined"; where = entry = "" }
    /Direct leak of/ { kind = "leak"; where = entry = "" }
    kind == "" || !/^ *#[0-9]+ 0x/ { next }
    { place = $NF; name = $0; sub(/^ *#[0-9]+ 0x[0-9a-f]+ in /, "", name); sub(/ [^ ]*$/, "", name) }
    place ~ /^\.\.\/\.\.\/src/ && kind == "leak" { entry = name; next }
    # A hook of the test own, below the library.
    place ~ /refuse_preload/ || (place ~ /^\.\.\/\.\.\/tests/ && kind == "leak" && entry == "") { next }
    place ~ /^\.\.\/\.\.\/src/ { where = name " " place; say("library"); next }
    place ~ /^\.\.\/\.\.\/tests/ || place ~ /googletest/ {
      where = entry == "" ? place : entry
      say(entry != "" && entry !~ handed_over ? "library" : "test")
    }
  ' handed_over='^(KestMem|KestAlloc|KestCreateThread|KestTls|KestRegister|SharedLibInit|KestInitialize|KEST::(TBstr::(Copy|Detach)|SPlex::Create|Internal|MessageInit|RandInit|TThread::ThreadCreate|TFile::FileOpen|TFileFinder::FileFinderFind|TLibrary::LibraryLoad))' "$@"
}

# watch PROGRAM TEST: runs one test over the hooks of tests/sweep/hooks_preload.cpp. Its line: hooks, test, status,
# blocks made, crossed, live, plain.
watch() {
  local log=$out/${2//\//:} status
  rm -f "$log.count"
  KEST_TEST_HOOKS=$hooks KEST_TEST_HOOKS_LOG=$log.count LD_PRELOAD=$preload \
    timeout 600 "$1" --gtest_filter="$(filter_of "$2")" >"$log" 2>&1
  status=$?
  echo "$hooks $2 $status $(tail -n 1 "$log.count" 2>/dev/null)"
  rm -f "$log.count"
  [ $status -ne 0 ] || rm -f "$log"
}

build() {
  step "configure $1" "memory-$1-configure" cmake --preset "$1"
  step "build $1" "memory-$1-build" cmake --build "build/$1" --parallel "$jobs"
  preload=$root/build/$1/tests/sweep/lib$2.so
  out=$work/$2
  rm -rf "$out" && mkdir -p "$out"
  export preload out
  cases "$1" >"$work/cases"
}

case $parts in *refuse*)
  build m32-asan refuse_preload
  asan=$(readlink -f "$(g++ -m32 -print-file-name=libasan.so)")
  export asan UBSAN_OPTIONS=print_stacktrace=1:exitcode=77
  export ASAN_OPTIONS=exitcode=77:handle_abort=1:allocator_may_return_null=1
  refuse_all() { in_parallel refuse <"$work/cases"; }
  try_step 'refuse each request' memory-refused refuse_all || failed=yes

  find "$out" -name '*.one' -o -name '*.from' | xargs -r awk '
    FNR == 1 { ++files }
    /cut/ { ++cut; next }
    { ++runs; refused += $3; failed += $2 == 1; hung += $2 == 142; crashed += $2 > 1 && $2 != 142 }
    END { print files / 2, runs, refused, failed, crashed, hung, cut + 0 }' >"$work/refused.sums"
  read -r tests runs refusals checks crashes hangs cut <"$work/refused.sums"
  find "$out" -regex '.*\.[0-9]+' -print0 | sort -z | xargs -0r bash -c "$(declare -f judge); judge \"\$@\"" _ \
    >"$work/refused.reports"
  grep '^library' "$work/refused.reports" >"$work/refused.ours"
  unknown refuse "$work/refused.ours" >"$work/findings"
  figure 'refused requests: tests' "$tests" sum
  figure 'refused requests: runs' "$runs" sum
  figure 'refused requests: runs with a refusal' "$refusals" sum
  figure 'refused requests: runs in which only checks failed' "$checks" sum
  figure 'refused requests: runs that ended in code of the test' "$crashes" sum
  figure 'refused requests: runs that waited for what never came' "$hangs" sum
  figure 'refused requests: tests cut for time, of two a test' "$cut" sum
  figure 'refused requests: findings' "$(wc -l <"$work/findings")"
  if [ -s "$work/findings" ]; then
    echo 'findings (what, where, log):'
    cut -f2- "$work/findings"
    failed=yes
  fi ;;
esac

case $parts in *hooks*)
  build m32 hooks_preload
  : >"$work/watched"
  for hooks in page exact quarantine tags; do
    export hooks
    watch_all() { in_parallel watch <"$work/cases" >>"$work/watched"; }
    try_step "over the hooks: $hooks" "memory-$hooks" watch_all || failed=yes
    sums() { awk -v hooks="$hooks" "\$1 == hooks { n += $1 } END { print n + 0 }" "$work/watched"; }
    figure "watched blocks, $hooks: tests" "$(sums 1)" sum
    figure "watched blocks, $hooks: blocks" "$(sums '$4')" sum
    figure "watched blocks, $hooks: blocks past what they could watch" "$(sums '$7')" sum
  done
  awk '$3 != 0 || $5 > 0 || $6 > 0' "$work/watched" >"$work/watched.odd"
  unknown hooks "$work/watched.odd" >"$work/findings"
  figure 'watched blocks: findings' "$(wc -l <"$work/findings")"
  if [ -s "$work/findings" ]; then
    echo 'findings (hooks, test, exit status, blocks made, crossed, live, past watching):'
    cat "$work/findings"
    failed=yes
  fi ;;
esac

[ -z "$failed" ]
