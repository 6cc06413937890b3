#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# under_umockdev.sh PROGRAM [ARGUMENT...]: runs a program that has umockdev make a fake sysfs.
#
# What umockdev preloads keeps the open files of the program in tables without a lock. When several
# threads of it open and close files it now and then loses an announcement, and says so, or breaks
# the heap, and a signal ends the program. Then the program is run again, twice at most. A test that
# fails by itself fails at once, and so does whatever a sanitizer finds.
set -uo pipefail
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
for attempt in 1 2 3; do
  umockdev-wrapper "$@" >"$output/out" 2>"$output/err"
  code=$?
  if [ "$code" -le 128 ] && ! grep -q '^umockdev: failed to map fd' "$output/err"; then break; fi
  [ "$attempt" = 3 ] || echo "umockdev failed (exit code $code): once more" >&2
done
cat "$output/out"
cat "$output/err" >&2
exit "$code"
