#!/usr/bin/env bash
# hardening_test.sh LIBRARY: what the linker and the compiler do against exploits is there.

library=$1
status=0
complain() { echo "$1"; status=1; }

# has TEXT PATTERN COMPLAINT
has() { grep -qE "$2" <<<"$1" || complain "$3"; }
has_not() { ! grep -qE "$2" <<<"$1" || complain "$3"; }

segments=$(readelf --wide --segments "$library")
dynamic=$(readelf --wide --dynamic "$library")
imports=$(nm --dynamic --undefined-only "$library")

has "$segments" 'GNU_RELRO' 'no part is made read-only after relocation'
has "$dynamic" '\(FLAGS(_1)?\).*\b(BIND_)?NOW' 'symbols are not all bound at load: RELRO is partial'
has "$segments" 'GNU_STACK .* RW ' 'the stack is not marked as data alone'
has_not "$segments" ' (RWE|WE) ' 'a segment is writable and executable'
has_not "$dynamic" 'TEXTREL' 'it has text relocations'
has_not "$dynamic" 'R(UN)?PATH' 'it brings a search path for libraries'
has "$imports" '__stack_chk_fail' 'no stack protector'
has "$imports" '__[a-z]+_chk' 'not built with _FORTIFY_SOURCE'
exit $status
