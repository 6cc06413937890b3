// This machine's temperatures and what cools it, served as a device's thermal service.
#pragma once

#include <aidl/android/hardware/thermal/TemperatureType.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_service.h"

namespace norvik::qel::linux_machine {

class Watcher;

struct ThermalSettings {
  // Patterns for types of zones and cooling devices, see ThermalTypes; empty: none.
  std::string types_file = {};
  // Between two readings while somebody listens.
  std::chrono::milliseconds period = std::chrono::seconds(2);
};

// A temperature that this machine has, whether or not it can be read.
struct TemperatureSource {
  std::string name = {};    // as clients name it
  std::string device = {};  // the kernel's: "thermal_zone3", "hwmon2:temp1"
  aidl::android::hardware::thermal::TemperatureType type =
      aidl::android::hardware::thermal::TemperatureType::UNKNOWN;
  bool is_readable = false;
  float degrees_celsius = 0;  // NaN for one that is not readable
};

// The service reports the kernel's thermal zones and hwmon temperatures. It reads them when a
// client asks or the kernel announces something, and, as the kernel announces no temperatures, once
// in a period while a callback is registered. A temperature that has not been read yet is not
// reported.
//
// Threads: Start() and Stop() by the owner, one at a time, not from the observer; the rest from any
// thread in between.
class Thermal {
 public:
  // Does nothing yet. The observer hears, besides what the service has to say, of a machine without
  // a temperature, of errors in the file of types, and once of every file that cannot be read or
  // believed.
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
  // All temperatures as last read, those included that cannot be read; none while none runs.
  std::vector<TemperatureSource> sources() const;
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
