// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Pins threads to processors, so that figures do not depend on the scheduler.
#pragma once

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

}  // namespace norvik::qel::bench
