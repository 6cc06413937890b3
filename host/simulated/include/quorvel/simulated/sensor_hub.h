// The simulated phone's sensors and the service that serves them, under remote control.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "quorvel/fake/script.h"
#include "quorvel/fake/sensor_functions.h"
#include "quorvel/fake/service_process.h"
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/sensor_service.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::simulated {

// A phone has one: two at a time would share their scripts, which belong to the sensor functions.
//
// Threads: any.
class SensorHub {
 public:
  // Without sensors, and the service does not run yet. Scripts and counts begin anew.
  explicit SensorHub(services::ServiceObserver observer = nullptr);
  // Ends the service. No client may be using it any more: its manager, sensors and queues go with
  // it. Waits until the program has heard of it.
  ~SensorHub();
  SensorHub(const SensorHub&) = delete;
  SensorHub& operator=(const SensorHub&) = delete;

  // Gives the phone a sensor, before the service starts. The first of a type is the default one.
  void Add(int32_t type, const std::string& name, int32_t min_delay_us = 0);

  // The service comes up. Once; nothing happens afterwards.
  void Start();

  // New readings, one or a batch. Before the start they are kept as what a sensor reads when it is
  // enabled.
  void Report(int32_t type, float value) { Report({{.type = type, .value = value}}); }
  void Report(const std::vector<services::SensorReading>& readings);
  // As in services::SensorService.
  void Forget(int32_t type);
  // Events that nobody asked for, to every queue. Only while the service runs.
  void SendUnasked(const std::vector<ASensorEvent>& events);

  // As in services::SensorService; 0 or nothing before the start.
  size_t queue_count() const;
  int listeners(int32_t type) const;
  std::optional<services::SensorRequest> last_request(int32_t type) const;

  // What the next calls of a function do, and how often it has been called.
  fake::Script& on(fake::SensorFunction function) { return fake::ScriptOf(function); }

 private:
  std::shared_ptr<services::SensorService> service() const QUORVEL_EXCLUDES(lock_);

  const services::ServiceObserver observer_;
  mutable std::mutex lock_;
  std::vector<fake::SensorDescription> sensors_ QUORVEL_GUARDED_BY(lock_);
  // By type, for a service that starts.
  std::map<int32_t, float> latest_ QUORVEL_GUARDED_BY(lock_);
  std::unique_ptr<fake::ServiceProcess> process_ QUORVEL_GUARDED_BY(lock_);
  std::shared_ptr<services::SensorService> service_ QUORVEL_GUARDED_BY(lock_);
};

}  // namespace norvik::qel::simulated
