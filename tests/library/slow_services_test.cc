// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A service that does not answer holds up the handle that asks it, and nobody else.
#include <errno.h>
#include <gtest/gtest.h>

#include <array>
#include <memory>
#include <thread>

#include "clients.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/gate.h"
#include "quorvel/simulated/health.h"
#include "quorvel/simulated/sensor_hub.h"
#include "quorvel/simulated/thermal.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using services::HealthOperation;
using services::ThermalOperation;
using simulated::ThermalPath;

// Two handles of each family on one phone.
class SlowServiceTest : public testing::Test {
 protected:
  SlowServiceTest() {
    health_.Start();
    hub_.Add(ASENSOR_TYPE_PROXIMITY, "proximity");
    hub_.Start();
    thermal_.Declare(ThermalPath::kAidl);
    thermal_.Start(ThermalPath::kAidl);
    for (void*& handle : battery_) InitBatteryInfo(&handle);
    for (void*& handle : sensors_) InitSensorInfo(&handle);
    for (void*& handle : heat_) InitThermalInfo(&handle);
  }
  ~SlowServiceTest() override {
    for (void*& handle : heat_) DeinitThermalInfo(&handle);
    for (void*& handle : sensors_) DeinitSensorInfo(&handle);
    for (void*& handle : battery_) DeinitBatteryInfo(&handle);
    health_.Kill();
    thermal_.Kill(ThermalPath::kAidl);
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  // Clients come, are called and go, and questions are answered.
  void ExpectBatteryWorks(void* handle, int level) {
    Seen<Call> seen;
    EXPECT_EQ(RegisterBatteryLevelCallback(handle, Client<0>, &seen), 0);
    EXPECT_EQ(seen.Take(), (Call{0, level}));
    health_.SetLevel(level - 1);
    EXPECT_EQ(seen.Take(), (Call{0, level - 1}));
    EXPECT_EQ(GetBatteryLevel(handle, false), level - 1);
    EXPECT_EQ(DeregisterBatteryLevelCallback(handle, Client<0>), 0);
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }
  static void ExpectHeatWorks(void* handle) {
    Seen<Call> seen;
    const ThermalCallbackParam skin = {
        .id = 0, .type_name = "SKIN", .temperature_name = "skin", .callback = Client<0>};
    EXPECT_EQ(RegisterThermalCallback(handle, &skin, &seen), 0);
    EXPECT_EQ(seen.Take(), (Call{0, 0}));
    EXPECT_EQ(AskTemperature(handle), 1);
    EXPECT_EQ(DeregisterThermalCallback(handle, 0), 0);
  }
  void ExpectSensorsWork() {
    Seen<Call> seen;
    for (void* handle : sensors_) {
      EXPECT_EQ(RegisterProximitySensorCallback(handle, 0, Client<0>, &seen), 0);
      EXPECT_TRUE(seen.Take());
      EXPECT_EQ(DeregisterProximitySensorCallback(handle, 0), 0);
    }
  }
  // How many readings one question brings, or its error.
  static int AskTemperature(void* handle) {
    const char* names[] = {"skin"};
    std::array<thermistor, 1> out;
    int count = 1;
    const int result = GetBulkTemperatureByNames(handle, names, 1, out.data(), &count);
    return result == 0 ? count : result;
  }

  simulated::Health health_;
  simulated::SensorHub hub_;
  simulated::Thermal thermal_;
  std::array<void*, 2> battery_ = {};
  std::array<void*, 2> sensors_ = {};
  std::array<void*, 2> heat_ = {};
};

TEST_F(SlowServiceTest, AHealthServiceThatNeverAnswersHoldsUpOneHandleUntilItDies) {
  const auto never = std::make_shared<fake::Gate>();
  health_.on(HealthOperation::kGetHealthInfo).Then(fake::Outcome::After(never));
  std::thread asker([this] { EXPECT_EQ(GetBatteryLevel(battery_[0], false), -EAGAIN); });
  EXPECT_TRUE(never->WaitForArrivals());
  ExpectBatteryWorks(battery_[1], 50);
  ExpectHeatWorks(heat_[0]);
  ExpectSensorsWork();
  health_.Kill();
  asker.join();
  health_.Start();
  ExpectBatteryWorks(battery_[0], 49);
}

TEST_F(SlowServiceTest, AThermalServiceThatNeverAnswersHoldsUpOneHandleUntilItDies) {
  const auto never = std::make_shared<fake::Gate>();
  thermal_.on(ThermalOperation::kGetTemperatures).Then(fake::Outcome::After(never));
  std::thread asker([this] { EXPECT_EQ(AskTemperature(heat_[0]), 0); });
  EXPECT_TRUE(never->WaitForArrivals());
  ExpectHeatWorks(heat_[1]);
  ExpectBatteryWorks(battery_[0], 50);
  ExpectSensorsWork();
  thermal_.Kill(ThermalPath::kAidl);
  asker.join();
  EXPECT_TRUE(fake::WaitUntilDelivered());
  thermal_.Start(ThermalPath::kAidl);
  ExpectHeatWorks(heat_[0]);
}

}  // namespace
}  // namespace norvik::qel
