// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "cli/command_table.h"
#include "cli/commands.h"

namespace norvik::qel::monitor {

std::span<const Command> SimulationCommands() {
  static constexpr Command kCommands[] = {
      {.name = "demo",
       .summary = "play a built-in scenario on a simulated phone and check the result",
       .text = "This takes about 20 seconds.",
       .options = "record force",
       .run = Demo},
      {.name = "play",
       .operands = "FILE",
       .summary = "play a recording on a simulated phone and print the callbacks",
       .text = "The file - is standard input. Fails if something that the file expects does not "
               "happen. A faulty file is refused "
               "before anything is played. docs/recordings.md describes the format; "
               "docs/examples/demo.jsonl is the scenario of the demo.",
       .options = "record force speed step",
       .run = Play},
      {.name = "plot",
       .operands = "FILE",
       .summary = "draw a recording as a timeline, with gnuplot",
       .text = "The name of the --output FILE ends in .svg or .png. The file - is standard input.",
       .options = "output",
       .run = Plot},
  };
  return kCommands;
}

}  // namespace norvik::qel::monitor
