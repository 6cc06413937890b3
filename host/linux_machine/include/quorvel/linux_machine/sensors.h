// This machine's proximity and hinge-angle sensors, served as a device's sensor service.
#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/sensor_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class Watcher;

struct SensorSettings {
  // Between two measurements while a sensor is enabled.
  std::chrono::milliseconds period = std::chrono::milliseconds(100);
};

// What a sensor of the service is made of.
struct SensorSource {
  enum class Reading {
    kCentimetres,
    kNearOrFar,      // 0 or the maximum, of a sensor without a unit
    kPresentOrAway,  // the same, for a person
    kDegrees,
  };
  int32_t type = 0;         // ASENSOR_TYPE_...
  std::string name = {};    // the chip's or the driver's
  std::string device = {};  // "iio:device0"
  Reading reading = Reading::kCentimetres;
  std::optional<float> maximum = {};  // of a distance it is not known
};

// The service has one sensor of each type at most: the first that the kernel's industrial-I/O
// subsystem has. It is measured when it is enabled and once in a period while it stays so, and
// reported when it has changed.
//
// A sensor stays in the service's list once it has been there. When its device goes it reports no
// more, until there is another device of the type. One that comes while the service runs can be
// had by those who have not asked for its type before.
//
// Threads: Start() and Stop() by the owner, one at a time, not from the observer; the rest from any
// thread in between.
class Sensors {
 public:
  // Does nothing yet. The observer hears, besides what the service has to say, of types that the
  // machine has no sensor of, and once of every file that cannot be read or believed.
  explicit Sensors(services::ServiceObserver observer = nullptr, SensorSettings settings = {});
  // Stops it if nobody has.
  ~Sensors();
  Sensors(const Sensors&) = delete;
  Sensors& operator=(const Sensors&) = delete;

  // Looks for the sensors and runs the service. Stops the one that runs, if any.
  void Start();
  // Kills the service. No client may be using it any more: its manager, sensors and queues go with
  // it. Waits until the program has heard of it.
  void Stop();

  // The sensors that there are now, at most one of each type; none while no service runs.
  std::vector<SensorSource> sources() const;
  // On how many queues the sensor of a type is enabled, and how often any sensor has been measured;
  // 0 while no service runs.
  int listeners(int32_t type) const;
  int64_t measurement_count() const;

 private:
  class Service;

  void Tell(services::ServiceEvent::Kind kind, std::string detail = {}) const;

  const services::ServiceObserver observer_;
  const SensorSettings settings_;
  // All below change in Start() and Stop() only.
  std::shared_ptr<Service> service_;
  std::unique_ptr<fake::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_machine
