// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone. Linked to a program, it runs before main() starts. Leave it out on a phone.
#include <quorvel/simulated/health.h>

namespace {

struct Phone {
  Phone() {
    health.SetLevel(80);
    health.Start();
  }
  norvik::qel::simulated::Health health;
} phone;

}  // namespace
