#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# exports_test.sh LIBRARY ROOT: the list of exports, the header's functions and the library's symbols,
# each compared with the others; and whatever else has to name every function.
set -euo pipefail
export LC_ALL=C
library=$1 root=$2
map=$root/src/libquorvel.map.txt header=$root/include/quorvel.h

compare() {  # compare NAME-OF-FIRST FIRST NAME-OF-SECOND SECOND
  local only
  only=$(comm -23 <(sort -u <<<"$2") <(sort -u <<<"$4"))
  [ -z "$only" ] || { printf 'in %s, not in %s:\n%s\n' "$1" "$3" "$only"; failed=1; }
  only=$(comm -13 <(sort -u <<<"$2") <(sort -u <<<"$4"))
  [ -z "$only" ] || { printf 'in %s, not in %s:\n%s\n' "$3" "$1" "$only"; failed=1; }
}

failed=0
listed=$(sed -n 's/^ *\([A-Z][A-Za-z0-9]*\);$/\1/p' "$map")
declared=$(sed -n 's/^[a-z][a-z0-9 ]*[ *]\([A-Z][A-Za-z0-9]*\)(.*/\1/p' "$header")
symbols=$(nm --dynamic --defined-only --demangle "$library" | cut -d' ' -f3-)
exported=$(grep -vE '[:(]| for ' <<<"$symbols")
for list in "$listed" "$declared" "$exported"; do
  [ -n "$list" ] || { echo "no functions to compare"; exit 1; }
done
compare "the list" "$listed" "the header" "$declared"
compare "the list" "$listed" "the library" "$exported"
for place in tests/library/c_api_test.c tests/packaging/libquorvel.abi.xml; do
  missing=$(comm -23 <(sort -u <<<"$declared") <(grep -oE '[A-Za-z0-9_]+' "$root/$place" | sort -u))
  [ -z "$missing" ] || { printf 'in the header, not in %s:\n%s\n' "$place" "$missing"; failed=1; }
done

# Classes: each listed one has exported members, and nothing else of C++ is exported.
listed=$(sed -n 's/^ *\(_ZN\)K\?\(.*\)\*;$/\1\2E/p' "$map" | c++filt)
exported=$(grep '::' <<<"$symbols" | sed -e 's/^vtable for //' -e 's/\([a-z:]*::[A-Za-z]*\).*/\1/')
for list in "$listed" "$exported"; do
  [ -n "$list" ] || { echo "no classes to compare"; exit 1; }
done
compare "the list" "$listed" "the library" "$exported"
# What is listed by its whole mangled name, such as a table of virtual functions.
while read -r name; do
  nm --dynamic --defined-only "$library" | grep -q " $name$" ||
    { echo "listed, not in the library: $name"; failed=1; }
done < <(sed -n 's/^ *\(_Z[A-Za-z0-9_]*\);$/\1/p' "$map")
# The platform may hold callbacks of the library after the last handle is gone.
readelf --dynamic --wide "$library" | grep -q NODELETE ||
  { echo "the library can be unmapped: linked without -z nodelete"; failed=1; }
[ "$failed" = 0 ] || exit 1
echo "exports agree: $(wc -l <<<"$declared") functions, $(sort -u <<<"$listed" | wc -l) classes"
