// An AIDL thermal service of the simulated phone, seen through the HIDL wrapper.
#pragma once

#include <aidl/android/hardware/thermal/IThermal.h>
#include <android/binder_manager.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "devices/simulated/thermal.h"
#include "standin/deliveries.h"
#include "standin/log_capture.h"
#include "tests/support/thermal_doubles.h"
#include "tests/support/waiting.h"
#include "thermal_hidl_wrapper/thermal_hidl_wrapper.h"

namespace norvik::qel {

inline std::shared_ptr<aidl::android::hardware::thermal::IThermal> LookUpAidlThermal() {
  return aidl::android::hardware::thermal::IThermal::fromBinder(
      ndk::SpAIBinder(AServiceManager_checkService(devices::kThermalInstance)));
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
    EXPECT_TRUE(standin::WaitUntilDelivered());
    EXPECT_TRUE(log_.Lines().empty()) << "the wrapper logs nothing";
  }

  int Calls(devices::ThermalOperation operation) { return thermal_.on(operation).calls(); }

  standin::LogCapture log_;
  simulated::Thermal thermal_;
  android::sp<ThermalHidlWrapper> wrapper_;
};

// What was answered, for a matcher that says what should have been.
inline bool Succeeded(const HidlAnswer& answer) {
  return answer.calls == 1 && !answer.failed() && answer.status.debugMessage == "";
}
inline bool FailedWith(const HidlAnswer& answer, const std::string& message) {
  return answer.calls == 1 && answer.failed() && answer.status.debugMessage == message;
}

}  // namespace norvik::qel
