#!/bin/sh
# run-aarch64.sh PROGRAM [ARGUMENT...]: runs a program for 64-bit Arm under qemu's user emulation.
# Its argv[0] is a script that does the same: death tests start the program anew by that name, and
# the kernel cannot.
set -eu
program=$1
shift
again=$program.run
if [ ! -x "$again" ]; then
  made=$(mktemp "$again.XXXXXX")
  printf '#!/bin/sh\nexec qemu-aarch64 -L /usr/aarch64-linux-gnu -0 "%s" "%s" "$@"\n' \
    "$again" "$program" >"$made"
  chmod +x "$made"
  mv "$made" "$again"
fi
exec "$again" "$@"
