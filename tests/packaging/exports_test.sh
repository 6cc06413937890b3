#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# exports_test.sh LIBRARY ROOT VERSION: compares the list of exports, the header's functions and the
# library's symbols with each other; checks the other files that must name every function, and the
# files that contain the version.
set -euo pipefail
export LC_ALL=C
library=$1 root=$2 version=$3
map=$root/src/libquorvel.map.txt header=$root/include/quorvel.h

fail() { printf '%s\n' "$*"; failed=1; }
compare() {  # compare NAME-OF-FIRST FIRST NAME-OF-SECOND SECOND
  if [ -z "$2" ] || [ -z "$4" ]; then fail "nothing to compare in $1 or $3"; fi
  diff <(sort -u <<<"$2") <(sort -u <<<"$4") || fail "above: < only in $1, > only in $3"
}

failed=0
listed=$(sed -n 's/^ *\([A-Z][A-Za-z0-9]*\);$/\1/p' "$map")
declared=$(sed -n 's/^[a-z][a-z0-9 ]*[ *]\([A-Z][A-Za-z0-9]*\)(.*/\1/p' "$header")
symbols=$(nm --dynamic --defined-only --demangle "$library" | cut -d' ' -f3-)
exported=$(grep -vE '[:(]| for ' <<<"$symbols")
compare "the list" "$listed" "the header" "$declared"
compare "the list" "$listed" "the library" "$exported"
for place in tests/library/c_api_test.c tests/packaging/libquorvel.abi.xml; do
  missing=$(comm -23 <(sort -u <<<"$declared") <(grep -oE '[A-Za-z0-9_]+' "$root/$place" | sort -u))
  [ -z "$missing" ] || fail "in the header, not in $place:" "$missing"
done

# Each listed class has exported members, and no other C++ symbols are exported.
listed=$(sed -n 's/^ *\(_ZN\)K\?\(.*\)\*;$/\1\2E/p' "$map" | c++filt)
exported=$(grep '::' <<<"$symbols" | sed -e 's/^vtable for //' -e 's/\([a-z:]*::[A-Za-z]*\).*/\1/')
compare "the list" "$listed" "the library" "$exported"
# Symbols that are listed by their full mangled name, such as virtual function tables.
while read -r name; do
  nm --dynamic --defined-only "$library" | grep -q " $name$" || fail "not in the library: $name"
done < <(sed -n 's/^ *\(_Z[A-Za-z0-9_]*\);$/\1/p' "$map")
# The platform may hold callbacks of the library after the last handle is destroyed.
dynamic=$(readelf --dynamic --wide "$library")
grep -q NODELETE <<<"$dynamic" || fail "the library can be unmapped: linked without -z nodelete"

grep -qF "[libquorvel.so.${version%%.*}]" <<<"$dynamic" || fail "the SONAME is not of $version"
printf '#include "quorvel.h"\nQUORVEL_VERSION_MAJOR.QUORVEL_VERSION_MINOR.QUORVEL_VERSION_PATCH\n' |
  cc -E -P -I "$root/include" -x c - | tail -1 | tr -d ' ' | grep -qxF "$version" ||
  fail "the header's version is not $version"
newest=$(sed -n 's/^## \[\([0-9.]*\)\].*/\1/p' "$root/CHANGELOG.md" | head -1)
[ "$newest" = "$version" ] || fail "the newest version in CHANGELOG.md is '$newest', not $version"
[ "$failed" = 0 ] || exit 1
echo "$version exports $(wc -l <<<"$declared") functions, $(sort -u <<<"$listed" | wc -l) classes"
