// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A client of the library's sensor family.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "clients/event_queue.h"
#include "clients/sensor_properties.h"

namespace norvik::qel::monitor {

// Owns a handle. What its callbacks hear goes to the queue.
//
// Threads: the main thread; the callbacks come on the library's.
class SensorClient {
 public:
  explicit SensorClient(std::shared_ptr<EventQueue> events);
  // No callback comes afterwards.
  ~SensorClient();
  SensorClient(const SensorClient&) = delete;
  SensorClient& operator=(const SensorClient&) = delete;

  // For one sensor or both, as far as the device has them. False when the library refuses.
  [[nodiscard]] bool Register(const SensorProperty& property);
  [[nodiscard]] bool Register();
  // From one, or from all that has been registered.
  [[nodiscard]] bool Deregister(const SensorProperty& property);
  [[nodiscard]] bool Deregister();
  // What is registered: while the service is late that is both sensors, whether they exist or not.
  std::vector<const SensorProperty*> sensors() const;
  // What the device is known not to have.
  std::vector<const SensorProperty*> absent_sensors() const;
  std::string Dump();

 private:
  enum class State { kUnregistered, kRegistered, kAbsent };

  // What a callback is handed back. Lives until the handle is gone.
  struct Cookie {
    const SensorProperty* property = nullptr;
    EventQueue* events = nullptr;
    Value last = {};                     // touched by callbacks only, which come one at a time
    State state = State::kUnregistered;  // touched by the main thread only
  };

  static void OnValue(int number, void* cookie);

  Cookie& CookieOf(const SensorProperty& property);
  std::vector<const SensorProperty*> SensorsIn(State state) const;

  const std::shared_ptr<EventQueue> events_;
  std::array<Cookie, kSensorProperties.size()> cookies_;
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::monitor
