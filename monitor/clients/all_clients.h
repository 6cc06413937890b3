// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A client in every family, for commands that show all that a device does.
#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "clients/battery_client.h"
#include "clients/sensor_client.h"
#include "clients/thermal_client.h"

namespace norvik::qel::monitor {

// Which temperatures there are is known from reports only: no function of the library lists them.
//
// Threads: the main thread.
class AllClients {
 public:
  explicit AllClients(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
  AllClients(const AllClients&) = delete;
  AllClients& operator=(const AllClients&) = delete;

  // A temperature that the thermal family's client registers for. Those of types that the library
  // does not know are left out.
  void Learn(const Event& event);
  void Learn(const TemperatureReport& report);
  // `subject`: a family, or the key of one of its properties. A family joins with the temperatures
  // that are known by then. False when the library refuses.
  [[nodiscard]] bool Join(std::string_view subject);
  // Only a subject that has joined may leave, a family or one by one.
  [[nodiscard]] bool Leave(std::string_view subject);

  BatteryClient& battery();
  SensorClient& sensors();
  ThermalClient& thermal();

 private:
  struct Temperature {
    std::string key;
    std::string type;
    std::string name;
    ThermalProperty property = {};  // which points to the texts
    bool is_joined = false;
  };

  Temperature& TemperatureOf(std::string_view key);
  [[nodiscard]] bool Join(Temperature& temperature);
  [[nodiscard]] bool Leave(Temperature& temperature);

  const std::shared_ptr<EventQueue> events_;
  std::deque<Temperature> temperatures_;  // which stay where they are
  std::vector<Temperature*> learned_;
  // Made when they are needed first.
  std::optional<BatteryClient> battery_;
  std::optional<SensorClient> sensors_;
  std::optional<ThermalClient> thermal_;
};

}  // namespace norvik::qel::monitor
