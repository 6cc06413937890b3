#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# device_test.sh PROGRAM: runs the device tests on all kinds of simulated phones.
set -euo pipefail
program=$1
fail() { printf '%s\n' "$*" >&2; exit 1; }

# run PHONE EXIT-CODE WANTED ARGUMENT...: runs the program; its output must match WANTED.
run() {
  local phone=$1 exit_code=$2 wanted=$3 actual=0
  shift 3
  output=$(QUORVEL_PHONE=$phone "$program" "$@" 2>&1) || actual=$?
  [ "$actual" = "$exit_code" ] || fail "$phone $*: exit code $actual, not $exit_code: $output"
  grep -qE -- "$wanted" <<<"$output" || fail "$phone $*: no '$wanted' in: $output"
  if [ "$phone" = aidl ] || [ "$phone" = hidl ]; then
    skipped=$(grep -c '^\[  SKIPPED \].*ms)$' <<<"$output" || true)
  fi
}
# shellcheck disable=SC2016  # the command's parent is the program
restart=(--restart-command 'thermal=kill -USR1 $PPID' --change-command 'thermal=kill -USR2 $PPID')
# shellcheck disable=SC2016
battery=(--restart-command 'battery=kill -USR1 $PPID' --change-command 'battery=kill -USR2 $PPID')
phone=(--listen 1 --temperature SKIN:skin --temperature CPU:cpu --require battery --require sensor
       --require thermal)

run aidl 0 PASSED "${phone[@]}" "${restart[@]}" "${battery[@]}"
[ "$skipped" = 2 ] || fail "$skipped tests skipped, not only the restarts of the sensor service"
run hidl 0 PASSED "${phone[@]}" "${restart[@]}" --gtest_filter='*hermal*:*hrottling*'
[ "$skipped" = 0 ] || fail "$skipped tests skipped with a HIDL service"
run aidl 0 'no --temperature given' --gtest_filter='ThermalQueryTest.Temp*:*RegistersOnce*/Thr*'
one=(--temperature SKIN:skin --gtest_filter='*.RegistersOnce*')
for family in battery sensor thermal; do
  case $family in
    battery) tests='Battery*.*:*ClientTest.*/Battery*' ;;
    sensor) tests='*ClientTest.*/Proximity:*ClientTest.*/Hinge*' ;;
    thermal) tests='Thermal*.*:*ClientTest.*/Throttling' ;;
  esac
  some=(--listen 1 --temperature SKIN:skin --gtest_filter="$tests")
  run "absent-$family" 0 "the .* service cannot be asked" "${some[@]}" --limit 1
  run "absent-$family" 1 "required: the .* service cannot be asked" "${one[@]}" --require "$family" \
    --limit 1
  run "late-$family" 0 PASSED "${some[@]}" --require "$family"
done
run refused-battery 1 "required: the health service cannot be asked" "${one[@]}" --require battery --limit 1
run refused-sensor 1 "the registration is refused" "${one[@]}"
run refused-thermal 1 "the registration is refused" "${one[@]}"
for wrong in "--temperature skin" "--require fans" "--listen 0" "--restart-command sensor=true" "x"; do
  read -ra words <<<"$wrong"
  run aidl 2 "invalid argument" "${words[@]}"
done
run aidl 0 "--restart-command FAMILY" --help
echo "the device tests work"
