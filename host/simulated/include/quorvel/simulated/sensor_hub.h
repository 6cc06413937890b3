// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The sensors of the simulated phone and their service, controlled by tests.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/fake/platform_scripts.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/sensor_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::simulated {

// Only one may exist at a time: the sensor functions of a process reach one service.
//
// Threads: any.
class SensorHub {
 public:
  // There are no sensors, and the service is not running. Drops a wake that an earlier client has
  // left in the looper.
  explicit SensorHub(services::ServiceObserver observer = nullptr);
  // Ends the service and waits until its death notifications have been delivered. No client may use
  // the service then: its manager, sensors and queues are freed.
  ~SensorHub();
  SensorHub(const SensorHub&) = delete;
  SensorHub& operator=(const SensorHub&) = delete;

  // Adds a sensor. Call it before Start(). The first sensor of a type is the default.
  void Add(int32_t type, const std::string& name, int32_t min_delay_us = 0);

  // Starts the service. Has no effect if it is already running.
  void Start();

  // Reports readings, one or a batch. Before Start() they become the latest readings, which a
  // sensor reports when it is enabled.
  void Report(int32_t type, float value) { Report({{.type = type, .value = value}}); }
  void Report(const std::vector<services::SensorReading>& readings);
  // See services::SensorService.
  void Forget(int32_t type);
  // Sends arbitrary events to every queue. Has no effect before Start().
  void SendUnasked(const std::vector<ASensorEvent>& events) {
    if (service()) service()->SendUnasked(events);
  }

  // See services::SensorService. 0 or empty before Start().
  size_t queue_count() const { return service() ? service()->queue_count() : 0; }
  int listeners(int32_t type) const { return service() ? service()->listeners(type) : 0; }
  std::optional<services::SensorRequest> last_request(int32_t type) const {
    return service() ? service()->last_request(type) : std::nullopt;
  }

  // The script of a function: outcomes of the next calls, count of calls.
  fake::Script& on(fake::SensorFunction function) { return platform_scripts_.on(function); }
  fake::Script& on(fake::BinderFunction function) { return platform_scripts_.on(function); }

 private:
  // Null before Start().
  std::shared_ptr<services::SensorService> service() const QUORVEL_EXCLUDES(lock_);

  const services::EventSender events_;
  const fake::PlatformScripts platform_scripts_;
  mutable std::mutex lock_;
  std::vector<fake::SensorDescription> sensors_ QUORVEL_GUARDED_BY(lock_);
  // By type, for Start().
  std::map<int32_t, float> latest_ QUORVEL_GUARDED_BY(lock_);
  std::unique_ptr<fake::ServiceProcess> process_ QUORVEL_GUARDED_BY(lock_);
  std::shared_ptr<services::SensorService> service_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::simulated
