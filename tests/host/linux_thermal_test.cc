// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The Linux machine's temperatures, on a fake sysfs made for each test.
#include "quorvel/linux_machine/thermal.h"

#include <aidl/android/hardware/thermal/BnCoolingDeviceChangedCallback.h>
#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "clients.h"
#include "linux_machine.h"
#include "process_state.h"
#include "quiet.h"
#include "quorvel.h"
#include "quorvel/fake/deliveries.h"
#include "waiting.h"

namespace norvik::qel {
namespace {

using aidl::android::hardware::thermal::BnCoolingDeviceChangedCallback;
using aidl::android::hardware::thermal::CoolingDevice;
using aidl::android::hardware::thermal::CoolingType;
using aidl::android::hardware::thermal::IThermal;
using aidl::android::hardware::thermal::ThrottlingSeverity;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;

// Trip points: throttling starts at 90 degrees and ends below 85, the next one is at 95, and the
// machine shuts down at 105.
const Files kProcessorZone = {
    {"type", "x86_pkg_temp\n"},
    {"temp", "41500\n"},
    {"mode", "enabled\n"},
    {"trip_point_0_type", "critical\n"},
    {"trip_point_0_temp", "105000"},
    {"trip_point_1_type", "passive\n"},
    {"trip_point_1_temp", "90000"},
    {"trip_point_1_hyst", "5000\n"},
    {"trip_point_2_type", "passive"},
    {"trip_point_2_temp", "95000\n"},
};

class LinuxThermalTest : public LinuxFixture {
 protected:
  LinuxThermalTest() : LinuxFixture("thermal", "thermal_zone900", "type") {
    InitThermalInfo(&handle_);
  }
  ~LinuxThermalTest() override {
    DeinitThermalInfo(&handle_);
    if (thermal_ != nullptr) thermal_->Stop();
    EXPECT_TRUE(fake::WaitUntilDelivered());
  }

  static constexpr std::chrono::milliseconds kPeriod{2};

  void Start(const std::string& types_file = "") {
    thermal_ = std::make_unique<linux_machine::Thermal>(
        observer(), linux_machine::ThermalSettings{.types_file = types_file, .period = kPeriod});
    thermal_->Start();
  }

  int Register(const char* type, const char* name) {
    const ThermalCallbackParam param = {
        .id = 1, .type_name = type, .temperature_name = name, .callback = Client<0>};
    return RegisterThermalCallback(handle_, &param, &seen_);
  }
  std::optional<int> NextSeverity() {
    const std::optional<Call> call = seen_.Take();
    return call ? std::optional(call->value) : std::nullopt;
  }

  // The temperature that a client's query returns; nullopt if there is none.
  std::optional<float> Read(const char* name) {
    thermistor out = {};
    int count = 1;
    EXPECT_EQ(GetBulkTemperatureByNames(handle_, &name, 1, &out, &count), 0);
    return count == 1 ? std::optional(out.value) : std::nullopt;
  }
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const auto& temperature : thermal_->data().temperatures) names.push_back(temperature.name);
    return names;
  }

  Seen<Call> seen_;
  std::unique_ptr<linux_machine::Thermal> thermal_;
  void* handle_ = nullptr;
};

TEST_F(LinuxThermalTest, UnannouncedTripPointsAreReadForClientsAlone) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  // The hysteresis ends below 85 degrees, and applies only while the temperature falls.
  for (const auto& [millidegrees, severity] :
       {std::pair("90000\n", 2), {"110000\n", 6}, {"95000\n", 3}, {"85000\n", 2}, {"84999\n", 0}}) {
    machine_.Set("thermal_zone0", "temp", millidegrees);
    EXPECT_EQ(NextSeverity(), severity) << millidegrees;
  }
  machine_.Set("thermal_zone0", "temp", "89000\n");
  machine_.Set("thermal_zone0", "temp", "97000\n");
  EXPECT_EQ(NextSeverity(), 3);

  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  ASSERT_TRUE(WaitUntilQuiet());  // the service has noticed
  machine_.Set("thermal_zone0", "temp", "50000\n");
  EXPECT_EQ(seen_.Take(25 * kPeriod), std::nullopt);
  EXPECT_EQ(thermal_->data().temperatures.at(0).value, 97.0f) << "no client listens";
  EXPECT_EQ(Read("x86_pkg_temp"), 50.0f) << "a question reads";
}

TEST_F(LinuxThermalTest, ASeverityEndsWithItsZone) {
  Start();
  EXPECT_THAT(Notices(), ElementsAre("this machine has no temperature sensor"));
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"type", "skin\n"}}));
  ASSERT_TRUE(Eventually([&] { return !Names().empty(); })) << "found without a question";
  EXPECT_EQ(Read("skin"), 41.5f);
  ASSERT_EQ(Register("SKIN", "skin"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  machine_.Set("thermal_zone0", "temp", "92000\n");
  ASSERT_EQ(NextSeverity(), 2);
  machine_.Remove("thermal_zone0");
  EXPECT_EQ(NextSeverity(), 0) << "a zone that is gone throttles nothing";
  EXPECT_EQ(Read("skin"), std::nullopt);
  // A new zone gets the same number. Its temperature is within the hysteresis of the old zone.
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"type", "skin\n"}, {"temp", "87000\n"}}));
  machine_.Change("thermal_zone0", "temp", "96000\n");
  EXPECT_EQ(NextSeverity(), 3);
  // There may also be notices about files that were missing during a read.
  EXPECT_THAT(Notices(), Contains("this machine has no temperature sensor"));
}

TEST_F(LinuxThermalTest, ZonesOfOneTypeKeepTheirNames) {
  const Files zone = {{"type", "acpitz\n"}, {"temp", "30000\n"}};
  machine_.Add("thermal_zone10", With(zone, {{"temp", "40000\n"}}));
  machine_.Add("thermal_zone9", zone);
  Start();
  EXPECT_THAT(Names(), ElementsAre("acpitz", "acpitz@thermal_zone10")) << "as the kernel counts";
  EXPECT_EQ(Read("acpitz@thermal_zone10"), 40.0f);
  machine_.Remove("thermal_zone9");
  machine_.Add("thermal_zone2", With(zone, {{"temp", "20000\n"}}));
  ASSERT_TRUE(Eventually([&] { return Read("acpitz") == 20.0f; }));
  EXPECT_EQ(Read("acpitz@thermal_zone10"), 40.0f);
  machine_.AddTo("hwmon", "hwmon1", {{"name", "k10temp\n"}, {"temp1_input", "38850\n"}});
  EXPECT_TRUE(Eventually([&] { return Read("k10temp:temp1") == 38.85f; }));
}

class CoolingListener : public BnCoolingDeviceChangedCallback {
 public:
  ndk::ScopedAStatus notifyCoolingDeviceChanged(const CoolingDevice& device) override {
    states.Put(device.value);
    return ndk::ScopedAStatus::ok();
  }
  Seen<int64_t> states;
};

TEST_F(LinuxThermalTest, CoolingDevicesAreReadForTheirOwnListeners) {
  machine_.Add("cooling_device0",
               {{"type", "pwm-fan\n"}, {"cur_state", "0\n"}, {"max_state", "4\n"}});
  Start();
  const auto service = IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
  ASSERT_NE(service, nullptr);
  const auto listener = ndk::SharedRefBase::make<CoolingListener>();
  ASSERT_TRUE(
      service->registerCoolingDeviceChangedCallbackWithType(listener, CoolingType::FAN).isOk());
  for (const int state : {1, 4, 0}) {
    machine_.Set("cooling_device0", "cur_state", std::to_string(state));
    EXPECT_EQ(listener->states.Take(), state);
  }
}

TEST_F(LinuxThermalTest, AZoneHasNoSeverityBeforeItsFirstReadingAndKeepsItWhenAReadingFails) {
  const std::string unreadable = "thermal_zone0/temp: cannot be read: Operation not permitted";
  machine_.Add("thermal_zone0", kProcessorZone);
  machine_.MakeUnreadable("thermal_zone0", "temp");
  Start();
  EXPECT_EQ(Register("CPU", "x86_pkg_temp"), -EINVAL);
  EXPECT_EQ(Read("x86_pkg_temp"), std::nullopt);
  EXPECT_THAT(Notices(), ElementsAre(unreadable));
  machine_.Vanish("thermal_zone0");
  machine_.Add("thermal_zone0", With(kProcessorZone, {{"temp", "91000\n"}}));
  ASSERT_TRUE(Eventually([&] { return Read("x86_pkg_temp") == 91.0f; }));
  EXPECT_EQ(thermal_->data().temperatures.at(0).throttlingStatus, ThrottlingSeverity::MODERATE);
  machine_.MakeUnreadable("thermal_zone0", "temp");
  EXPECT_TRUE(std::isnan(Read("x86_pkg_temp").value_or(0)));
  EXPECT_EQ(thermal_->data().temperatures.at(0).throttlingStatus, ThrottlingSeverity::MODERATE);
}

TEST_F(LinuxThermalTest, AServiceThatWasStoppedServesAgainAndLeavesNothingOpen) {
  machine_.Add("thermal_zone0", kProcessorZone);
  Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  ASSERT_EQ(DeregisterThermalCallback(handle_, 1), 0);
  thermal_->Stop();
  ASSERT_TRUE(fake::WaitUntilDelivered());  // the library has received the death notification
  EXPECT_FALSE(AServiceManager_isDeclared(services::kThermalInstance));
  EXPECT_EQ(Read("x86_pkg_temp"), std::nullopt);
  thermal_->Start();
  ASSERT_EQ(Register("CPU", "x86_pkg_temp"), 0);
  ASSERT_EQ(NextSeverity(), 0);
  machine_.Set("thermal_zone0", "temp", "93000\n");
  EXPECT_EQ(NextSeverity(), 2);

  constexpr int kRounds = 20;
  const int before = Descriptors();
  for (int i = 0; i < kRounds; ++i) thermal_->Start();
  // umockdev may have opened a few descriptors of its own.
  EXPECT_LT(Descriptors(), before + kRounds);
}

TEST_F(LinuxThermalTest, AFileOfTypesThatCannotBeReadIsReported) {
  Start("/nowhere/types");
  EXPECT_EQ(notices_.Take(), "/nowhere/types: No such file or directory");
  Start("/");
  EXPECT_THAT(Notices(), Contains("/: Is a directory"));
}

}  // namespace
}  // namespace norvik::qel
