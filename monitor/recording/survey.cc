// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/survey.h"

#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;

void SetValue(std::string_view property, const Value& value, BatteryReport* report) {
  const int number = std::holds_alternative<int>(value) ? std::get<int>(value) : -1;
  const auto known = number >= 0 ? std::optional(number) : std::nullopt;
  if (property == kBatteryLevel.key) report->level = number <= 100 ? known : std::nullopt;
  if (property == kBatteryCycleCount.key) report->cycle_count = known;
  if (property == kWirelessCharger.key) report->wireless_online = value == Value(true);
  if (property == kDockCharger.key) report->dock_online = value == Value(true);
}

// Thermistors are noisy: a smaller change of the value alone is none.
bool HasChanged(const TemperatureReport& before, const TemperatureReport& now) {
  constexpr float kNoise = 0.05F;
  constexpr float kUnknown = 1e9F;
  const float change = now.value.value_or(kUnknown) - before.value.value_or(kUnknown);
  return before.severity != now.severity || std::abs(change) > kNoise;
}

bool IsUp(const ServiceState& state) {
  return state.is_found && (!state.is_alive || state.is_alive());
}

}  // namespace

void Survey::Look(Client& client) {
  const WallTime time = std::chrono::system_clock::now();
  bool has_thermal = false;
  for (const ServiceState& state : LookUpServices()) {
    const std::string_view family = FamilyOfService(state.service);
    const auto known = running_.find(state.service);
    const bool has_died = known != running_.end() && !(IsUp(state) && IsUp(known->second));
    // No client survives the death of the sensor service.
    if (has_died && family != kSensorFamily) {
      running_.erase(known);
      Tell(time, Kind::kServiceDied, state.service);
    }
    if (!IsUp(state)) continue;
    has_thermal |= family == kThermalFamily;
    if (!running_.emplace(state.service, state).second) continue;
    Tell(time, Kind::kServiceStarted, state.service);
    if (family == kBatteryFamily) {
      for (const BatteryProperty* property : kBatteryProperties) {
        if (const auto value = client.Read(*property)) SetValue(property->key, *value, &battery_);
      }
      if (battery_ != BatteryReport()) Tell(time, Kind::kReported, state.service, battery_);
    }
    if (family != kThermalFamily) families_.insert(family);
  }
  if (has_thermal) AskForTemperatures(time);
}

void Survey::Note(const Event& event) {
  const auto* const change = std::get_if<ValueChange>(&event.what);
  if (change == nullptr) return;
  const std::string_view key = change->property->key;
  if (BatteryPropertyOf(key) != nullptr) {
    const BatteryReport before = battery_;
    SetValue(key, change->new_value, &battery_);
    if (battery_ != before) Tell(event.time, Kind::kReported, kHealthService, battery_);
  } else if (const auto* const sensor = SensorPropertyOf(key)) {
    // The first call has what the library has stored, which is 0 before the first reading.
    if (change->old_value == Value() && change->new_value == Value(0)) return;
    const auto reading = static_cast<float>(std::get<int>(change->new_value));
    Tell(event.time, Kind::kReported, kSensorService,
         SensorReport{.sensor = sensor->sensor, .values = {reading}});
  } else if (const auto known = temperatures_.find(std::string(key));
             known != temperatures_.end()) {
    const auto severity = std::get<Severity>(change->new_value);
    if (std::exchange(known->second.severity, severity) == severity) return;
    Tell(event.time, Kind::kReported, kThermalService, known->second);
  }
}

void Survey::AskForTemperatures(WallTime time) {
  const auto reports = PlatformTemperatures();
  if (!reports) return;
  families_.insert(kThermalFamily);
  for (const TemperatureReport& report : *reports) {
    const auto [known, is_new] = temperatures_.emplace(KeyOf(report), report);
    if (!is_new && !HasChanged(known->second, report)) continue;
    known->second = report;
    Tell(time, Kind::kReported, kThermalService, report);
  }
}

void Survey::Tell(WallTime time, Kind kind, std::string_view service, Report report) {
  const DeviceEvent event = {
      .kind = kind, .service = std::string(service), .report = std::move(report)};
  static_cast<void>(listener_({time, event}));  // the session asks the next time
}

}  // namespace norvik::qel::monitor
