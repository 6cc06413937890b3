// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A client of the library.
#pragma once

#include <array>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "clients/event_queue.h"
#include "clients/subjects.h"

namespace norvik::qel::monitor {

// Owns a handle of each family that is needed. What its callbacks hear goes to the queue.
//
// Threads: the main thread; the callbacks come on the library's, side by side for several families
// and types of temperatures.
class Client {
 public:
  explicit Client(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
  // No callback comes afterwards.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // A temperature that the thermal family joins with: no function of the library lists them. Those
  // of types that the library does not know are left out.
  void Learn(const TemperatureReport& report);
  // `subject`: a family, or the key of one of its properties. A family joins with the temperatures
  // that are known by then, and with the sensors that the device has. False when the library
  // refuses; a temperature also when the service reports none of that name.
  [[nodiscard]] bool Join(std::string_view subject);
  // Whatever of the subject has joined.
  [[nodiscard]] bool Leave(std::string_view subject);
  // Those that have joined: while the service is late that is both, whether they exist or not.
  std::vector<const SensorProperty*> sensors() const;
  // Whether the device is known not to have it.
  bool Lacks(const SensorProperty& sensor) const { return absent_sensors_.contains(&sensor); }

  // They ask the service; nothing when it cannot be asked.
  std::optional<Value> Read(const BatteryProperty& property);
  // Of each of kChargeLimitProperties.
  std::optional<std::vector<Severities>> ReadLimits();
  // Of each name; Absent() for what the service does not report.
  std::optional<std::vector<Value>> ReadTemperatures(const std::vector<std::string>& names);

  std::string Dump(std::string_view family);

 private:
  // What a callback is handed back. Lives until the handles are gone.
  struct Cookie {
    std::string key;
    int id;  // of this registration alone
    EventQueue* events;
    Property property = {};      // which may point to the key
    Value last = {};             // touched by its own callback only, which comes one at a time
    bool is_registered = false;  // touched by the main thread only
  };

  static void OnValue(int number, void* cookie);

  void* HandleOf(std::string_view family);
  [[nodiscard]] bool Register(std::string_view key);
  [[nodiscard]] bool Deregister(Cookie& cookie);
  std::optional<Severities> Read(const ChargeLimitProperty& property);
  // Whether there is a service: without one the library answers as if it had nothing to report.
  bool HasThermalService();

  const std::shared_ptr<EventQueue> events_;
  std::array<void*, kClientFamilies.size()> handles_ = {};  // null until they are needed
  std::deque<Cookie> cookies_;                              // which stay where they are
  Cookie probe_ = {};  // of HasThermalService(): never called with
  std::vector<std::string> temperatures_;
  std::set<const SensorProperty*> absent_sensors_;
};

}  // namespace norvik::qel::monitor
