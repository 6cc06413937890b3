// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Pins threads to processors, so that figures do not depend on the scheduler, and shows the
// library's threads as the kernel reports them.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <map>
#include <string_view>

namespace norvik::qel::bench {

// The program's first two processors; on a machine with one, both are the same.
enum class Cpu { kCaller = 0, kWorker = 1 };

// Moves the calling thread; threads that it creates afterwards start on that processor, too.
void PinThisThread(Cpu cpu);

// Moves the thread of the process with that name. False if there is none.
[[nodiscard]] bool PinThread(std::string_view name, Cpu cpu);

// Threads created while it exists run on the workers' processor. Its destructor moves the calling
// thread back.
class WorkersAreMadeHere {
 public:
  WorkersAreMadeHere() { PinThisThread(Cpu::kWorker); }
  // NOLINTNEXTLINE(bugprone-exception-escape): without it no figure would be right
  ~WorkersAreMadeHere() { PinThisThread(Cpu::kCaller); }
  WorkersAreMadeHere(const WorkersAreMadeHere&) = delete;
  WorkersAreMadeHere& operator=(const WorkersAreMadeHere&) = delete;
};

// The context switches of each of the library's threads so far, by thread id.
using ContextSwitches = std::map<pid_t, int64_t>;
ContextSwitches LibraryContextSwitches();

// Waits until the library has `count` threads and all are asleep. Polls, because the kernel sends
// no notification: no thread may have run between two polls. False after ten seconds.
bool LibraryThreadsSettle(int count);

}  // namespace norvik::qel::bench
