// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// An AIDL thermal service of the simulated phone, seen through the HIDL wrapper.
#pragma once

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "quorvel/fake/deliveries.h"
#include "quorvel/fake/log_capture.h"
#include "quorvel/simulated/thermal.h"
#include "thermal_doubles.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"
#include "waiting.h"

namespace norvik::qel {

inline std::shared_ptr<aidl::android::hardware::thermal::IThermal> LookUpAidlThermal() {
  return aidl::android::hardware::thermal::IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(services::kThermalInstance)));
}

class ThermalWrapperFixture : public testing::Test {
 protected:
  using ThermalHidlWrapper = aidl::android::hardware::thermal::ThermalHidlWrapper;

  ThermalWrapperFixture() {
    thermal_.Start(simulated::ThermalPath::kAidl);
    wrapper_ = android::sp<ThermalHidlWrapper>::make(LookUpAidlThermal());
  }
  ~ThermalWrapperFixture() override {
    wrapper_.clear();
    thermal_.Kill(simulated::ThermalPath::kAidl);
    EXPECT_TRUE(fake::WaitUntilDelivered());
    EXPECT_TRUE(log_.Lines().empty()) << "the wrapper logs nothing";
  }

  int Calls(services::ThermalOperation operation) { return thermal_.on(operation).calls(); }

  fake::LogCapture log_;
  simulated::Thermal thermal_;
  android::sp<ThermalHidlWrapper> wrapper_;
};

// What was answered, for a matcher that says what should have been.
[[nodiscard]] inline bool Succeeded(const HidlAnswer& answer) {
  return answer.calls == 1 && !answer.failed() && answer.status.debugMessage == "";
}
[[nodiscard]] inline bool FailedWith(const HidlAnswer& answer, const std::string& message) {
  return answer.calls == 1 && answer.failed() && answer.status.debugMessage == message;
}

}  // namespace norvik::qel
