// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Events of a service for its observer, such as the monitor.
#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <aidl/android/hardware/thermal/Temperature.h>

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace norvik::qel::services {

// The values of one sensor in one delivery, oldest first. Empty: the latest reading was dropped.
struct SensorReport {
  int32_t type;  // ASENSOR_TYPE_...
  std::vector<float> values;
};

struct TemperatureGone {
  aidl::android::hardware::thermal::TemperatureType type;
  std::string name;
};

// The data of a report. The observer receives it even if no callback is registered. Of temperatures
// it receives every new or changed one; callbacks receive only changed severities.
using Report =
    std::variant<std::monostate, aidl::android::hardware::health::HealthInfo, SensorReport,
                 aidl::android::hardware::thermal::Temperature, TemperatureGone>;

struct ServiceEvent {
  enum class Kind {
    kStarted,       // the service has started
    kDied,          // the service has died
    kRegistered,    // a client has registered a callback
    kUnregistered,  // a client has unregistered a callback
    kRefused,       // the service has refused a call
    kNotice,        // a message about the device for the user
    kReported,      // the service has reported `report`
  };
  Kind kind;
  std::string service;      // "health", "thermal", "thermal (HIDL)"
  std::string detail = {};  // kRefused: operation and reason; kNotice: the message
  Report report = {};
};

// Called on threads of the services, without locks of the service. Exception: kReported is sent
// under the locks that keep reports in order. The observer must not call the service then.
using ServiceObserver = std::function<void(const ServiceEvent&)>;

}  // namespace norvik::qel::services
