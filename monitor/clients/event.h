// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The events that the monitor shows and records.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <thread>
#include <variant>
#include <vector>

#include "clients/value.h"
#include "clients/wall_clock.h"

namespace norvik::qel::monitor {

// A client's callback was called.
struct ValueChange {
  const Property* property;  // lives as long as the client
  Value old_value;           // of the previous call; unknown at the first call
  Value new_value;
  std::thread::id thread;  // on which the callback ran
};

// The services whose events are shown.
inline constexpr std::string_view kHealthService = "health";
inline constexpr std::string_view kSensorService = "sensor";
// The AIDL interface, and the older HIDL one.
inline constexpr std::string_view kThermalService = "thermal";
inline constexpr std::string_view kHidlThermalService = "thermal (HIDL)";

// A report of the health service. nullopt: the device does not know the value.
struct BatteryReport {
  std::optional<int> level;  // percent
  std::optional<int> cycle_count;
  bool wireless_online = false;
  bool dock_online = false;
  bool operator==(const BatteryReport&) const = default;
};

enum class Sensor { kProximity, kHingeAngle };

// Without values: the sensor's last reading is no longer known.
struct SensorReport {
  Sensor sensor;
  std::vector<std::optional<float>> values;  // of one delivery, in centimetres or degrees
};

struct TemperatureReport {
  std::string type;  // "SKIN"
  std::string name;  // chosen by the device maker
  std::optional<float> value;
  Severity severity;
};

// "SKIN:skin"
inline std::string KeyOf(const TemperatureReport& report) {
  return report.type + ":" + report.name;
}

struct TemperatureGone {
  std::string type;
  std::string name;
};

using Report =
    std::variant<std::monostate, BatteryReport, SensorReport, TemperatureReport, TemperatureGone>;

// An event of the device, which no client receives. Its source is a recording, or the services of a
// host, whose events monitor/host/ converts. It contains no platform types: recordings and the
// phone's monitor do not need them.
struct DeviceEvent {
  enum class Kind {
    kServiceStarted,
    kServiceDied,
    kCallbackRegistered,    // the library registered, or enabled a sensor
    kCallbackUnregistered,  // the library unregistered, or disabled a sensor
    kCallRefused,
    kNotice,
    kReported,  // used by recordings only
  };
  Kind kind;
  std::string service;
  // The refused call and the reason, the text of the notice, or the sensor's name for people.
  std::string detail = {};
  Report report = {};
};

struct Event {
  WallTime time;
  std::variant<ValueChange, DeviceEvent> what;
};

}  // namespace norvik::qel::monitor
