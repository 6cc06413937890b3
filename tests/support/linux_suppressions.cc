// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Suppressions of the thread sanitizer for tests on a fake sysfs.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
// GLib and umockdev are not instrumented: the sanitizer sees their calls of malloc() and the like,
// but not all of their locks. libudev shares one key for its hash tables between threads. That race
// is harmless: each table keeps a copy, and any value works.
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libumockdev.so\n"
         "called_from_lib:libumockdev-preload.so\n"
         "race:getrandom\n";
}
#endif
#endif
