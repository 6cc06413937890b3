// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Prints the nanoseconds that loading a library takes in a process that has not loaded it before.
#include <dlfcn.h>
#include <stdio.h>

#include <chrono>

int main(int argc, char** argv) {
  if (argc != 2) {
    fprintf(stderr, "usage: %s LIBRARY\n", argv[0]);
    return 1;
  }
  const auto began = std::chrono::steady_clock::now();
  const void* const library = dlopen(argv[1], RTLD_NOW | RTLD_LOCAL);
  const auto took = std::chrono::steady_clock::now() - began;
  if (library == nullptr) {
    fprintf(stderr, "%s: %s\n", argv[0], dlerror());
    return 1;
  }
  printf("%lld\n", static_cast<long long>(took / std::chrono::nanoseconds(1)));
  return 0;
}
