// What happens while the monitor runs.
#pragma once

#include <string>
#include <string_view>
#include <thread>
#include <variant>

#include "tools/value.h"
#include "tools/wall_clock.h"

namespace norvik::qel::tool {

// A client's callback was called.
struct ValueChange {
  const Property* property;  // outlives the session
  Value old_value;           // what the callback heard before; unknown at its first call
  Value new_value;
  std::thread::id thread;  // that the callback ran on
};

// The services that tell of themselves.
inline constexpr std::string_view kHealthService = "health";
inline constexpr std::string_view kSensorService = "sensor";
// The AIDL one. The other one's name is longer: "thermal (HIDL)".
inline constexpr std::string_view kThermalService = "thermal";

// Something that the device tells of itself; no client sees it.
struct DeviceEvent {
  enum class Kind {
    kServiceStarted,
    kServiceDied,
    kCallbackRegistered,    // the library has linked, or enabled a sensor
    kCallbackUnregistered,  // the library has left, or disabled a sensor
    kCallRefused,
    kNotice,
  };
  Kind kind;
  std::string service;
  // The call refused and the reason; the notice; the sensor, by its name for people.
  std::string detail = {};
};

struct Event {
  WallTime time;
  std::variant<ValueChange, DeviceEvent> what;
};

}  // namespace norvik::qel::tool
