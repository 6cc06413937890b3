// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <stdexcept>

#include "cli/commands.h"
#include "cli/names.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "output/output.h"

namespace norvik::qel::monitor {

namespace {

using Reports = std::vector<TemperatureReport>;

struct Reading {
  Named name;
  Value value = {};
};
using Readings = std::vector<Reading>;

bool IsKnown(const Value& value) {
  const auto* const several = std::get_if<Severities>(&value);
  return value != Value() && value != Value(Absent()) && (several == nullptr || !several->empty());
}

[[noreturn]] void Fail(const std::string& text) {
  throw std::runtime_error(text);
}

// The readings of a family.
std::vector<Reading*> Of(std::string_view family, Readings& readings) {
  std::vector<Reading*> found;
  for (Reading& reading : readings) {
    if (reading.name.family == family) found.push_back(&reading);
  }
  return found;
}

// The following functions read the values of one family. They throw if its service cannot be asked.

void ReadBattery(Client& client, Readings& readings) {
  for (Reading* const reading : Of(kBatteryFamily, readings)) {
    const auto value = client.Read(*BatteryPropertyOf(reading->name.key));
    if (!value) Fail(FailureOf(kHealthService));
    reading->value = *value;
  }
}

void ReadTemperatures(const Reports& reports, Client& client, Readings& readings) {
  std::vector<std::string> names;
  std::vector<Reading*> reported;
  for (Reading* const reading : Of(kThermalFamily, readings)) {
    reading->value = Absent();
    const TemperatureReport* const report = FindReport(reading->name.key, reports);
    if (report == nullptr) continue;
    names.push_back(report->name);
    reported.push_back(reading);
  }
  const auto values = names.empty() ? std::vector<Value>() : client.ReadTemperatures(names);
  if (!values) Fail(FailureOf(kThermalService));
  for (size_t i = 0; i < reported.size(); ++i) reported[i]->value = (*values)[i];
}

void ReadLimits(Client& client, Readings& readings) {
  const std::vector<Reading*> wanted = Of(kLimitsWord, readings);
  if (wanted.empty()) return;
  const auto limits = client.ReadLimits();
  if (!limits) Fail(FailureOf(kThermalService));
  for (Reading* const reading : wanted) {
    reading->value = (*limits)[reading->name.key == kCurrentLimits.key ? 0 : 1];
  }
}

// The library has no getters for sensors, only callbacks. False if the session is stopped.
bool ReadSensors(Session& session, Client& client, Readings& readings) {
  const std::vector<Reading*> wanted = Of(kSensorFamily, readings);
  if (wanted.empty()) return true;
  bool is_usable = StateOf(kSensorService, LookUpServices()).is_found;
  for (const Reading* const reading : wanted) {
    is_usable = is_usable && client.Join(reading->name.key);
  }
  if (!is_usable) Fail(FailureOf(kSensorService));
  const auto wake = WaitForReadings(session, client, Session::Clock::now() + kReportLimit);
  if (wake == Session::Wake::kStop) return false;
  session.ShowPending();
  if (wake == Session::Wake::kTime && session.observed().callbacks() == 0) {
    Fail(SilenceOf(kSensorService));
  }
  for (Reading* const reading : wanted) {
    reading->value = ReadingOf(*SensorPropertyOf(reading->name.key), client, session);
  }
  return true;
}

int Show(const Readings& readings, const Reports& reports, Output& output) {
  std::string missing;
  bool is_unreported = false;
  for (const auto& [name, value] : readings) {
    output.ShowReading(PropertyOf(name.key), value);
    if (!IsKnown(value)) missing += (missing.empty() ? "" : ", ") + name.key;
    is_unreported |= name.family == kThermalFamily && value == Value(Absent());
  }
  if (missing.empty()) return EXIT_SUCCESS;
  Complain("unknown or not present: " + missing +
           (is_unreported ? KnownTemperatures(reports) : ""));
  return kExitUnknown;
}

}  // namespace

int Get(const Options& options, Output& output) {
  std::vector<Named> names = NamesIn(options);
  const std::set<std::string_view> families = FamiliesOf(names);
  Session session(options, output, {.show_events = false, .families = families, .waits = false});
  NoteIgnoredBatteries(session);
  session.ShowPending();  // the notices, also before a failure
  Client client(session.events());
  Reports reports;
  if (families.contains(kThermalFamily)) {
    auto reported = PlatformTemperatures();
    if (!reported) Fail(FailureOf(kThermalService));
    reports = std::move(*reported);
  }
  names = LookedUp(names, *options.command, reports);
  Readings readings;
  for (Named& name : names) readings.push_back({.name = std::move(name)});
  ReadBattery(client, readings);
  ReadTemperatures(reports, client, readings);
  ReadLimits(client, readings);
  if (!ReadSensors(session, client, readings)) return kExitInterrupted;
  return Show(readings, reports, output);
}

}  // namespace norvik::qel::monitor
