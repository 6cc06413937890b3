// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The sensor service that the functions of <android/sensor.h> call. A phone has its own, private
// interface for that purpose; only those functions use it.
#pragma once

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/binder_auto_utils.h>
#include <android/sensor.h>

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace norvik::qel::fake {

struct SensorDescription {
  int32_t handle = 0;  // identifies the sensor
  int32_t type = ASENSOR_TYPE_INVALID;
  std::string name = {};
  std::string vendor = {};
  std::string string_type = {};
  float resolution = 1;
  int32_t min_delay_us = 0;  // 0: the sensor reports on change
  int32_t fifo_max_events = 0;
  int32_t fifo_reserved_events = 0;
};

// Receives the events of one queue. An object of the client's process.
class ISensorEvents : public ndk::ICInterface {
 public:
  static inline const char* descriptor = "norvik.qel.fake.ISensorEvents";
  static std::shared_ptr<ISensorEvents> fromBinder(const ndk::SpAIBinder& binder);
  virtual ndk::ScopedAStatus onEvents(const std::vector<ASensorEvent>& events) = 0;  // one-way
};

class BnSensorEvents : public ndk::BnCInterface<ISensorEvents> {
 protected:
  ndk::SpAIBinder createBinder() override;
};

// Queues are identified by numbers. A call with an unknown number is refused.
class ISensorService : public aidl::android::frameworks::sensorservice::ISensorManager {
 public:
  virtual ndk::ScopedAStatus getSensorList(std::vector<SensorDescription>* out) = 0;
  virtual ndk::ScopedAStatus getDefaultSensor(int32_t type,
                                              std::optional<SensorDescription>* out) = 0;
  virtual ndk::ScopedAStatus createEventQueue(const std::shared_ptr<ISensorEvents>& events,
                                              int64_t* out_queue) = 0;
  virtual ndk::ScopedAStatus destroyEventQueue(int64_t queue) = 0;
  virtual ndk::ScopedAStatus enableSensor(int64_t queue, int32_t handle, int32_t period_us,
                                          int64_t max_latency_us) = 0;
  virtual ndk::ScopedAStatus disableSensor(int64_t queue, int32_t handle) = 0;
};

class BnSensorService : public ndk::BnCInterface<ISensorService> {
 protected:
  ndk::SpAIBinder createBinder() override;
};

}  // namespace norvik::qel::fake
