// The sensor service of a device, over whatever has the sensors.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "quorvel/fake/sensor_service_interface.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::services {

inline constexpr char kSensorInstance[] = "android.frameworks.sensorservice.ISensorManager/default";

// Centimetres for proximity, degrees for the hinge angle.
struct SensorReading {
  int32_t type;  // ASENSOR_TYPE_...
  float value;
};

// How a sensor has been enabled on a queue.
struct SensorRequest {
  int32_t period_us;
  int64_t max_latency_us;
};

// Each queue gets the events of the sensors that are enabled on it. A sensor that is enabled on a
// queue reports its latest reading there at once, if it has one, as sensors that report on change
// do.
//
// Threads: any. Locks: lock_ is held while events are put on their way, so that they reach every
// queue in the order in which they were reported; nothing waits for a receiver there. The observer
// is called without it.
class SensorService : public fake::BnSensorService {
 public:
  explicit SensorService(std::vector<fake::SensorDescription> sensors,
                         ServiceObserver observer = nullptr);

  // One more sensor, which those hear of who ask from now on.
  void Add(fake::SensorDescription sensor);
  // The readings of one moment, in one delivery to each queue. Those of a type that the device
  // does not have go nowhere.
  void Report(const std::vector<SensorReading>& readings);
  // The sensor has no latest reading any more.
  void Forget(int32_t type);
  // Sends the events to every queue, whatever they are, as a service gone wrong might.
  void SendUnasked(const std::vector<ASensorEvent>& events);

  size_t queue_count() const;
  // On how many queues the sensor is enabled, and how it was enabled last.
  int listeners(int32_t type) const;
  std::optional<SensorRequest> last_request(int32_t type) const;

  ndk::ScopedAStatus getSensorList(std::vector<fake::SensorDescription>* out) override;
  ndk::ScopedAStatus getDefaultSensor(int32_t type,
                                      std::optional<fake::SensorDescription>* out) override;
  ndk::ScopedAStatus createEventQueue(const std::shared_ptr<fake::ISensorEvents>& events,
                                      int64_t* out_queue) override;
  ndk::ScopedAStatus destroyEventQueue(int64_t queue) override;
  ndk::ScopedAStatus enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                  int64_t max_latency_us) override;
  ndk::ScopedAStatus disableSensor(int64_t queue, int32_t handle) override;

 private:
  struct Queue {
    std::shared_ptr<fake::ISensorEvents> events;
    std::map<int32_t, SensorRequest> enabled;  // by handle
  };

  // Null when there is none; never dangling.
  const fake::SensorDescription* FindLocked(int32_t handle) const;
  // The one that stands for its type.
  const fake::SensorDescription* FindDefaultLocked(int32_t type) const;
  void Tell(ServiceEvent::Kind kind, const fake::SensorDescription& sensor) const;
  void TellReport(SensorReport report) const;

  const ServiceObserver observer_;
  mutable std::mutex lock_;
  std::deque<fake::SensorDescription> sensors_;  // only grows: pointers to them stay good
  std::map<int64_t, Queue> queues_;
  int64_t next_queue_ = 1;
  std::map<int32_t, ASensorEvent> latest_;          // by handle
  std::map<int32_t, SensorRequest> last_requests_;  // by handle
};

}  // namespace norvik::qel::services
