#!/usr/bin/env bash
# android_bp_test.sh ROOT: the device build compiles every source of the library, and no other.
set -euo pipefail
cd "$1"
built=$(sed -n '/srcs: \[/,/\]/s/^ *"\(.*\)",$/\1/p' Android.bp | sort)
sources=$(find battery common sensor thermal thermal_hidl_wrapper -name '*.cc' | sort)
[ -n "$sources" ] || { echo "no sources found"; exit 1; }
diff <(echo "$built") <(echo "$sources") || { echo "Android.bp (<) and the folders (>) differ"; exit 1; }
