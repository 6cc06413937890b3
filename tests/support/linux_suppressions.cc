// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the thread sanitizer is to overlook in tests on a fake sysfs.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
// GLib and umockdev are not built for the sanitizer, which sees their calls of
// malloc() and the like but not all of their locks. libudev shares one key for its hash tables
// between threads: each table keeps a copy, so whatever a race leaves there will do.
extern "C" const char* __tsan_default_suppressions() {
  return "called_from_lib:libglib-2.0.so\n"
         "called_from_lib:libumockdev.so\n"
         "called_from_lib:libumockdev-preload.so\n"
         "race:getrandom\n";
}
#endif
#endif
