// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <optional>

#include "cli/commands.h"
#include "cli/run_scripts.h"
#include "cli/session.h"
#include "clients/inventory.h"
#include "scenario/battery_script.h"
#include "scenario/sensor_script.h"
#include "scenario/thermal_script.h"

namespace norvik::qel::monitor {

namespace {

void Announce(const std::string& subject, const Options& options, Output& output) {
  output.Explain("Watching the " + subject + (options.duration ? "." : "; Ctrl-C ends."));
  if (options.device->tells) output.Explain(kLegend);
}

// The key of a TYPE:NAME whose type is in any case. Throws UsageError.
std::string TemperatureKeyOf(const std::string& operand) {
  auto parts = SplitTemperatureKey(operand);
  if (!parts) {
    throw UsageError("watch thermal: '" + operand + "' is no TYPE:NAME, use one such as SKIN:skin");
  }
  for (char& c : parts->type) {
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  }
  if (IsWatchableType(parts->type)) return parts->type + ":" + parts->name;
  std::string types;
  for (const std::string_view type : kThermalTypes) types.append(type).append(", ");
  throw UsageError("watch thermal: '" + parts->type + "' is no type of temperature, use " + types +
                   "or " + std::string(kUnknownThermalType));
}

using Clock = Session::Clock;

// A service that is up answers a registration at once.
void ExplainSilence(Session& session, Clock::time_point end) {
  const auto heard = [&] { return session.observed().callbacks() > 0; };
  const auto wait = std::min<Clock::duration>(std::chrono::seconds(1), end - Clock::now());
  if (session.WaitFor(heard, wait) != Session::Wake::kTime) return;
  session.output().Explain(
      "No thermal service yet: the library looks for it ten times, once a second.");
}

}  // namespace

int WatchBattery(const Options& options, Output& output) {
  Announce("battery", options, output);
  Session session(options, output, {});
  Client client(session.events());
  if (!client.Join(kBatteryFamily)) return session.Fail(kRefusal);
  std::optional<BatteryScript> script;
  if (BatteryDriver* driver = session.device().battery_driver()) script.emplace(*driver);
  RunScripts(session, {script ? &*script : nullptr}, EndOf(options));
  return EXIT_SUCCESS;
}

int WatchSensors(const Options& options, Output& output) {
  Announce("sensors", options, output);
  Session session(options, output, {});
  Client client(session.events());
  if (!client.Join(kSensorFamily)) return session.Fail(kRefusal);
  for (const SensorProperty* sensor : kSensorProperties) {
    if (client.Lacks(*sensor)) output.ShowReading(*sensor, Absent());
  }
  std::optional<SensorScript> script;
  if (SensorDriver* driver = session.device().sensor_driver()) script.emplace(*driver);
  RunScripts(session, {script ? &*script : nullptr}, EndOf(options));
  return EXIT_SUCCESS;
}

int WatchThermal(const Options& options, Output& output) {
  std::vector<std::string> keys;  // before anything is said or started
  for (const std::string& operand : options.operands) keys.push_back(TemperatureKeyOf(operand));
  Announce("throttling", options, output);
  Session session(options, output, {});
  Client client(session.events());
  for (const std::string& key : keys) {
    if (client.Join(key)) continue;
    return session.Fail(
        "the thermal service reports no temperature " + key + KnownTemperatures(/*with_type=*/true),
        kExitUnknown);
  }
  const Clock::time_point end = EndOf(options);
  ExplainSilence(session, end);
  std::optional<ThermalScript> script;
  if (ThermalDriver* driver = session.device().thermal_driver()) script.emplace(*driver);
  RunScripts(session, {script ? &*script : nullptr}, end);
  return EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
