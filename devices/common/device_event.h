// What a device has to say of itself besides what its services report.
#pragma once

#include <functional>
#include <string>

namespace norvik::qel::devices {

struct DeviceEvent {
  enum class Kind {
    kStarted,       // a service is up
    kDied,          // a service is gone
    kRegistered,    // somebody has registered a callback with it
    kUnregistered,  // somebody has withdrawn one
    kRefused,       // it has refused a call
    kNotice,        // something that people should know of the device
  };
  Kind kind;
  std::string service;      // "health", "thermal", "thermal (HIDL)"
  std::string detail = {};  // the operation refused and the reason; the notice
};

// Called on the device's threads, with no lock of the device held.
using DeviceObserver = std::function<void(const DeviceEvent&)>;

}  // namespace norvik::qel::devices
