#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# abi_test.sh [--renew] LIBRARY: compares the C functions of LIBRARY, which needs debug information,
# with libquorvel.abi.xml: names, arguments, results and records. --renew writes that file from the
# library.
#
# Only types reachable from the C functions are compared, so that the result does not depend on the
# compiler, its options or the classes; nor on the processor, if sizes agree.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
promised=$here/libquorvel.abi.xml
renew=no
if [ "$1" = --renew ]; then renew=yes; shift; fi
library=$1
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

mapfile -t functions < <(sed -n 's/^ *\([A-Z][A-Za-z0-9]*\);$/\1/p' "$here/../../src/libquorvel.map.txt")
printf '[abi_whitelist]\n' >"$work/functions"
printf '  %s\n' "${functions[@]}" >>"$work/functions"
abidw --kmi-whitelist "$work/functions" --exported-interfaces-only --headers-dir "$here/../../include" \
  --drop-private-types --drop-undefined-syms --type-id-style hash --no-elf-needed \
  --no-corpus-path --no-comp-dir-path --no-show-locs "$library" >"$work/abi.xml"
# Some compilers describe a function twice.
described=$(grep -o "elf-symbol-id=.[A-Za-z]*" "$work/abi.xml" | sort -u | wc -l || true)
[ "$described" = ${#functions[@]} ] ||
  { echo "$described functions described, not all: has $library debug information?"; exit 1; }

if [ "$renew" = yes ]; then
  cp "$work/abi.xml" "$promised"
  echo "renewed: $promised"
  exit
fi
abidiff --no-architecture "$promised" "$work/abi.xml" || {
  echo "the C functions are not what is promised: see CONTRIBUTING.md on how to change the ABI"
  exit 1
}
echo "the C functions are as promised: $described"
