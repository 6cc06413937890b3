// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The objects behind the pointers of <android/sensor.h>.
#pragma once

#include <android/sensor.h>

#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "looper.h"
#include "quorvel/fake/sensor_service_interface.h"
#include "quorvel/fake/thread_annotations.h"

struct ASensor {
  const norvik::qel::fake::SensorDescription description;
};

namespace norvik::qel::fake {

// The events of one queue, from the binder thread that delivers them to the thread that reads them.
//
// Locks: lock_ before the looper's lock. Neither is held while the callback runs.
class SensorEvents : public EventSource, public std::enable_shared_from_this<SensorEvents> {
 public:
  SensorEvents(ALooper_callbackFunc callback, void* data) : callback_(callback), data_(data) {}

  // Adds events and marks the queue at the looper.
  void Append(const std::vector<ASensorEvent>& events);
  // Called when the queue is destroyed. Later events are dropped, and the looper forgets the queue.
  void Close();
  size_t Take(ASensorEvent* out, size_t count);
  bool empty() const;
  void set_additional_info(bool wanted);
  void Dispatch() override;

 private:
  mutable std::mutex lock_;
  std::deque<ASensorEvent> events_ QUORVEL_GUARDED_BY(lock_);
  bool additional_info_ QUORVEL_GUARDED_BY(lock_) = false;
  bool closed_ QUORVEL_GUARDED_BY(lock_) = false;
  // Null if there is none, or after it has returned 0.
  ALooper_callbackFunc callback_ QUORVEL_GUARDED_BY(lock_);
  void* const data_;
};

}  // namespace norvik::qel::fake

struct ASensorEventQueue {
  const std::shared_ptr<norvik::qel::fake::ISensorService> service;
  const int64_t id;
  const std::shared_ptr<norvik::qel::fake::SensorEvents> events;
};

// The process's connection to the sensor service, with its sensors and queues.
//
// Locks: lock_ guards the tables; the service is called without it.
struct ASensorManager {
 public:
  // Waits for the service. Null if linking to its death fails.
  static ASensorManager* Get();

  explicit ASensorManager(std::shared_ptr<norvik::qel::fake::ISensorService> service)
      : service_(std::move(service)) {}

  int GetSensorList(ASensorList* list);
  const ASensor* GetDefaultSensor(int type);
  ASensorEventQueue* CreateEventQueue(ALooper_callbackFunc callback, void* data);
  void DestroyEventQueue(ASensorEventQueue* queue);
  void BringToAll(const std::vector<ASensorEvent>& events);
  // Frees the queues. Called when the service has died.
  void DropQueues();

 private:
  const ASensor* KeepLocked(const norvik::qel::fake::SensorDescription& description)
      QUORVEL_REQUIRES(lock_);

  const std::shared_ptr<norvik::qel::fake::ISensorService> service_;
  std::mutex lock_;
  std::map<int32_t, std::unique_ptr<ASensor>> sensors_ QUORVEL_GUARDED_BY(lock_);
  std::vector<std::unique_ptr<std::vector<ASensorRef>>> lists_ QUORVEL_GUARDED_BY(lock_);
  std::map<ASensorEventQueue*, std::unique_ptr<ASensorEventQueue>> queues_
      QUORVEL_GUARDED_BY(lock_);
};
