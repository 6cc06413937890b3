// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include <sstream>

#include "cli/commands.h"
#include "recording/recording_reader.h"
#include "scenario/demo_scenario.h"
#include "scenario/playback.h"

namespace norvik::qel::monitor {

int Demo(const Options& options, Output& output) {
  std::istringstream text{std::string(kDemoScenario)};
  return PlayBack(ReadRecording(text, kDemoScenarioName),
                  {.title = "Demo", .introduction = "Playing the demo on a simulated phone."},
                  options, output);
}

}  // namespace norvik::qel::monitor
