// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <sstream>
#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "output/output.h"
#include "output/printable.h"
#include "recording/recording_reader.h"
#include "scenario/demo_scenario.h"
#include "scenario/playback.h"

namespace norvik::qel::monitor {

namespace {

void CheckForce(const Options& options) {
  const bool has_record = !options.record.empty();
  if (options.existing == ExistingFile::kOverwrite && !has_record) {
    throw UsageError("--force needs --record FILE");
  }
}

}  // namespace

int Demo(const Options& options, Output& output) {
  CheckForce(options);
  std::istringstream text{std::string(kDemoScenario)};
  return PlayBack(ReadRecording(text, kDemoScenarioName), "Demo",
                  "Playing the demo on a simulated phone.", options, output);
}

int Play(const Options& options, Output& output) {
  CheckForce(options);
  if (options.speed && options.step) throw UsageError("--step cannot be combined with --speed");
  const std::string& path = options.operands.front();
  if (options.step && path == kStandardStream) {
    throw UsageError("play: --step reads Enter from standard input, so - cannot be the recording");
  }
  CheckIsAnotherFile(options.record, path);
  const Recording recording = ReadRecording(path);
  return PlayBack(recording, "Play",
                  "Playing " + Printable(recording.name) + " on a simulated phone" +
                      (options.step ? ", an event at each Enter." : "."),
                  options, output);
}

}  // namespace norvik::qel::monitor
