#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# android_bp_test.sh ROOT MODULE=SOURCE SOURCE...: each module of the device build has the sources
# that the host builds for it, and no others; the library has every source of its folders.
set -euo pipefail
export LC_ALL=C
cd "$1"
shift

# sources_of MODULE
sources_of() {
  awk -v name="    name: \"$1\"," '
    $0 == "}" { found = in_list = 0 }
    $0 == name { found = 1 }
    found && /^    srcs: \[$/ { in_list = 1; next }
    in_list && /^    \],$/ { in_list = 0 }
    in_list' Android.bp | sed 's/^ *"\(.*\)",$/\1/' | sort
}

compare() {  # compare WHAT FIRST SECOND
  if [ -z "$2" ] || [ -z "$3" ]; then echo "$1: no sources found"; exit 1; fi
  diff <(echo "$2") <(echo "$3") || { echo "$1 differ"; exit 1; }
}

modules=0
while [ $# -gt 0 ]; do
  module=${1%%=*}
  built=("${1#*=}")
  shift
  while [ $# -gt 0 ] && [[ $1 != *=* ]]; do built+=("$1"); shift; done
  compare "$module in Android.bp (<) and the host build's (>)" "$(sources_of "$module")" \
    "$(printf '%s\n' "${built[@]}" | sort)"
  modules=$((modules + 1))
done
[ "$modules" -gt 0 ] || { echo "no modules to compare"; exit 1; }
compare "libquorvel in Android.bp (<) and src/ (>)" "$(sources_of libquorvel)" \
  "$(find src -name '*.cc' | sort)"
echo "the device build agrees: $modules modules"
