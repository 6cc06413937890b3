// What the pointers of <android/sensor.h> point to.
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

struct ASensor {
  const norvik::qel::fake::SensorDescription description;
};

namespace norvik::qel::fake {

// The events of one queue, from the binder thread that brings them to whoever reads them.
//
// Locks: lock_, then the looper's. Neither is held while the callback runs.
class SensorEvents : public NewsSource, public std::enable_shared_from_this<SensorEvents> {
 public:
  SensorEvents(ALooper_callbackFunc callback, void* data) : callback_(callback), data_(data) {}

  // Brings new events, and marks the looper.
  void Append(const std::vector<ASensorEvent>& events);
  // The queue goes: what still comes is dropped, and the looper forgets it.
  void Close();
  size_t Take(ASensorEvent* out, size_t count);
  bool empty() const;
  void set_additional_info(bool wanted);
  void Dispatch() override;

 private:
  mutable std::mutex lock_;
  std::deque<ASensorEvent> events_;
  bool additional_info_ = false;
  bool closed_ = false;
  ALooper_callbackFunc callback_;  // null when there is none, or when it has asked to leave
  void* const data_;
};

}  // namespace norvik::qel::fake

struct ASensorEventQueue {
  const std::shared_ptr<norvik::qel::fake::ISensorService> service;
  const int64_t id;
  const std::shared_ptr<norvik::qel::fake::SensorEvents> events;
};

// The process's link to the sensor service, with all that has been made of it.
//
// Locks: lock_ guards the tables; the service is called without it.
struct ASensorManager {
 public:
  // Waits for the service. Null when its death cannot be watched for.
  static ASensorManager* Get();

  explicit ASensorManager(std::shared_ptr<norvik::qel::fake::ISensorService> service)
      : service_(std::move(service)) {}

  int GetSensorList(ASensorList* list);
  const ASensor* GetDefaultSensor(int type);
  ASensorEventQueue* CreateEventQueue(ALooper_callbackFunc callback, void* data);
  void DestroyEventQueue(ASensorEventQueue* queue);
  void BringToAll(const std::vector<ASensorEvent>& events);
  // Frees the queues as the service's death does.
  void DropQueues();

 private:
  const ASensor* KeepLocked(const norvik::qel::fake::SensorDescription& description);

  const std::shared_ptr<norvik::qel::fake::ISensorService> service_;
  std::mutex lock_;
  std::map<int32_t, std::unique_ptr<ASensor>> sensors_;
  std::vector<std::unique_ptr<std::vector<ASensorRef>>> lists_;
  std::map<ASensorEventQueue*, std::unique_ptr<ASensorEventQueue>> queues_;
};
