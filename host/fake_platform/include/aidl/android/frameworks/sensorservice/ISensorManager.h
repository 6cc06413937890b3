// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: the sensor service, version 1. The system
// registers it some time after boot. Clients use <android/sensor.h>, which calls the service, and
// need this header only for the service's name.
#pragma once

#include <android/binder_interface_utils.h>

#include <cstdint>
#include <memory>

namespace aidl::android::frameworks::sensorservice {

class ISensorManager : public ndk::ICInterface {
 public:
  static inline const char* descriptor = "android.frameworks.sensorservice.ISensorManager";
  static inline const int32_t version = 1;

  static std::shared_ptr<ISensorManager> fromBinder(const ndk::SpAIBinder& binder);
};

}  // namespace aidl::android::frameworks::sensorservice
