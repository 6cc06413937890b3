// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// An AIDL thermal service of the simulated phone, seen through the HIDL wrapper.
#pragma once

#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "local_thermal.h"
#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/simulated/thermal.h"
#include "thermal_doubles.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel {

namespace V1_0 = android::hardware::thermal::V1_0;
namespace V2_0 = android::hardware::thermal::V2_0;

[[nodiscard]] inline bool Succeeded(const HidlAnswer& answer) {
  return answer.calls == 1 && !answer.failed() && answer.status.debugMessage == "";
}
[[nodiscard]] inline bool FailedWith(const HidlAnswer& answer, const std::string& message) {
  return answer.calls == 1 && answer.failed() && answer.status.debugMessage == message;
}

class ThermalWrapperFixture : public testing::Test {
 protected:
  using ThermalHidlWrapper = aidl::android::hardware::thermal::ThermalHidlWrapper;

  ThermalWrapperFixture() {
    thermal_.Start(simulated::ThermalPath::kAidl);
    wrapper_ = android::sp<ThermalHidlWrapper>::make(
        aidl::android::hardware::thermal::IThermal::fromBinder(
            ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance))));
  }
  ~ThermalWrapperFixture() override {
    wrapper_.clear();
    thermal_.Kill(simulated::ThermalPath::kAidl);
    EXPECT_TRUE(fake::WaitUntilDelivered());
    EXPECT_TRUE(log_.Lines().empty()) << "the wrapper logs nothing";
  }

  int Calls(services::ThermalOperation operation) { return thermal_.on(operation).calls(); }

  // The three queries of HIDL 2.0 when they succeed.
  std::vector<V2_0::Temperature> Temperatures(
      bool filter = false, V2_0::TemperatureType type = V2_0::TemperatureType::SKIN) {
    return Ask<V2_0::Temperature>(&ThermalHidlWrapper::getCurrentTemperatures, filter, type);
  }
  std::vector<V2_0::TemperatureThreshold> Thresholds(
      bool filter = false, V2_0::TemperatureType type = V2_0::TemperatureType::SKIN) {
    return Ask<V2_0::TemperatureThreshold>(&ThermalHidlWrapper::getTemperatureThresholds, filter,
                                           type);
  }
  std::vector<V2_0::CoolingDevice> Coolers(bool filter = false,
                                           V2_0::CoolingType type = V2_0::CoolingType::CPU) {
    return Ask<V2_0::CoolingDevice>(&ThermalHidlWrapper::getCurrentCoolingDevices, filter, type);
  }
  // All three fail and bring no record.
  void ExpectAllFail(bool filter, const std::string& message) {
    failure_ = &message;
    EXPECT_TRUE(Temperatures(filter).empty());
    EXPECT_TRUE(Thresholds(filter).empty());
    EXPECT_TRUE(Coolers(filter).empty());
    failure_ = nullptr;
  }

  fake::LogCapture log_;
  simulated::Thermal thermal_;
  android::sp<ThermalHidlWrapper> wrapper_;

 private:
  template <typename Record, typename Type, typename Callback>
  std::vector<Record> Ask(android::hardware::Return<void> (ThermalHidlWrapper::*query)(bool, Type,
                                                                                       Callback),
                          bool filter, Type type) {
    std::vector<Record> records(1);
    HidlAnswer answer;
    EXPECT_TRUE(((*wrapper_).*query)(filter, type, answer.Take(records)).isOk());
    EXPECT_TRUE(failure_ == nullptr ? Succeeded(answer) : FailedWith(answer, *failure_));
    EXPECT_EQ(answer.thread, std::this_thread::get_id());
    return records;
  }

  const std::string* failure_ = nullptr;  // the expected message, if any
};

}  // namespace norvik::qel
