// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with its health service up, and a battery handle.
#pragma once

#include "fixture.h"
#include "quorvel/simulated/health.h"

namespace norvik::qel {

using services::HealthOperation;

inline bool IsLinked(void* handle) {
  return TextOf(DumpBatteryInfo, handle).find("linked to services = T") != std::string::npos;
}

class BatteryFixture : public HandleFixture {
 protected:
  BatteryFixture() : HandleFixture(kBattery) {
    health_.Start();
    Init();
  }
  ~BatteryFixture() override {
    Deinit();
    health_.Kill();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  int Calls(HealthOperation operation) { return health_.on(operation).calls(); }
  bool IsLinked() const { return qel::IsLinked(handle_); }
  // Registers client 0 for the level and takes its first call, which has the current level.
  void RegisterLevel() {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{0, health_.info().batteryLevel}));
  }
  // Restarts the service with another level.
  void Restart(int level) {
    health_.Kill();
    health_.SetLevel(level);
    health_.Start();
  }

  const fake::ShortGetServiceWait short_wait_;  // for look-ups while the service is dead
  simulated::Health health_;
};

}  // namespace norvik::qel
