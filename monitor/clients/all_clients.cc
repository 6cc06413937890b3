// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/all_clients.h"

#include <algorithm>
#include <variant>

#include "clients/subjects.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

void AllClients::Learn(const Event& event) {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  if (device_event == nullptr) return;
  if (const auto* report = std::get_if<TemperatureReport>(&device_event->report)) Learn(*report);
}

void AllClients::Learn(const TemperatureReport& report) {
  const std::string key = report.type + ":" + report.name;
  if (!monitor::TemperatureOf(key)) return;
  Temperature* const temperature = &TemperatureOf(key);
  const bool is_known = std::find(learned_.begin(), learned_.end(), temperature) != learned_.end();
  if (!is_known) learned_.push_back(temperature);
}

bool AllClients::Join(std::string_view subject) {
  if (subject == kBatteryFamily) return battery().Register();
  if (subject == kSensorFamily) return sensors().Register();
  if (const auto* property = BatteryPropertyOf(subject)) return battery().Register(*property);
  if (const auto* property = SensorPropertyOf(subject)) return sensors().Register(*property);
  if (subject != kThermalFamily) return Join(TemperatureOf(subject));
  thermal();
  bool all = true;
  for (Temperature* temperature : learned_) all &= Join(*temperature);
  return all;
}

bool AllClients::Leave(std::string_view subject) {
  if (subject == kBatteryFamily) return battery().Deregister();
  if (subject == kSensorFamily) return sensors().Deregister();
  if (const auto* property = BatteryPropertyOf(subject)) return battery().Deregister(*property);
  if (const auto* property = SensorPropertyOf(subject)) return sensors().Deregister(*property);
  if (subject != kThermalFamily) return Leave(TemperatureOf(subject));
  bool all = true;
  for (Temperature& temperature : temperatures_)
    all &= !temperature.is_joined || Leave(temperature);
  return all;
}

BatteryClient& AllClients::battery() {
  return battery_ ? *battery_ : battery_.emplace(events_);
}

SensorClient& AllClients::sensors() {
  return sensors_ ? *sensors_ : sensors_.emplace(events_);
}

ThermalClient& AllClients::thermal() {
  return thermal_ ? *thermal_ : thermal_.emplace(events_);
}

// `key` is a TYPE:NAME.
AllClients::Temperature& AllClients::TemperatureOf(std::string_view key) {
  for (Temperature& temperature : temperatures_) {
    if (temperature.key == key) return temperature;
  }
  const size_t colon = key.find(':');
  Temperature& temperature =
      temperatures_.emplace_back(Temperature{.key = std::string(key),
                                             .type = std::string(key.substr(0, colon)),
                                             .name = std::string(key.substr(colon + 1))});
  temperature.property = {{.key = temperature.key, .name = temperature.key, .unit = ""},
                          temperature.type.c_str(),
                          temperature.name.c_str()};
  return temperature;
}

bool AllClients::Join(Temperature& temperature) {
  temperature.is_joined = thermal().Register(temperature.property);
  return temperature.is_joined;
}

bool AllClients::Leave(Temperature& temperature) {
  temperature.is_joined = false;
  return thermal().Deregister(temperature.property);
}

}  // namespace norvik::qel::monitor
