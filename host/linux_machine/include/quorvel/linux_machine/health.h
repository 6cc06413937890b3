// This machine's battery and chargers, served as a device's health service.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class Watcher;

// The service reports what the kernel's power-supply class says, at every event of the class, and
// reads it anew whenever somebody asks. The level and the cycle count are -1 while unknown.
//
// Threads: Start() and Stop() by the owner, one at a time, not from the observer; the rest from any
// thread in between.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Does nothing yet. The observer hears, besides what the service has to say, of a machine without
  // a battery and once of every file that cannot be read or believed.
  explicit Health(services::ServiceObserver observer = nullptr);
  // Stops it if nobody has.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  // Declares the instance, reads the machine and runs the service. Stops the one that runs, if any.
  void Start();
  // Kills the service and takes the declaration back.
  void Stop();

  // What the service has last reported; nothing is known while none runs.
  HealthInfo info() const;
  // How many callbacks the running service holds; 0 while none runs.
  size_t callback_count() const;

 private:
  class Service;

  void Tell(services::ServiceEvent::Kind kind, std::string detail = {}) const;

  const services::ServiceObserver observer_;
  // All below change in Start() and Stop() only.
  std::shared_ptr<Service> service_;
  std::unique_ptr<fake::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_machine
