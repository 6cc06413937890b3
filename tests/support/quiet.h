// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Waits until all threads have finished the work that a step of a test has caused.
#pragma once

#include <sched.h>
#include <sys/types.h>
#include <unistd.h>

#include <chrono>
#include <map>
#include <string>

#include "process_state.h"

namespace norvik::qel {

// The voluntary and involuntary context switches, by thread.
using Look = std::map<pid_t, std::string>;

// Reads the context switches of all other threads. False if a thread is awake.
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

// Waits until all other threads of the process sleep: at a lock, a gate, a condition variable or in
// the kernel. After that only the caller or a timeout can wake a thread. The pauses of workers have
// no timeout (see pauses.h). False after half a minute.
//
// The threads need not cooperate: the kernel reports each thread's state and context switches. All
// threads are looked at twice. A thread that sleeps at both looks without a context switch between
// them slept all the time. So between the looks all threads were asleep at once, and none was left
// to wake another.
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
