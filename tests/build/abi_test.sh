#!/usr/bin/env bash
# abi_test.sh LIBRARY DUMP: types, layouts, virtual tables and signatures are those of the dump, and a
# break of any of them would be seen. After a change on purpose: scripts/abi.sh.

library=$1 dump=$2
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

compare() { abidiff --no-default-suppression "$1" "$library"; }
compare "$dump" || { echo "the library differs from $(basename "$dump")"; exit 1; }

status=0
# breaks WHAT SED: a dump that says otherwise is no longer matched.
breaks() {
  sed -E "$2" "$dump" >"$work/seeded"
  if cmp -s "$dump" "$work/seeded"; then
    echo "nothing to seed: $1"
    status=1
  elif compare "$work/seeded" >"$work/log" 2>&1; then
    echo "not seen: $1"
    status=1
  fi
}
breaks 'an export that is gone' "s/<elf-symbol name='KestAllocString'/<elf-symbol name='KestAllocStringOld'/"
breaks 'virtual functions in another order' "/<member-function .*vtable-offset='2'/s/vtable-offset='2'/vtable-offset='3'/"
breaks 'members in another place' "s/<data-member access='public' layout-offset-in-bits='32'>/<data-member access='public' layout-offset-in-bits='64'>/"
breaks 'an enumerator with another value' "s/(<enumerator name='k[A-Za-z]+' value=')1'/\\17'/"
breaks 'a wider int' "s/(<type-decl name='int' size-in-bits=')32'/\\164'/"
exit $status
