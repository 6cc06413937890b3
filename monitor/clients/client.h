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

// Owns one handle per family, made on first use. Its callbacks post each value to the queue.
//
// Threads: the main thread. The callbacks run on the library's threads, concurrently for several
// families and types of temperatures.
class Client {
 public:
  explicit Client(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
  // No callback runs after the destructor has returned.
  ~Client();
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  // Adds a temperature to those that the thermal family registers for: no function of the library
  // lists them. Temperatures of types that the library does not know are ignored.
  void Learn(const TemperatureReport& report);
  // Registers callbacks for `subject`: a family, or the key of one property. The thermal family
  // registers for the temperatures learned so far. Sensors that the device lacks are skipped. False
  // if the library refuses a registration, also because the service has no such temperature.
  [[nodiscard]] bool Join(std::string_view subject);
  // Deregisters all callbacks of `subject`. False if the library refuses to.
  [[nodiscard]] bool Leave(std::string_view subject);
  // The registered sensors. Until the sensor service is up, these are both, even absent ones.
  std::vector<const SensorProperty*> sensors() const;
  // Whether the device is known not to have it.
  bool Lacks(const SensorProperty& sensor) const { return absent_sensors_.contains(&sensor); }

  // The following three query the service; nullopt if it cannot be queried.
  std::optional<Value> Read(const BatteryProperty& property);
  // One list for each of kChargeLimitProperties.
  std::optional<std::vector<Severities>> ReadLimits();
  // One value for each name; Absent() if the service does not report that temperature.
  std::optional<std::vector<Value>> ReadTemperatures(const std::vector<std::string>& names);

  std::string Dump(std::string_view family);

 private:
  // The cookie of one registration. Outlives the handles.
  struct Cookie {
    std::string key;
    int id;  // unique among the registrations
    EventQueue* events;
    Property property = {};      // may point into `key`
    Value last = {};             // used by this registration's callback only, never concurrently
    bool is_registered = false;  // used by the main thread only
  };

  static void OnValue(int number, void* cookie);

  void* HandleOf(std::string_view family);
  [[nodiscard]] bool Register(std::string_view key);
  [[nodiscard]] bool Deregister(Cookie& cookie);
  std::optional<Severities> Read(const ChargeLimitProperty& property);
  // Whether a thermal service runs. Without one, the library's getters return empty results.
  bool HasThermalService();

  const std::shared_ptr<EventQueue> events_;
  std::array<void*, kClientFamilies.size()> handles_ = {};  // null until first used
  std::deque<Cookie> cookies_;                              // a deque: addresses are stable
  Cookie probe_ = {};  // for HasThermalService(); no callback receives it
  std::vector<std::string> temperatures_;
  std::set<const SensorProperty*> absent_sensors_;
};

}  // namespace norvik::qel::monitor
