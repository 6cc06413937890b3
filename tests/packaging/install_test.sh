#!/usr/bin/env bash
# SPDX-FileCopyrightText: 2026 The quorvel developers
# SPDX-License-Identifier: Apache-2.0

# install_test.sh PREFIX WORK-FOLDER [BUILD-PATH]: builds and runs the examples with only the files
# that are installed under PREFIX, or unpacked there from packages. With BUILD-PATH, no installed
# file may contain that path.
set -euo pipefail
here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
examples=$here/../../examples
prefix=$(cd "$1" && pwd)
mkdir -p "$2"
work=$(cd "$2" && pwd)
fail() { printf 'install_test: %s\n' "$*" >&2; exit 1; }

run() {  # run LOG COMMAND...
  local log=$work/$1.log
  shift
  "$@" >"$log" 2>"$log.errors" || { cat "$log" "$log.errors" >&2; fail "failed: $*"; }
}

if [ $# -gt 2 ]; then
  ! grep -rlF -- "$(cd "$3" && pwd)" "$prefix" || fail "these name the build's folder"
fi

library=$(find "$prefix" -name 'libquorvel.so')
[ -n "$library" ] || fail "no libquorvel.so under $prefix"
libdir=$(dirname "$library")
# Libraries in unpacked packages have no run path, and no linker searches their folder.
if ! readelf --dynamic "$library" | grep -q RUNPATH; then export LD_LIBRARY_PATH=$libdir; fi
# The library may need only the C and C++ libraries and the fake platform.
needed=$(readelf --dynamic --wide "$library" | sed -n 's/.*NEEDED.*\[\(.*\)\]/\1/p')
! grep -vE '^(libquorvel_fake_platform\.so\.[0-9.]+|libstdc\+\+\.so\.6|libc\.so\.6|libgcc_s\.so\.1|libm\.so\.6|ld-linux[-a-z0-9]*\.so\.[0-9])$' \
  <<<"$needed" || fail "libquorvel.so needs more than it should"

generator=()
if command -v ninja >/dev/null; then generator=(-G Ninja); fi
for name in c_client cpp_client downstream_test; do
  # -Werror, because the installed headers must not cause warnings in other projects.
  run "$name-configure" cmake "${generator[@]}" -S "$examples/$name" -B "$work/$name" --fresh \
    -DCMAKE_PREFIX_PATH="$prefix" -DCMAKE_FIND_USE_PACKAGE_REGISTRY=OFF \
    -DCMAKE_C_FLAGS="-Wall -Wextra -Werror" -DCMAKE_CXX_FLAGS="-O0 -Wall -Wextra -Wpedantic -Werror"
  grep -q "^quorvel_DIR:PATH=$prefix/" "$work/$name/CMakeCache.txt" ||
    fail "$name has found another quorvel than that of $prefix"
  run "$name-build" cmake --build "$work/$name" --parallel 2
done

export PKG_CONFIG_PATH=$libdir/pkgconfig
# The linker finds a library's dependencies by its run path; without one it needs an option.
rm -rf "$work/make"
cp -r "$examples/c_client" "$work/make"
run make make -C "$work/make" CFLAGS="-O0 -Wall -Wextra -Werror" \
  LDFLAGS="-Wl,-rpath,$libdir ${LD_LIBRARY_PATH:+-Wl,-rpath-link,$libdir}" client client_and_phone client_and_machine
for client in c_client/client make/client; do
  run c_client "$work/$client"
  grep -qx "battery level: the health service cannot be asked" "$work/c_client.log" ||
    fail "$client has not asked: $(cat "$work/c_client.log")"
  grep -q "linked to services = F" "$work/c_client.log" || fail "$client has not dumped"
  # With a simulated phone the client receives its reports.
  run c_client_and_phone timeout 60 "$work/${client}_and_phone" 50
  grep -qx "battery level: 80 %" "$work/c_client_and_phone.log" ||
    fail "${client}_and_phone has heard nothing: $(cat "$work/c_client_and_phone.log")"
  # The values depend on this machine, but its service must run.
  run c_client_and_machine timeout 60 "$work/${client}_and_machine" 0
  grep -q "linked to services = T" "$work/c_client_and_machine.log" ||
    fail "${client}_and_machine has no service: $(cat "$work/c_client_and_machine.log")"
done
run cpp_client timeout 60 "$work/cpp_client/client"
diff <(printf 'battery level: %d %%\n' 80 79 78) "$work/cpp_client.log" || fail "other levels"
run downstream_test env -C "$work/downstream_test" ctest --output-on-failure --no-tests=error

# The packages have the header's version.
wanted=$(sed -n 's/^#define QUORVEL_VERSION_M[A-Z]* //p' "$prefix/include/quorvel.h" | paste -sd.)
for package in quorvel quorvel-fake-platform quorvel-simulated quorvel-linux; do
  [[ $(pkg-config --modversion "$package") = "$wanted".* ]] || fail "$package is not $wanted"
done
if [ -x "$prefix/bin/quorvel" ]; then
  [[ $("$prefix/bin/quorvel" --version) = "quorvel $wanted".* ]] || fail "quorvel is not $wanted"
  "$prefix/bin/quorvel" get battery --device simulated | grep -q "battery_level" || fail "quorvel does not work"
  documents=$prefix/share/doc/quorvel
  for document in $("$prefix/bin/quorvel" --man | grep -o 'docs/[a-z./]*[a-z]') \
    docs/monitor.md host/linux_machine/README.md monitor/README.md; do
    [ -f "$documents/$document" ] || fail "the help or the guide points to $document, which is not there"
  done
  gzip -cdf "$prefix"/share/man/man1/quorvel.1* | grep -q '^\.It Fl -json' ||
    fail "the manual page lacks the options"
  "$prefix/bin/quorvel" play "$documents/docs/examples/crash.jsonl" --speed 100 >/dev/null 2>&1 ||
    fail "an example cannot be played"
  # Packages are unpacked in a folder of this name; ./dev install uses /usr/local.
  [[ $prefix = */usr ]] && root=/usr || root=/usr/local
  completion=$(find "$prefix" -name _quorvel)
  ! command -v zsh >/dev/null || zsh -fc 'print -l $fpath' | grep -xF "$root$(dirname "${completion#"$prefix"}")" >/dev/null ||
    fail "zsh does not look for $completion"
fi
echo "what is installed works: three examples, CMake and pkg-config"
