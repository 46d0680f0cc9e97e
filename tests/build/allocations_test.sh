#!/usr/bin/env bash
# allocations_test.sh STATIC_LIBRARY: memory comes from KestMemAlloc, is tested, and has its objects
# made in place. No object file asks for operator new, plain or for an array, which the host may
# have replaced and whose failure may throw; only the default hooks go to the C library's heap.

symbols=$(nm --print-file-name --undefined-only "$1" | sed -E 's/^[^:]*:([^:]*):.* /\1 /')
status=0
complain() { echo "$1 takes $2"; status=1; }

grep -q '^memory.cpp.o malloc$' <<<"$symbols" || complain 'the default hook' 'no memory: the list cannot be right'
while read -r object symbol; do
  case $symbol in
    _Znw* | _Zna*) complain "$object" "$symbol, operator new" ;;
    __cxa_throw* | __cxa_rethrow* | __cxa_allocate_exception | __cxa_bad_*) complain "$object" "$symbol: it can throw" ;;
    malloc | calloc | realloc | free | strdup | strndup | posix_memalign | aligned_alloc | memalign)
      [ "$object" = memory.cpp.o ] || complain "$object" "$symbol around the hooks"
      ;;
  esac
done <<<"$symbols"
exit $status
