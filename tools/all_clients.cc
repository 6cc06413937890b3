#include "tools/all_clients.h"

#include <algorithm>
#include <utility>
#include <variant>

#include "tools/recording.h"

namespace norvik::qel::tool {

void AllClients::Learn(const Event& event) {
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  if (device_event == nullptr) return;
  if (const auto* report = std::get_if<TemperatureReport>(&device_event->report)) Learn(*report);
}

void AllClients::Learn(const TemperatureReport& report) {
  std::string key = report.type + ":" + report.name;
  const bool known_type =
      std::find(kThermalTypes.begin(), kThermalTypes.end(), report.type) != kThermalTypes.end();
  const bool is_known =
      std::any_of(temperatures_.begin(), temperatures_.end(),
                  [&](const Temperature& temperature) { return temperature.key == key; });
  if (!known_type || is_known) return;
  temperatures_.push_back({.key = std::move(key), .type = report.type, .name = report.name});
}

bool AllClients::Join(std::string_view family) {
  if (family == kBatteryFamily) return battery_.emplace(events_).Register();
  if (family == kSensorFamily) return sensors_.emplace(events_).Register();
  return JoinThermal();
}

bool AllClients::JoinThermal() {
  thermal_.emplace(events_);
  bool all = true;
  for (const Temperature& temperature : temperatures_) {
    const ThermalProperty& property = properties_.emplace_back(
        ThermalProperty{{.key = temperature.key, .name = temperature.key, .unit = ""},
                        temperature.type.c_str(),
                        temperature.name.c_str()});
    all &= thermal_->Register(property);
  }
  return all;
}

}  // namespace norvik::qel::tool
