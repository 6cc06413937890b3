// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// How the driver knows that everything that a step has caused is over, whichever thread does it.
#pragma once

#include <sched.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>

#include "process_state.h"

namespace norvik::qel {

// By thread: how often it has left a processor, on its own and otherwise.
using Look = std::map<pid_t, std::string>;

// False when a thread is awake.
inline bool LookAtThreads(Look& look) {
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

// Waits until no other thread of the process can go on by itself: all sleep, at a lock, a gate, a
// condition variable or in the kernel. Only the caller can cause what happens next, except what
// waits for a time (the pauses of workers do not: see pauses.h). False after half a minute.
//
// No cooperation of the threads is needed: the kernel tells each one's state and how often it has
// been on a processor. Two looks are taken at all of them. A thread that sleeps at both and has not
// run in between slept all the time from the one to the other; so at the moment between the looks
// all were asleep at once, and no thread was left to wake one.
[[nodiscard]] inline bool WaitUntilQuiet() {
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
