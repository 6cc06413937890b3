// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Events of a service for its observer, such as the monitor.
#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <aidl/android/hardware/thermal/Temperature.h>

#include <cstdint>
#include <functional>
#include <string>
#include <string_view>
#include <utility>
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

// Sends the events of one service to its observer, if it has one.
class EventSender {
 public:
  EventSender(std::string service, ServiceObserver observer)
      : service_(std::move(service)), observer_(std::move(observer)) {}

  const std::string& service() const { return service_; }
  const ServiceObserver& observer() const { return observer_; }

  void Send(ServiceEvent::Kind kind, std::string detail = {}) const {
    if (observer_) observer_({.kind = kind, .service = service_, .detail = std::move(detail)});
  }
  void SendRefusal(std::string_view operation, std::string_view reason) const {
    Send(ServiceEvent::Kind::kRefused, std::string(operation).append(": ").append(reason));
  }
  void SendReport(Report report) const {
    if (!observer_) return;
    observer_(
        {.kind = ServiceEvent::Kind::kReported, .service = service_, .report = std::move(report)});
  }

 private:
  const std::string service_;
  const ServiceObserver observer_;
};

}  // namespace norvik::qel::services
