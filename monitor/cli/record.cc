// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "cli/commands.h"
#include "cli/device_script.h"
#include "cli/session.h"
#include "clients/client.h"
#include "output/printable.h"
#include "recording/recorder.h"
#include "recording/survey.h"

namespace norvik::qel::monitor {

int Record(const Options& options, Output& output) {
  const std::string& path = options.operands.front();
  if (path == kStandardStream) output.Mute();
  Recorder recorder(path, options.existing, options.device->name);
  output.Explain("Recording into " + Printable(path) + (options.duration ? "." : "; Ctrl-C ends."));
  Client* learner = nullptr;
  const auto note = [&](const Event& event) {
    const auto* const told = std::get_if<DeviceEvent>(&event.what);
    const auto* const report =
        told != nullptr ? std::get_if<TemperatureReport>(&told->report) : nullptr;
    if (learner != nullptr && report != nullptr) {
      learner->Learn(*report);
      output.ExpectName(KeyOf(*report));
    }
    return recorder.Note(event);
  };
  std::optional<Survey> survey;
  if (!options.device->tells) survey.emplace(note);
  Session session(options, output, {.listener = [&](const Event& event) {
                    if (survey) survey->Note(event);
                    return note(event);
                  }});
  Client client(session.events());
  learner = &client;
  session.ShowPending();  // the device has already reported its temperatures
  bool refused = false;
  std::vector<std::string> absent(kClientFamilies.begin(), kClientFamilies.end());
  const auto look = [&] {
    if (survey) survey->Look(client);
    std::erase_if(absent, [&](const std::string& family) {
      if (survey && !survey->families().contains(family)) return false;
      recorder.NoteAct(ClientJoined{.subject = family});
      // The other clients are recorded.
      if (!client.Join(family)) {
        refused = true;
        Complain(std::string(kRefusal) + " for " + family);
      }
      return true;
    });
  };
  look();
  if (!absent.empty()) {
    output.Explain("No service answers for " + Enumerated(absent, "and") +
                   " yet: recorded once one does; quorvel doctor tells more.");
  }
  DeviceScript script(session.device());
  const auto end = EndOf(options);
  do {
    const auto next = Session::Clock::now() + std::chrono::seconds(1);
    script.Run(session, survey ? std::min(end, next) : end);
    session.ShowPending();
    look();
  } while (!session.stopped() && Session::Clock::now() < end && recorder.failure().empty());
  const int event_count = recorder.event_count();
  // The time of this line is the recording's length.
  recorder.NoteAct(Narration{.text = "The recording ends."});
  if (!recorder.failure().empty()) return session.Fail(recorder.failure());
  output.Explain("Recorded " + Counted(event_count, "event") + " in " + Printable(path) + ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
