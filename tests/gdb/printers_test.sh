#!/usr/bin/env bash
# printers_test.sh PLACE BUILD PROGRAM LIBRARY: gdb loads the printers by itself, from the build tree, an
# installed library, a stripped one or a moved archive, and shows what the program holds; from a core file too; whatever garbage
# it holds.

place=$1 build=$2 program=$3 library=$4
cd "$(dirname "${BASH_SOURCE[0]}")" || exit 1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
unset DEBUGINFOD_URLS

install() { cmake --install "$build" --prefix "$@" >"$work/log" 2>&1 || { cat "$work/log"; exit 1; }; }

expected=printers.expected script=printers.gdb
case $place in
  core)
    expected=core.expected script=core.gdb folder=$(dirname "$library")
    settings=("add-auto-load-safe-path $folder")
    gdb -nx -batch -ex "break Stop if \$_caller_is(\"(anonymous namespace)::MessagesInLane\", 1)" -ex run \
      -ex "generate-core-file $work/core" "$program" >"$work/log" 2>&1 </dev/null
    core=$work/core
    [ -s "$core" ] || { cat "$work/log"; exit 1; } ;;
  garbage)
    expected=garbage.expected script=garbage.gdb folder=$(dirname "$library")
    settings=("add-auto-load-safe-path $folder") ;;
  build)
    folder=$(dirname "$library") settings=("add-auto-load-safe-path $folder") ;;
  installed | stripped)
    prefix=$work/usr
    if [ "$place" = stripped ]; then
      install "$prefix" --strip
      expected=stripped.expected script=stripped.gdb
    else
      install "$prefix"
    fi
    folder=$(dirname "$(find "$prefix" -name libKest.so)")
    # Of /usr gdb knows both by itself.
    settings=("add-auto-load-scripts-directory $prefix/share/gdb/auto-load"
      "add-auto-load-safe-path $prefix/share/gdb/auto-load") ;;
  archive)
    install "$work/_CPack_Packages/Kest"
    mv "$work/_CPack_Packages/Kest" "$work/moved"
    folder=$(dirname "$(find "$work/moved" -name libKest.so)") settings=("add-auto-load-safe-path $work/moved") ;;
esac

options=()
for setting in "${settings[@]}"; do options+=(-iex "$setting"); done
LC_ALL=C.UTF-8 gdb -nx -batch "${options[@]}" -ex "set environment LD_LIBRARY_PATH $folder" -x $script "$program" ${core:+"$core"} \
  >"$work/output" 2>&1 </dev/null

# From the first scene on, without what changes from run to run.
sed -E '1,/^== /{/^== /!d}; /^(\[Thread|\[Inferior|Using host)|printers? (en|dis)abled|printers enabled$/d
  s/\b0x[0-9a-f]{6,16}\b/ADDRESS/g; s/(x{200}|y{200})"/200 TIMES"/' "$work/output" >"$work/seen"
diff "$expected" "$work/seen" && exit 0
echo "gdb shows other things than $expected holds (>), with the printers of: $place"
exit 1
