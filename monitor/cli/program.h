// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the monitor of a host and that of a phone have in common as programs.
#pragma once

#include <memory>
#include <string>

#include "cli/options.h"
#include "output/output.h"

namespace norvik::qel::monitor {

struct Program {
  Options (*parse)(int argc, char** argv);
  std::unique_ptr<Output> (*make_output)(const Options& options);
  int (*run)(const Options& options, Output& output);
};

// Returns the program's exit code, whatever goes wrong.
int RunProgram(const Program& program, int argc, char** argv);

// "quorvel 1.2.3"
std::string Version();

}  // namespace norvik::qel::monitor
