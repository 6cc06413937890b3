// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "hang_guard.h"

#include <errno.h>
#include <signal.h>
#include <stdio.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <cstring>

namespace norvik::qel {

namespace {

std::atomic<const char*> under_way{"nothing"};
std::atomic<const char*> awaited{nullptr};

void Print(const char* text) {
  static_cast<void>(!write(STDERR_FILENO, text, strlen(text)));
}

// A signal handler: async-signal-safe functions only.
void OnHang(int /*signal*/) {
  Print(program_invocation_short_name);
  Print(": hangs: ");
  Print(under_way);
  if (const char* const what = awaited; what != nullptr) {
    Print(", waiting for ");
    Print(what);
  }
  Print("\n");
  abort();
}

}  // namespace

void RestartHangGuard(const char* what, std::chrono::seconds limit) {
  static const bool guarded = signal(SIGALRM, OnHang) != SIG_ERR;
  if (!guarded) abort();
  under_way = what;
  alarm(static_cast<unsigned>(limit.count()));
}

void SetAwaited(const char* what) {
  awaited = what;
}

void Fail(const std::string& what) {
  fprintf(stderr, "%s: FAILED: %s: %s\n", program_invocation_short_name, under_way.load(),
          what.c_str());
  abort();
}

}  // namespace norvik::qel
