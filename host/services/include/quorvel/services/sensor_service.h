// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A sensor service as a device maker would write it. The caller provides sensors and readings.
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
#include "quorvel/fake/thread_annotations.h"
#include "quorvel/services/service_event.h"

namespace norvik::qel::services {

inline constexpr char kSensorInstance[] = "android.frameworks.sensorservice.ISensorManager/default";

// Centimetres for proximity, degrees for the hinge angle.
struct SensorReading {
  int32_t type;  // ASENSOR_TYPE_...
  float value;
};

// The parameters with which a sensor was enabled on a queue.
struct SensorRequest {
  int32_t period_us;
  int64_t max_latency_us;
};

// Each queue receives the events of the sensors that are enabled on it. Enabling a sensor sends its
// latest reading to the queue at once, if there is one, as on-change sensors do.
//
// Threads: any. Locks: lock_ is held while events are sent, so that every queue receives them in
// order. Sending does not wait for the receiver.
class SensorService : public fake::BnSensorService {
 public:
  explicit SensorService(std::vector<fake::SensorDescription> sensors,
                         ServiceObserver observer = nullptr);

  // Adds a sensor. Clients that ask from now on see it.
  void Add(fake::SensorDescription sensor) QUORVEL_EXCLUDES(lock_);
  // Reports simultaneous readings, in one delivery to each queue. Readings of a type without a
  // sensor are ignored.
  void Report(const std::vector<SensorReading>& readings) QUORVEL_EXCLUDES(lock_);
  // Drops the latest reading of the sensor.
  void Forget(int32_t type) QUORVEL_EXCLUDES(lock_);
  // Sends arbitrary events to every queue, as a faulty service might.
  void SendUnasked(const std::vector<ASensorEvent>& events);

  size_t queue_count() const QUORVEL_EXCLUDES(lock_);
  // The number of queues on which the sensor is enabled, and the parameters of the last enabling.
  int listeners(int32_t type) const QUORVEL_EXCLUDES(lock_);
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

  // The first sensor with that handle or type. Null if there is none. Stays valid.
  const fake::SensorDescription* FindLocked(int32_t fake::SensorDescription::*key,
                                            int32_t value) const QUORVEL_REQUIRES(lock_);

  const EventSender events_;
  mutable std::mutex lock_;
  // Only grows: pointers to elements stay valid.
  std::deque<fake::SensorDescription> sensors_ QUORVEL_GUARDED_BY(lock_);
  std::map<int64_t, Queue> queues_ QUORVEL_GUARDED_BY(lock_);
  int64_t next_queue_ QUORVEL_GUARDED_BY(lock_) = 1;
  std::map<int32_t, ASensorEvent> latest_ QUORVEL_GUARDED_BY(lock_);          // by handle
  std::map<int32_t, SensorRequest> last_requests_ QUORVEL_GUARDED_BY(lock_);  // by handle
};

}  // namespace norvik::qel::services
