// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "guard.h"

#include <malloc.h>
#include <sched.h>
#include <stdio.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>

#include "environment.h"
#include "hang_guard.h"
#include "pauses.h"
#include "process_state.h"
#include "quiet.h"
#include "quorvel/fake/deliveries.h"

namespace norvik::qel::stress {

void Fail(const std::string& what) {
  fprintf(stderr, "quorvel_stress_test: %s: %s\n", UnderWayNow(), what.c_str());
  fflush(nullptr);
  _exit(1);
}

void ExpectEqual(long seen, long expected, const char* what) {
  if (seen == expected) return;
  Fail(std::string(what) + ": " + std::to_string(seen) + ", expected " + std::to_string(expected));
}

void UnderWay(const char* what) {
  RestartHangGuard(what, std::chrono::minutes(5));
}

void Await(const char* what, const std::function<long()>& seen, long expected) {
  SetAwaited(what);
  while (seen() != expected) {
    EndPauses();
    sched_yield();
  }
  SetAwaited(nullptr);
}

void Deliver() {
  if (!fake::WaitUntilDelivered(std::chrono::hours(1))) Fail("something does not arrive");
}

void Settle() {
  Deliver();
  if (!WaitUntilQuiet()) Fail("a thread does not come to rest");
  Deliver();
}

Figures Measure() {
  Figures figures;
  figures.library_threads = LibraryThreadCount();
  figures.other_threads = static_cast<long>(ThreadIds().size()) - figures.library_threads;
  figures.descriptors = Descriptors();
  if (kSanitized) return figures;  // what a sanitizer keeps says nothing
  malloc_trim(0);
  figures.resident_kb = ResidentBytes() / 1024;
  if (figures.resident_kb == 0) Fail("the kernel does not tell the resident memory");
  return figures;
}

}  // namespace norvik::qel::stress
