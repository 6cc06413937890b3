// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "clients/all_clients.h"
#include "recording/recorder.h"

namespace norvik::qel::monitor {

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
  DeviceScript(session.device()).Run(session, EndOf(options));
  const int event_count = recorder.event_count();
  // Its time is the recording's length.
  recorder.NoteAct(Narration{.text = "The recording ends."});
  if (!recorder.failure().empty()) return session.Fail(recorder.failure());
  output.Explain("Recorded " + Counted(event_count, "event") + " in " + path + ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
