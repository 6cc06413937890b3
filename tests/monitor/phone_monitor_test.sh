#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# phone_monitor_test.sh PROGRAM: the phone's monitor, on a phone whose services run.
set -euo pipefail
program=$1
fail() { printf '%s\n' "$*" >&2; exit 1; }

# expect EXIT-CODE WANTED... -- ARGUMENT...: the program's output has each of the wanted lines.
# Columns count as one space.
expect() {
  local exit_code=$1 wanted=() actual=0
  shift
  while [ "$1" != -- ]; do wanted+=("$1"); shift; done
  shift
  output=$("$program" "$@" 2>&1) || actual=$?
  [ "$actual" = "$exit_code" ] || fail "$*: exit code $actual, not $exit_code: $output"
  for text in "${wanted[@]}"; do
    grep -qF -- "$text" < <(tr -s ' ' <<<"$output") || fail "$*: no '$text' in: $output"
  done
}

# hears PATTERN ARGUMENT...: the program prints such a line in the end. It ends when its reader stops.
hears() {
  local pattern=$1
  shift
  timeout 60 "$program" "$@" 2>/dev/null | grep -qE -m 1 -- "$pattern" || fail "$*: no '$pattern'"
}

expect 0 "battery level 61 %" "dock charger online" "wireless charger offline" -- get battery
expect 0 "proximity 5 cm" "hinge angle 120 degrees" -- get sensors
expect 0 "skin 38.5 degrees C" "cpu 40.0 degrees C" -- get temperatures skin cpu
expect 3 "unknown or not present: nowhere" -- get temperatures nowhere
expect 0 "NONE" -- get bcl
hears "battery level +unknown +-> +61 %" watch battery
# The library may have heard the sensor before it first calls its client.
hears "hinge angle +(unknown|0 degrees) +-> +120 degrees" watch sensors
hears "SKIN:skin +unknown +-> +LIGHT" watch thermal SKIN:skin
expect 0 "Device: phone" "Watching the sensors." -- watch --for=1ms sensors
expect 0 "linked to services = T" -- dump
expect 0 "battery_level 61 % health service" "SKIN:skin 38.5 degrees C, LIGHT thermal service" -- list
expect 0 "services: health up, sensor up, thermal up" "SKIN:skin 38.5 C, LIGHT" -- status
expect 0 "ok health: link made" "ok thermal: callback registered" " 0 failed" -- doctor
expect 0 "watch thermal TYPE:NAME" -- help
expect 0 "quorvel " -- --version
expect 0 '"property":"battery_level"' -- get battery --json
for wrong in "" "demo" "watch fans" "dump --for 2s" "dump --device linux" "-x dump"; do
  read -ra words <<<"$wrong"
  expect 2 "quorvel: " "(see quorvel --help)" -- "${words[@]}"
done
recording=$(mktemp -u)
expect 0 "Recorded" -- record "$recording" --for 500ms
grep -q '"join":"thermal"' "$recording" || fail "no join in $(cat "$recording")"
rm "$recording"
expect 0 -- watch battery --for 1ms
! grep -qF '**' <<<"$output" || fail "the phone tells nothing of itself"
echo "the phone's monitor works"
