// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Which processor a thread runs on, so that a figure is not that of the scheduler's mood.
#pragma once

#include <string_view>

namespace norvik::qel::bench {

// The processors that the program was given, 0 and 1; on a machine with one, both are the same.
enum class Cpu { kCaller = 0, kWorker = 1 };

// Moves the calling thread there; threads that it makes afterwards begin there, too.
void PinThisThread(Cpu cpu);

// Moves a thread of the process there, known by its name. False when there is none.
[[nodiscard]] bool PinThread(std::string_view name, Cpu cpu);

// Threads made in its life are workers: the calling thread comes back to its own processor.
class WorkersAreMadeHere {
 public:
  WorkersAreMadeHere() { PinThisThread(Cpu::kWorker); }
  ~WorkersAreMadeHere() { PinThisThread(Cpu::kCaller); }
  WorkersAreMadeHere(const WorkersAreMadeHere&) = delete;
  WorkersAreMadeHere& operator=(const WorkersAreMadeHere&) = delete;
};

}  // namespace norvik::qel::bench
