// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Callbacks that tests pass to thermal services.
#pragma once

#include <aidl/android/hardware/thermal/BnThermalChangedCallback.h>
#include <android/hardware/thermal/2.0/IThermal.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "process_state.h"
#include "waiting.h"

namespace norvik::qel {

// A notification and the name of the thread that delivered it.
template <typename Temperature>
struct Heard {
  Temperature temperature;
  std::string thread;
};

class AidlThermalCallback : public aidl::android::hardware::thermal::BnThermalChangedCallback {
 public:
  using Temperature = aidl::android::hardware::thermal::Temperature;
  ndk::ScopedAStatus notifyThrottling(const Temperature& temperature) override {
    heard.Put({temperature, ThreadName()});
    return ndk::ScopedAStatus::ok();
  }
  Seen<Heard<Temperature>> heard;
};

class HidlThermalCallback : public android::hardware::thermal::V2_0::IThermalChangedCallback {
 public:
  using Temperature = android::hardware::thermal::V2_0::Temperature;
  android::hardware::Return<void> notifyThrottling(const Temperature& temperature) override {
    heard.Put({temperature, ThreadName()});
    return android::hardware::Void();
  }
  Seen<Heard<Temperature>> heard;
};

// The answer of a HIDL call. Take() makes the result callback, which keeps its arguments here.
struct HidlAnswer {
  android::hardware::thermal::V1_0::ThermalStatus status{};
  int calls = 0;
  std::thread::id thread;

  auto Take() {
    return [this](const auto& given) { Keep(given); };
  }
  template <typename T>
  auto Take(std::vector<T>& values) {
    return [this, &values](const auto& given, const auto& given_values) {
      Keep(given);
      values = given_values;
    };
  }
  bool failed() const {
    return status.code == android::hardware::thermal::V1_0::ThermalStatusCode::FAILURE;
  }

 private:
  void Keep(const android::hardware::thermal::V1_0::ThermalStatus& given) {
    status = given;
    ++calls;
    thread = std::this_thread::get_id();
  }
};

}  // namespace norvik::qel
