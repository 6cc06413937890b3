// This machine's temperatures and what cools it, served as a device's thermal service.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_service.h"

namespace norvik::qel::linux_machine {

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
  explicit Thermal(services::ServiceObserver observer = nullptr, ThermalSettings settings = {});
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
  services::ThermalData data() const;
  // How many callbacks the running service holds, and how often it has read the machine; 0 while
  // none runs.
  size_t callback_count() const;
  int64_t reading_count() const;

 private:
  class Service;

  void Tell(services::ServiceEvent::Kind kind, std::string detail = {}) const;

  const services::ServiceObserver observer_;
  const ThermalSettings settings_;
  // All below change in Start() and Stop() only.
  std::shared_ptr<Service> service_;
  std::unique_ptr<fake::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_machine
