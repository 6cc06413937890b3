// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What happens while the monitor runs.
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
  Value old_value;           // what the callback heard before; unknown at its first call
  Value new_value;
  std::thread::id thread;  // that the callback ran on
};

// The services that tell of themselves.
inline constexpr std::string_view kHealthService = "health";
inline constexpr std::string_view kSensorService = "sensor";
// The AIDL one, and the older one.
inline constexpr std::string_view kThermalService = "thermal";
inline constexpr std::string_view kHidlThermalService = "thermal (HIDL)";

// What the device reports to the library. Nothing stands for what it does not know.
struct BatteryReport {
  std::optional<int> level;  // percent
  std::optional<int> cycle_count;
  bool wireless_online = false;
  bool dock_online = false;
};

enum class Sensor { kProximity, kHingeAngle };

// Without values: what the sensor has read is known no more.
struct SensorReport {
  Sensor sensor;
  std::vector<std::optional<float>> values;  // of one delivery; centimetres, degrees
};

struct TemperatureReport {
  std::string type;  // "SKIN"
  std::string name;  // the device maker's
  std::optional<float> value;
  Severity severity;
};

struct TemperatureGone {
  std::string type;
  std::string name;
};

using Report =
    std::variant<std::monostate, BatteryReport, SensorReport, TemperatureReport, TemperatureGone>;

// Something that the device tells of itself; no client sees it. It comes from a recording, or from
// the services of a host, whose own events monitor/host/ translates. No type of the platform occurs
// here: a phone's monitor and the recordings do without them.
struct DeviceEvent {
  enum class Kind {
    kServiceStarted,
    kServiceDied,
    kCallbackRegistered,    // the library has linked, or enabled a sensor
    kCallbackUnregistered,  // the library has left, or disabled a sensor
    kCallRefused,
    kNotice,
    kReported,  // only recordings are interested
  };
  Kind kind;
  std::string service;
  // The call refused and the reason; the notice; the sensor, by its name for people.
  std::string detail = {};
  Report report = {};
};

struct Event {
  WallTime time;
  std::variant<ValueChange, DeviceEvent> what;
};

}  // namespace norvik::qel::monitor
