// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The battery and the chargers of this Linux machine. Linked to a program, their service runs
// before main() starts.
#include <quorvel/linux_machine/health.h>

namespace {

struct Machine {
  Machine() { health.Start(); }
  norvik::qel::linux_machine::Health health;
} machine;

}  // namespace
