// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A thermal service with the temperatures and the cooling devices of this machine.
#pragma once

#include <aidl/android/hardware/thermal/TemperatureType.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

#include "quorvel/services/service_event.h"
#include "quorvel/services/thermal_service.h"

namespace norvik::qel::linux_machine {

class RunningService;

struct ThermalSettings {
  // A file with patterns for types of zones and cooling devices, see ThermalTypes. Empty: none.
  std::string types_file = {};
  // The time between two readings while a callback is registered.
  std::chrono::milliseconds period = std::chrono::seconds(2);
};

// A temperature of this machine, readable or not.
struct TemperatureSource {
  std::string name = {};    // the name for clients
  std::string device = {};  // "thermal_zone3", "hwmon2:temp1"
  aidl::android::hardware::thermal::TemperatureType type =
      aidl::android::hardware::thermal::TemperatureType::UNKNOWN;
  bool is_readable = false;
  float degrees_celsius = 0;  // NaN if unreadable
};

// The service reads the kernel's thermal and hwmon classes at every event of the classes, and
// whenever a client asks for a value or registers. It reports changes. The kernel does not announce
// temperatures, so while a callback is registered the service also reads once per period. A
// temperature that has never been read successfully is not reported.
//
// Threads: the owner calls Start() and Stop(), one at a time and not from the observer. All other
// functions may be called from any thread in between.
class Thermal {
 public:
  // Does nothing yet. The observer receives the events of the service. It is also notified if the
  // machine has no temperature sensor, of errors in the file of types, and once for each file that
  // is unreadable or invalid.
  explicit Thermal(services::ServiceObserver observer = nullptr, ThermalSettings settings = {});
  // Stops the service if it is running.
  ~Thermal();
  Thermal(const Thermal&) = delete;
  Thermal& operator=(const Thermal&) = delete;

  // Reads the file of types, declares the instance, reads the devices and starts the service. Stops
  // a running one first.
  void Start();
  // Kills the service and removes the declaration.
  void Stop();

  // The last report. Empty if the service is not running.
  services::ThermalData data() const;
  // All temperatures of the last reading, including unreadable ones. Empty if the service is not
  // running.
  std::vector<TemperatureSource> sources() const;

 private:
  class Service;

  const services::EventSender events_;
  const ThermalSettings settings_;
  // The members below change only in Start() and Stop().
  std::shared_ptr<Service> service_;
  std::unique_ptr<RunningService> running_;
};

}  // namespace norvik::qel::linux_machine
