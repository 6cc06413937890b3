// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "library_threads.h"

#include <chrono>
#include <sstream>
#include <string>
#include <thread>
#include <utility>

#include "process_state.h"

namespace norvik::qel::bench {

namespace {

// Voluntary and involuntary ones.
int64_t ContextSwitchesOf(pid_t id) {
  int64_t sum = 0;
  std::istringstream status(ReadThreadFile(id, "status"));
  std::string field;
  while (status >> field) {
    if (!field.ends_with("voluntary_ctxt_switches:")) continue;
    int64_t count = 0;
    status >> count;
    sum += count;
  }
  return sum;
}

}  // namespace

ContextSwitches LibraryContextSwitches() {
  ContextSwitches switches;
  for (const pid_t id : LibraryThreadIds()) switches[id] = ContextSwitchesOf(id);
  return switches;
}

bool LibraryThreadsSettle(int count) {
  constexpr std::chrono::milliseconds kBetweenLooks(5);
  const auto limit = std::chrono::steady_clock::now() + std::chrono::seconds(10);
  ContextSwitches earlier = LibraryContextSwitches();
  while (std::chrono::steady_clock::now() < limit) {
    std::this_thread::sleep_for(kBetweenLooks);
    ContextSwitches now = LibraryContextSwitches();
    if (static_cast<int>(now.size()) == count && now == earlier) return true;
    earlier = std::move(now);
  }
  return false;
}

}  // namespace norvik::qel::bench
