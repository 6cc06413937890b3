// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A sensor service with the proximity and hinge-angle sensors of this machine.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/services/sensor_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class RunningService;

struct SensorSettings {
  // The time between two measurements of an enabled sensor.
  std::chrono::milliseconds period = std::chrono::milliseconds(100);
};

// The source of a sensor.
struct SensorSource {
  enum class Reading {
    kCentimetres,
    kNearOrFar,      // no unit: 0 or the maximum
    kPresentOrAway,  // the same, for the presence of a person
    kDegrees,
  };
  int32_t type = 0;         // ASENSOR_TYPE_...
  std::string name = {};    // of the chip or the driver
  std::string device = {};  // "iio:device0"
  Reading reading = Reading::kCentimetres;
  std::optional<float> maximum = {};  // empty for a distance: unknown
};

// The service has at most one sensor of each type: the first one of the kernel's industrial-I/O
// subsystem. A sensor is measured when it is enabled, then once per period while it stays enabled.
// It reports changed values.
//
// A sensor stays in the service's list when its device is removed. It reports again when another
// device of its type appears. A sensor that appears while the service runs is available to clients
// that have not asked for its type before.
//
// Threads: the owner calls Start() and Stop(), one at a time and not from the observer. All other
// functions may be called from any thread in between.
class Sensors {
 public:
  // Does nothing yet. The observer receives the events of the service. It is also notified of each
  // type without a sensor, and once for each file that is unreadable or invalid.
  explicit Sensors(services::ServiceObserver observer = nullptr, SensorSettings settings = {});
  // Stops the service if it is running.
  ~Sensors();
  Sensors(const Sensors&) = delete;
  Sensors& operator=(const Sensors&) = delete;

  // Looks for the sensors and starts the service. Stops a running one first.
  void Start();
  // Kills the service and waits until its death notifications have been delivered. No client may
  // use the service then: its manager, sensors and queues are freed.
  void Stop();

  // The present sensors, at most one of each type. Empty if the service is not running.
  std::vector<SensorSource> sources() const;
  // The number of queues on which the sensor of a type is enabled, and the number of measurements
  // of all sensors. 0 if the service is not running.
  int listeners(int32_t type) const;
  int64_t measurement_count() const;

 private:
  class Service;

  const services::EventSender events_;
  const SensorSettings settings_;
  // The members below change only in Start() and Stop().
  std::shared_ptr<Service> service_;
  std::unique_ptr<RunningService> running_;
};

}  // namespace norvik::qel::linux_machine
