// A health service with the battery and the chargers of this machine.
#pragma once

#include <cstddef>
#include <memory>
#include <string>

#include "quorvel/fake/service_process.h"
#include "quorvel/services/health_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::linux_machine {

class Watcher;

// The service reads the kernel's power-supply class at every event of the class, and whenever a
// client asks for a value or registers. It reports changes. An unknown level or cycle count is -1.
//
// Threads: the owner calls Start() and Stop(), one at a time and not from the observer. All other
// functions may be called from any thread in between.
class Health {
 public:
  using HealthInfo = aidl::android::hardware::health::HealthInfo;

  // Does nothing yet. The observer receives the events of the service. It is also notified if the
  // machine has no battery, and once for each file that is unreadable or invalid.
  explicit Health(services::ServiceObserver observer = nullptr);
  // Stops the service if it is running.
  ~Health();
  Health(const Health&) = delete;
  Health& operator=(const Health&) = delete;

  // Declares the instance, reads the devices and starts the service. Stops a running one first.
  void Start();
  // Kills the service and removes the declaration.
  void Stop();

  // The last report. If the service is not running, all values are unknown.
  HealthInfo info() const;
  // The number of callbacks registered with the running service. 0 if it is not running.
  size_t callback_count() const;

 private:
  class Service;

  void Tell(services::ServiceEvent::Kind kind, std::string detail = {}) const;

  const services::ServiceObserver observer_;
  // The members below change only in Start() and Stop().
  std::shared_ptr<Service> service_;
  std::unique_ptr<fake::ServiceProcess> process_;
  std::unique_ptr<Watcher> watcher_;
};

}  // namespace norvik::qel::linux_machine
