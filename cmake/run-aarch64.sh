#!/bin/sh
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# run-aarch64.sh PROGRAM [ARGUMENT...]: runs a 64-bit Arm program under qemu user emulation.
# Death tests start the program again by its argv[0], which the kernel cannot execute. So argv[0] is
# the name of a script that runs the program under qemu.
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
