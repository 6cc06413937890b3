// What a device has to say of itself.
#pragma once

#include <aidl/android/hardware/health/HealthInfo.h>
#include <aidl/android/hardware/thermal/Temperature.h>

#include <cstdint>
#include <functional>
#include <string>
#include <variant>
#include <vector>

namespace norvik::qel::services {

// What one delivery holds of a sensor, the oldest first. Without values: what the sensor has read
// is known no more.
struct SensorReport {
  int32_t type;  // ASENSOR_TYPE_...
  std::vector<float> values;
};

struct TemperatureGone {
  aidl::android::hardware::thermal::TemperatureType type;
  std::string name;
};

// What a service reports, whether or not it has a callback to tell. Of the temperatures it is each
// one that is new or has changed in any way, also where callbacks hear of the severity alone.
using Report =
    std::variant<std::monostate, aidl::android::hardware::health::HealthInfo, SensorReport,
                 aidl::android::hardware::thermal::Temperature, TemperatureGone>;

struct ServiceEvent {
  enum class Kind {
    kStarted,       // a service is up
    kDied,          // a service is gone
    kRegistered,    // somebody has registered a callback with it
    kUnregistered,  // somebody has withdrawn one
    kRefused,       // it has refused a call
    kNotice,        // something that people should know of the device
    kReported,      // it reports what follows
  };
  Kind kind;
  std::string service;      // "health", "thermal", "thermal (HIDL)"
  std::string detail = {};  // the operation refused and the reason; the notice
  Report report = {};
};

// Called on the device's threads, with no lock of the device held; but reports are told under the
// locks that keep them in order, so that an observer must not call the device when it hears one.
using ServiceObserver = std::function<void(const ServiceEvent&)>;

}  // namespace norvik::qel::services
