// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A simulated phone with its health service up, a battery handle, and clients that remember.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "clients.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/fake/service_manager.h"
#include "quorvel/simulated/health.h"
#include "waiting.h"

namespace norvik::qel {

inline std::string DumpOf(void* handle) {
  return TextOf(DumpBatteryInfo, handle);
}

inline bool IsLinked(void* handle) {
  return DumpOf(handle).find("linked to services = T") != std::string::npos;
}

class BatteryFixture : public testing::Test {
 protected:
  BatteryFixture() {
    health_.Start();
    InitBatteryInfo(&handle_);
  }
  ~BatteryFixture() override {
    DeinitBatteryInfo(&handle_);
    health_.Kill();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  int Calls(services::HealthOperation operation) { return health_.on(operation).calls(); }
  // The texts the battery has logged so far.
  std::vector<std::string> BatteryLog() const {
    std::vector<std::string> texts;
    for (const auto& line : log_.Lines("audio_hw_battery")) texts.push_back(line.text);
    return texts;
  }
  // Registers client 0 for the level and takes its first call.
  void RegisterAndHearLevel() {
    ASSERT_EQ(RegisterBatteryLevelCallback(handle_, Client<0>, &seen_), 0);
    ASSERT_EQ(seen_.Take(), (Call{0, health_.info().batteryLevel}));
  }

  fake::LogCapture log_;
  Seen<Call> seen_;
  simulated::Health health_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel
