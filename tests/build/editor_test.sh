#!/usr/bin/env bash
# editor_test.sh BUILD: clangd, as an editor starts it, takes its flags from where .clangd says and finds nothing
# to remark in a file of each folder, nor in the headers that .clangd names.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
[ "$1" = "$PWD/build/m32" ] || { echo "only the build in build/m32 serves editors, and this one is in $1"; exit 77; }
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# The first source of each folder, a public header, a test, an example, and the headers that take more flags.
mapfile -t files < <(
  for folder in src/*/ src/platform/posix/; do find "$folder" -maxdepth 1 -name '*.cpp' | sort | sed q; done
  printf '%s\n' include/kest/collections.h tests/collections/ptr_list_test.cpp examples/queue/queue.cpp \
    src/string/{scan_kernel,place}.h src/crypto/{big_int_residues_28,des_slices,rc2_lanes}.h)
[ ${#files[@]} -gt 15 ] || { echo "only ${#files[@]} files found"; exit 1; }

look() {
  local log=$2/${1//\//-}
  clangd --check="$1" --check-lines=1 >"$log" 2>&1 && grep -q 'Compile command from CDB' "$log" && return
  echo "$1:"
  grep -E '^E|[Ff]allback' "$log" || tail -n 3 "$log"
  return 1
}
export -f look
printf '%s\n' "${files[@]}" | xargs -P "$(nproc)" -I {} bash -c "look {} $work"
