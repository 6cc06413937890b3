// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "quiet.h"

#include <sched.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>

#include "process_state.h"

namespace norvik::qel {

namespace {

// By thread: how often it has left a processor, on its own and otherwise.
using Look = std::map<pid_t, std::string>;

// False when a thread is awake.
bool LookAtThreads(Look& look) {
  look.clear();
  for (const pid_t id : ThreadIds()) {
    if (id == gettid()) continue;
    const std::string status = ReadThreadFile(id, "status");
    const size_t switches = status.find("voluntary_ctxt_switches:");
    if (status.find("State:\tS") == std::string::npos || switches == std::string::npos) {
      return false;
    }
    look[id] = status.substr(switches);
  }
  return true;
}

}  // namespace

bool WaitUntilQuiet() {
  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
  Look first;
  Look second;
  while (!LookAtThreads(first) || !LookAtThreads(second) || first != second) {
    if (std::chrono::steady_clock::now() > deadline) return false;
    sched_yield();
  }
  return true;
}

}  // namespace norvik::qel
