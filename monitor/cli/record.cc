// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "clients/client.h"
#include "output/printable.h"
#include "recording/recorder.h"

namespace norvik::qel::monitor {

int Record(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  if (path == kStandardStream) output.Mute();
  Recorder recorder(path, options.existing, options.device->name);
  output.Explain("Recording into " + Printable(path) + (options.duration ? "." : "; Ctrl-C ends."));
  Client* learner = nullptr;
  Session session(options, output, {.listener = [&](const Event& event) {
                    const auto* const told = std::get_if<DeviceEvent>(&event.what);
                    const auto* const report =
                        told != nullptr ? std::get_if<TemperatureReport>(&told->report) : nullptr;
                    if (learner != nullptr && report != nullptr) {
                      learner->Learn(*report);
                      output.ExpectName(KeyOf(*report));
                    }
                    return recorder.Note(event);
                  }});
  Client client(session.events());
  learner = &client;
  session.ShowPending();  // the device has already reported its temperatures
  bool refused = false;
  for (const std::string_view family : kClientFamilies) {
    recorder.NoteAct(ClientJoined{.subject = std::string(family)});
    refused |= !client.Join(family);
  }
  // The other clients are recorded.
  if (refused) Complain(kRefusal);
  DeviceScript(session.device()).Run(session, EndOf(options));
  const int event_count = recorder.event_count();
  // The time of this line is the recording's length.
  recorder.NoteAct(Narration{.text = "The recording ends."});
  if (!recorder.failure().empty()) return session.Fail(recorder.failure());
  output.Explain("Recorded " + Counted(event_count, "event") + " in " + Printable(path) + ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
