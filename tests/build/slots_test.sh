#!/usr/bin/env bash
# slots_test.sh LIBRARY: the 41 slots of the C runtime function table lie one after another, in
# order, in the file.

library=$1
order="memset memcpy memmove memcmp memchr snprintf sprintf strlen strcpy strncpy strcat strcmp
strncmp strchr strrchr strstr strtol strtoul tolower toupper strlcpy strlcat ucslen ucscpy ucsncpy
ucscat ucscmp ucsncmp ucschr ucsrchr ucsstr ucstol ucstoul ucslcpy ucslcat snuprintf toulower
touupper abs rand time"

readelf --wide --dyn-syms "$library" | awk -v order="$order" '
  $4 == "OBJECT" && $8 ~ /^kest_/ { name = $8; sub(/@.*/, "", name); at[substr(name, 6)] = $2; size[substr(name, 6)] = $3 }
  function hex(text,    i, n) {
    n = 0
    for (i = 1; i <= length(text); i++) n = n * 16 + index("0123456789abcdef", substr(text, i, 1)) - 1
    return n
  }
  END {
    count = split(order, names, /[ \n]+/)
    for (i = 1; i <= count; i++) {
      name = names[i]
      if (!(name in at)) { print "kest_" name " is not an exported variable"; bad = 1; continue }
      if (i == 1) { base = hex(at[name]); width = size[name] }
      if (size[name] != width) { print "kest_" name " has another size"; bad = 1 }
      if (hex(at[name]) != base + (i - 1) * width) {
        print "kest_" name " is not slot " i; bad = 1
      }
      delete at[name]
    }
    for (name in at) { print "kest_" name " is exported and no slot"; bad = 1 }
    if (count != 41) { print "the list has " count " names"; bad = 1 }
    exit bad
  }'
