// This machine's temperatures and what cools it, served as a device's thermal service.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "devices/common/device_event.h"
#include "devices/common/thermal_service.h"
#include "standin/service_process.h"

namespace norvik::qel::linux_device {

class Watcher;

struct ThermalSettings {
  // Patterns for types of zones and cooling devices, see ThermalTypes; empty: none.
  std::string types_file = {};
  // Between two readings while somebody listens.
  std::chrono::milliseconds period = std::chrono::seconds(1);
};

// The service reports what the kernel's thermal class says. It reads it whenever somebody asks or
// the class announces something, and, as the kernel announces no temperatures, once in a period
// while a callback is registered.
//
// Threads: Start() and Stop() by the owner, one at a time, not from the observer; the rest from any
// thread in between.
class Thermal {
 public:
  // Does nothing yet. The observer hears, besides what the service has to say, of a machine without
  // a zone, of errors in the file of types, and once of every file that cannot be read or believed.
  explicit Thermal(devices::DeviceObserver observer = nullptr, ThermalSettings settings = {});
  // Stops it if nobody has.
  ~Thermal();
  Thermal(const Thermal&) = delete;
  Thermal& operator=(const Thermal&) = delete;

  // Reads the file of types, declares the instance, reads the machine and runs the service. Stops
  // the one that runs, if any.
  void Start();
  // Kills the service and takes the declaration back.
  void Stop();

  // What the service has last reported; nothing is known while none runs.
  devices::ThermalData data() const;
  // How many callbacks the running service holds, and how often it has read the machine; 0 while
  // none runs.
  size_t callback_count() const;
  int64_t reading_count() const;

 private:
  class Service;

  void Tell(devices::DeviceEvent::Kind kind, std::string detail = {}) const;

  const devices::DeviceObserver observer_;
  const ThermalSettings settings_;
  // All below change in Start() and Stop() only.
  std::shared_ptr<Service> service_;
  std::unique_ptr<standin::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_device
