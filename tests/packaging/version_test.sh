#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# version_test.sh ROOT VERSION LIBRARY: the version of the build is the header's, the library's file
# name has its major number, and the changelog tells of it.
set -euo pipefail
root=$1 version=$2 library=$3
printf '#include "quorvel.h"\nQUORVEL_VERSION_MAJOR.QUORVEL_VERSION_MINOR.QUORVEL_VERSION_PATCH\n' |
  cc -E -P -I "$root/include" -x c - | tail -1 | tr -d ' ' | grep -qxF "$version" ||
  { echo "the header's version is not $version"; exit 1; }
readelf --dynamic --wide "$library" | grep -qF "[libquorvel.so.${version%%.*}]" ||
  { echo "the library's SONAME has another major number than $version"; exit 1; }
newest=$(sed -n 's/^## \[\([0-9.]*\)\].*/\1/p' "$root/CHANGELOG.md" | head -1)
[ "$newest" = "$version" ] || { echo "CHANGELOG.md tells of '$newest', not of $version"; exit 1; }
echo "version $version"
