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

// The device has told by now what it has, as far as it is up.
void NoteBeginning(Session& session) {
  while (session.WaitUntil(Session::Clock::now()) == Session::Wake::kEvent) {
    // The session's listener takes it.
  }
}

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
  const std::string device(options.device->name);
  Recorder recorder(options.operands.front(), options.existing, device);
  output.Explain("Recording the device '" + device + "' into " + options.operands.front() +
                 (options.duration ? "." : "; Ctrl-C ends."));
  AllClients* learner = nullptr;
  Session session(options, output, {.listener = [&](const Event& event) {
                    if (learner != nullptr) learner->Learn(event);
                    return recorder.Note(event);
                  }});
  AllClients clients(session.events());
  learner = &clients;
  NoteBeginning(session);
  bool refused = false;
  const auto join = [&](std::string_view family) {
    recorder.NoteAct(ClientJoined{.subject = std::string(family)});
    refused |= !clients.Join(family);
  };
  join(kBatteryFamily);
  join(kSensorFamily);
  join(kThermalFamily);
  // What is refused keeps nobody from recording all the rest.
  if (refused) Complain(kRefusal);
  LetLive(session, EndOf(options));
  const int event_count = recorder.event_count();
  // Its time is the recording's length.
  recorder.NoteAct(Narration{.text = "The recording ends."});
  if (!recorder.failure().empty()) {
    Complain(recorder.failure());
    return EXIT_FAILURE;
  }
  output.Explain("Recorded " + Counted(event_count, "event") + " in " + options.operands.front() +
                 ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
