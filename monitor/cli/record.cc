// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "cli/commands.h"
#include "cli/run_scripts.h"
#include "cli/session.h"
#include "clients/all_clients.h"
#include "recording/recorder.h"

namespace norvik::qel::monitor {

namespace {

// The device has told by now what it has, as far as it is up.
void NoteBeginning(Session& session) {
  while (session.WaitUntil(Session::Clock::now()) == Session::Wake::kEvent) {
    // The session's listener takes it.
  }
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
  AllScripts(session.device()).Run(session, EndOf(options));
  if (!recorder.failure().empty()) {
    Complain(recorder.failure());
    return EXIT_FAILURE;
  }
  output.Explain("Recorded " + Counted(recorder.event_count(), "event") + " in " +
                 options.operands.front() + ".");
  return refused ? EXIT_FAILURE : EXIT_SUCCESS;
}

}  // namespace norvik::qel::monitor
