// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Prints three battery levels of a simulated phone.
#include <android/binder_process.h>

#include <iostream>

#include "battery.h"
#include "quorvel/simulated/health.h"

int main() {
  ABinderProcess_startThreadPool();
  norvik::qel::simulated::Health phone;
  phone.SetLevel(80);
  phone.Start();

  Battery battery;
  for (int level = 79; level >= 77; --level) {
    std::cout << "battery level: " << battery.NextLevel() << " %\n";
    phone.SetLevel(level);
  }
}
