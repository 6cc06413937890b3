// A client in every family, for whoever is interested in all that a device does.
#pragma once

#include <deque>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tools/battery_client.h"
#include "tools/sensor_client.h"
#include "tools/thermal_client.h"

namespace norvik::qel::tool {

// Which temperatures there are is known from reports only: no function of the library lists them.
//
// Threads: the main thread.
class AllClients {
 public:
  explicit AllClients(std::shared_ptr<EventQueue> events) : events_(std::move(events)) {}
  AllClients(const AllClients&) = delete;
  AllClients& operator=(const AllClients&) = delete;

  // A temperature to register for. Those of types that the library does not know are left out.
  void Learn(const Event& event);
  void Learn(const TemperatureReport& report);
  // Once for each family, with the temperatures that are known by then. False when the library
  // refuses.
  bool Join(std::string_view family);

 private:
  struct Temperature {
    std::string key;
    std::string type;
    std::string name;
  };

  bool JoinThermal();

  const std::shared_ptr<EventQueue> events_;
  std::deque<Temperature> temperatures_;    // which stay where they are
  std::deque<ThermalProperty> properties_;  // they point to the temperatures
  std::optional<BatteryClient> battery_;
  std::optional<SensorClient> sensors_;
  std::optional<ThermalClient> thermal_;
};

}  // namespace norvik::qel::tool
