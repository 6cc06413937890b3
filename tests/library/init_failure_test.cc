// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Init...() when the family's object cannot be initialized. No fault of the platform leads there,
// so the linker directs the calls of the three Initialize() to this file (see CMakeLists.txt).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "battery/battery_info.h"
#include "quorvel.h"
#include "quorvel/fake/log_capture.h"
#include "sensor/sensor_info.h"
#include "thermal/thermal_info.h"

namespace norvik::qel {
namespace {

bool fails = false;

}  // namespace

// The threads run by the time that the failure is known.
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

struct Family {
  const char* name;
  void (*init)(void** handle);
  void (*deinit)(void** handle);
  const char* message;
};

class InitFailureTest : public testing::TestWithParam<Family> {};

TEST_P(InitFailureTest, LeavesNullAndAWarningAndEndsTheWorkers) {
  const Family& family = GetParam();
  fake::LogCapture log;
  int stale = 0;
  void* handle = &stale;
  fails = true;
  family.init(&handle);  // a worker that was not joined would end the process
  fails = false;
  EXPECT_EQ(handle, nullptr);
  // A worker that was ended before it began its loop has logged that, too.
  const auto lines = log.Lines();
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ(lines.back().priority, ANDROID_LOG_WARN);
  EXPECT_EQ(lines.back().text, family.message);

  family.init(&handle);
  EXPECT_NE(handle, nullptr);
  family.deinit(&handle);
  EXPECT_EQ(handle, nullptr);
}

INSTANTIATE_TEST_SUITE_P(
    Families, InitFailureTest,
    testing::Values(Family{"Battery", InitBatteryInfo, DeinitBatteryInfo,
                           "InitBatteryInfo: unable to initialize BatteryInfo."},
                    Family{"Sensor", InitSensorInfo, DeinitSensorInfo,
                           "InitSensorInfo: unable to initialize SensorData."},
                    Family{"Thermal", InitThermalInfo, DeinitThermalInfo,
                           "InitThermalInfo: unable to initialize ThermalInfo."}),
    [](const auto& info) { return std::string(info.param.name); });

}  // namespace
}  // namespace norvik::qel
