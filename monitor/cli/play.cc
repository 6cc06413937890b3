// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <string>

#include "cli/commands.h"
#include "cli/options.h"
#include "output/output.h"
#include "recording/recording_reader.h"
#include "scenario/playback.h"

namespace norvik::qel::monitor {

int Play(const Options& options, Output& output) {
  if (options.speed && options.step) throw UsageError("--step cannot be combined with --speed");
  const std::string& path = options.operands.front();
  const Recording recording = ReadRecording(path);
  const std::string pace = options.step ? ", an event at each Enter." : ".";
  return PlayBack(recording, {.title = "Play", .introduction = "Playing " + path + pace}, options,
                  output);
}

}  // namespace norvik::qel::monitor
