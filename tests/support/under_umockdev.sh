#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# under_umockdev.sh PROGRAM [ARGUMENT...]: runs a program that has umockdev make a fake sysfs.
#
# The library that umockdev preloads keeps the program's open files in tables without a lock. When
# several threads open and close files, it sometimes loses a uevent and prints a message, or
# corrupts the heap, and a signal ends the program. In both cases the program is run again, at most
# twice. A failed test, a test that hangs or a sanitizer's report fails at once.
set -uo pipefail
output=$(mktemp -d)
trap 'rm -rf "$output"' EXIT
for attempt in 1 2 3; do
  umockdev-wrapper "$@" >"$output/out" 2>"$output/err"
  code=$?
  if grep -q ': hangs: ' "$output/err"; then break; fi
  if [ "$code" -le 128 ] && ! grep -q '^umockdev: failed to map fd' "$output/err"; then break; fi
  [ "$attempt" = 3 ] || echo "umockdev failed (exit code $code): once more" >&2
done
cat "$output/out"
cat "$output/err" >&2
exit "$code"
