// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>

#include "cli/commands.h"
#include "cli/names.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

using Reports = std::vector<TemperatureReport>;

bool IsKnown(const Value& value) {
  const auto* const several = std::get_if<Severities>(&value);
  return value != Value() && value != Value(Absent()) && (several == nullptr || !several->empty());
}

// Reads a value that is no sensor's. nullopt if the service cannot be queried.
std::optional<Value> Read(const std::string& key, Client& client, const Reports& reports) {
  if (const auto* const battery = BatteryPropertyOf(key)) return client.Read(*battery);
  if (IsChargeLimit(key)) {
    const auto limits = client.ReadLimits();
    if (!limits) return std::nullopt;
    return (*limits)[key == kCurrentLimits.key ? 0 : 1];
  }
  const TemperatureReport* const report = FindReport(key, reports);
  if (report == nullptr) return Absent();
  const auto values = client.ReadTemperatures({report->name});
  return values ? std::optional(values->front()) : std::nullopt;
}

// Waits for the readings of the sensors among the keys: the library has no getters for sensors,
// only callbacks. Returns what is wrong; empty: nothing.
std::string WaitForSensors(const std::vector<std::string>& keys, Client& client, Session& session) {
  const bool is_found = StateOf(kSensorService, LookUpServices()).is_found;
  for (const std::string& key : keys) {
    if (SensorPropertyOf(key) == nullptr) continue;
    if (!is_found || !client.Join(key)) return FailureOf(kSensorService);
  }
  const auto wake = WaitForReadings(session, client, Session::Clock::now() + kReportLimit);
  const bool is_silent = wake == Session::Wake::kTime && session.observed().callbacks() == 0;
  return is_silent ? SilenceOf(kSensorService) : "";
}

}  // namespace

int Get(const Options& options, Output& output) {
  std::vector<std::string> keys = KeysIn(options);
  const std::set<std::string_view> families = FamiliesOf(keys);
  Session session(
      options, output,
      {.show_events = false, .families = families, .waits = families.contains(kSensorFamily)});
  NoteIgnoredBatteries(session);
  session.ShowPending();  // the notices, also before a failure
  Client client(session.events());
  std::optional<Reports> reports = Reports();
  if (families.contains(kThermalFamily)) reports = PlatformTemperatures();
  if (!reports) return session.Fail(FailureOf(kThermalService));
  keys = LookedUp(keys, *reports);
  for (const std::string& key : keys) output.ExpectName(key);
  if (const auto fault = WaitForSensors(keys, client, session); !fault.empty()) {
    return session.Fail(fault);
  }
  if (session.stopped()) return kExitInterrupted;
  std::vector<Value> values;
  for (const std::string& key : keys) {
    const auto* const sensor = SensorPropertyOf(key);
    const auto value = sensor != nullptr ? std::optional(ReadingOf(*sensor, client, session))
                                         : Read(key, client, *reports);
    if (!value) return session.Fail(FailureOf(ServiceOf(key)));
    values.push_back(*value);
  }
  std::string missing;
  bool is_unreported = false;
  for (size_t i = 0; i < keys.size(); ++i) {
    const std::string name = keys[i].substr(keys[i].starts_with(':') ? 1 : 0);
    output.ShowReading(PropertyOf(name), values[i]);
    if (!IsKnown(values[i])) missing += (missing.empty() ? "" : ", ") + name;
    is_unreported |= values[i] == Value(Absent()) && SensorPropertyOf(keys[i]) == nullptr;
  }
  if (missing.empty()) return EXIT_SUCCESS;
  return session.Fail(
      "unknown or not present: " + missing + (is_unreported ? KnownTemperatures(*reports) : ""),
      kExitUnknown);
}

}  // namespace norvik::qel::monitor
