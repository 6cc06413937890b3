// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "threads.h"

#include <errno.h>
#include <sched.h>

#include <chrono>
#include <sstream>
#include <string>
#include <system_error>
#include <thread>
#include <utility>
#include <vector>

#include "process_state.h"
#include "waiting.h"

namespace norvik::qel::bench {

namespace {

std::vector<int> AllowedCpus() {
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0) {
    throw std::system_error(errno, std::system_category(), "sched_getaffinity");
  }
  std::vector<int> cpus;
  for (int cpu = 0; cpu < CPU_SETSIZE; ++cpu) {
    if (CPU_ISSET(cpu, &allowed)) cpus.push_back(cpu);
  }
  return cpus;
}

void Pin(pid_t thread, Cpu cpu) {
  static const std::vector<int> cpus = AllowedCpus();  // before anything is pinned
  cpu_set_t one;
  CPU_ZERO(&one);
  CPU_SET(cpus[static_cast<size_t>(cpu) % cpus.size()], &one);
  if (sched_setaffinity(thread, sizeof one, &one) != 0) {
    throw std::system_error(errno, std::system_category(), "sched_setaffinity");
  }
}

// The thread's voluntary and involuntary context switches.
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

void PinThisThread(Cpu cpu) {
  Pin(/*thread=*/0, cpu);
}

bool PinThread(std::string_view name, Cpu cpu) {
  for (const pid_t id : ThreadIds()) {
    if (ThreadName(id) != name) continue;
    Pin(id, cpu);
    return true;
  }
  return false;
}

ContextSwitches LibraryContextSwitches() {
  ContextSwitches switches;
  for (const pid_t id : LibraryThreadIds()) switches[id] = ContextSwitchesOf(id);
  return switches;
}

bool LibraryThreadsSettle(int count) {
  ContextSwitches earlier;
  return Eventually([&] {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    const ContextSwitches before = std::exchange(earlier, LibraryContextSwitches());
    return static_cast<int>(earlier.size()) == count && earlier == before;
  });
}

}  // namespace norvik::qel::bench
