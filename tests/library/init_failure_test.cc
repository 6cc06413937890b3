// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Init...() if the family's object cannot be initialized. No fault of the platform causes that, so
// the linker redirects the calls of the three Initialize() to this file (see CMakeLists.txt).
#include "battery/battery_info.h"
#include "fixture.h"
#include "sensor/sensor_info.h"
#include "thermal/thermal_info.h"

namespace norvik::qel {
namespace {

bool fails = false;

}  // namespace

// Fails after the real Initialize() has started the threads.
#define QUORVEL_FAILING(Class, mangled)                             \
  bool Real##Class(audio::Class* object) asm("__real_" mangled);    \
  bool Failing##Class(audio::Class* object) asm("__wrap_" mangled); \
  bool Failing##Class(audio::Class* object) {                       \
    return Real##Class(object) && !fails;                           \
  }
QUORVEL_FAILING(BatteryInfo, "_ZN6norvik3qel5audio11BatteryInfo10InitializeEv")
QUORVEL_FAILING(SensorInfo, "_ZN6norvik3qel5audio10SensorInfo10InitializeEv")
QUORVEL_FAILING(ThermalInfo, "_ZN6norvik3qel5audio11ThermalInfo10InitializeEv")
#undef QUORVEL_FAILING

namespace {

class InitFailureTest : public HandleFixture, public testing::WithParamInterface<Family> {
 protected:
  InitFailureTest() : HandleFixture(GetParam()) {}
};
INSTANTIATE_TEST_SUITE_P(, InitFailureTest, testing::Values(kBattery, kSensors, kThermal),
                         [](const auto& test) { return test.param.name; });

TEST_P(InitFailureTest, LeavesNullAndAWarningAndEndsTheWorkers) {
  int stale = 0;
  handle_ = &stale;
  fails = true;
  Init();  // a worker that was not joined would end the process
  fails = false;
  EXPECT_EQ(handle_, nullptr);
  // A worker that ended before its loop began has also logged a warning, before the last line.
  const auto lines = log_.Lines();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back().priority, ANDROID_LOG_WARN);
  EXPECT_THAT(lines.back().text,
              testing::MatchesRegex("Init(Battery|Sensor|Thermal)Info: unable to "
                                    "initialize (BatteryInfo|SensorData|"
                                    "ThermalInfo)\\."));
  Init();
  EXPECT_NE(handle_, nullptr);
  Deinit();
  EXPECT_EQ(handle_, nullptr);
}

}  // namespace
}  // namespace norvik::qel
