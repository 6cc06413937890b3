// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A client of the library's thermal family.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "clients/event_queue.h"
#include "clients/thermal_properties.h"

namespace norvik::qel::monitor {

// Owns a handle. What its callbacks hear goes to the queue.
//
// Threads: the main thread; the callbacks come on the library's, side by side for several types.
class ThermalClient {
 public:
  explicit ThermalClient(std::shared_ptr<EventQueue> events);
  // No callback comes afterwards.
  ~ThermalClient();
  ThermalClient(const ThermalClient&) = delete;
  ThermalClient& operator=(const ThermalClient&) = delete;

  // False when the library refuses: the service reports no such temperature.
  [[nodiscard]] bool Register(const ThermalProperty& property);
  // From what was registered with the same property.
  [[nodiscard]] bool Deregister(const ThermalProperty& property);

  // Both ask the service; nothing when it cannot be asked.
  //
  // Of each of kChargeLimitProperties.
  std::optional<std::vector<Severities>> ReadLimits();
  // Of each name; Absent() for what the service does not report.
  std::optional<std::vector<Value>> ReadTemperatures(const std::vector<std::string>& names);

  std::string Dump();

 private:
  // What a callback is handed back. Lives until the handle is gone.
  struct Cookie {
    const ThermalProperty* property = nullptr;
    int id = 0;
    EventQueue* events = nullptr;
    Value last = {};  // touched by this client's callback only, which comes one at a time
  };

  static void OnSeverity(int number, void* cookie);

  std::optional<Severities> Read(const ChargeLimitProperty& property);
  // Whether there is a service: without one the library answers as if it had nothing to report.
  bool HasService();

  const std::shared_ptr<EventQueue> events_;
  std::deque<Cookie> cookies_;  // which stay where they are
  Cookie probe_;                // of HasService(): never called with
  void* handle_ = nullptr;
};

}  // namespace norvik::qel::monitor
