// What happens while the monitor runs.
#pragma once

#include <string>
#include <thread>
#include <variant>

#include "tools/value.h"
#include "tools/wall_clock.h"

namespace norvik::qel::tool {

// A client's callback was called.
struct ValueChange {
  const Property* property;  // lives as long as the program
  Value old_value;           // what the callback heard before; unknown at its first call
  Value new_value;
  std::thread::id thread;  // that the callback ran on
};

// Something that the device tells of itself; no client sees it.
struct DeviceEvent {
  enum class Kind {
    kServiceStarted,
    kServiceDied,
    kCallbackRegistered,    // the library has linked
    kCallbackUnregistered,  // the library has left
    kCallRefused,
    kNotice,
  };
  Kind kind;
  std::string service;      // "health"
  std::string detail = {};  // the call refused and the reason; the notice
};

struct Event {
  WallTime time;
  std::variant<ValueChange, DeviceEvent> what;
};

}  // namespace norvik::qel::tool
