// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <optional>
#include <string>

#include "cli/commands.h"
#include "cli/run_scripts.h"
#include "cli/session.h"
#include "clients/all_clients.h"
#include "recording/recorder.h"
#include "scenario/battery_script.h"
#include "scenario/sensor_script.h"
#include "scenario/thermal_script.h"

namespace norvik::qel::monitor {

namespace {

void LetLive(Session& session, Session::Clock::time_point end) {
  std::optional<BatteryScript> battery;
  if (BatteryDriver* driver = session.device().battery_driver()) battery.emplace(*driver);
  std::optional<SensorScript> sensors;
  if (SensorDriver* driver = session.device().sensor_driver()) sensors.emplace(*driver);
  std::optional<ThermalScript> thermal;
  if (ThermalDriver* driver = session.device().thermal_driver()) thermal.emplace(*driver);
  RunScripts(
      session,
      {battery ? &*battery : nullptr, sensors ? &*sensors : nullptr, thermal ? &*thermal : nullptr},
      end);
}

}  // namespace

int Record(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  if (path == kStandardStream) output.Mute();
  Recorder recorder(path, options.existing, options.device->name);
  output.Explain("Recording into " + path + (options.duration ? "." : "; Ctrl-C ends."));
  AllClients* learner = nullptr;
  Session session(options, output, {.listener = [&](const Event& event) {
                    if (learner != nullptr) learner->Learn(event);
                    return recorder.Note(event);
                  }});
  AllClients clients(session.events());
  learner = &clients;
  session.ShowPending();  // the device has reported by now what it has
  bool refused = false;
  const auto join = [&](std::string_view family) {
    recorder.NoteAct(ClientJoined{.subject = std::string(family)});
    refused |= !clients.Join(family);
  };
  join(kBatteryFamily);
  join(kSensorFamily);
  join(kThermalFamily);
  // The rest is recorded.
  if (refused) Complain(kRefusal);
  LetLive(session, EndOf(options));
  if (!recorder.failure().empty()) return session.Fail(recorder.failure());
  output.Explain("Recorded " + Counted(recorder.event_count(), "event") + " in " + path + ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
