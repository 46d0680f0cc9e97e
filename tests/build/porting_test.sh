#!/usr/bin/env bash
# porting_test.sh: every name that docs/porting.md gives for "now" is one that the public headers declare, and
# every class and function family of the headers has its row.

cd "$(dirname "${BASH_SOURCE[0]}")/../.." || exit 1
status=0

# What stands between backticks in the second column, a name a line.
names() {
  awk -F' \\| ' '/^\| / && NF >= 3 { print $2 }' docs/porting.md | grep -o '`[^`]*`' |
    grep -oE '\b([A-Z][A-Za-z_]+|ucs[a-z]+|kest_[a-z]+|isuctype|touupper|snuprintf|kOpen[A-Za-z]+)\b' | sort -u
}
mapfile -t all < <(names)
[ ${#all[@]} -gt 80 ] || { echo "only ${#all[@]} names found"; status=1; }
for name in "${all[@]}"; do
  cat include/kest/*.h | sed 's,//.*,,' | grep -qw -- "$name" || { echo "docs/porting.md: no header declares $name"; status=1; }
done

# Ciphers and big integers, which no standard library has, are left out; so are records and base classes.
while read -r class; do
  grep -q "\`[^|]*\b$class\b" docs/porting.md || { echo "docs/porting.md has no row for $class"; status=1; }
done < <(sed -n 's/^class KEST_API \(T[A-Za-z0-9]*\).*/\1/p' include/kest/*.h |
  grep -vE 'Cipher$|^T(Crypter|BigInt|MessageDigest|MdXDigest|Md4Digest|DigestPrng|Md5Prng|ConvertBuffer|InetChecksum)$')
exit $status
