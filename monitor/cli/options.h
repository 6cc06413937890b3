// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What the user asks for.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "cli/families.h"
#include "clients/device.h"

namespace norvik::qel::monitor {

// What becomes of a file that is to be written and exists.
enum class ExistingFile { kRefuse, kOverwrite };

struct Options {
  enum class Command { kHelp, kVersion, kWatch, kGet, kDump, kDemo, kRecord, kPlay, kPlot };
  Command command = Command::kHelp;
  std::string help_of = {};                // a command that help is wanted of; may be empty
  const Family* family = nullptr;          // for watch and get
  std::vector<std::string> operands = {};  // of the family; the file of record, play and plot
  const DeviceType* device = nullptr;
  bool json = false;
  bool verbose = false;
  std::optional<std::chrono::milliseconds> duration;
  std::string record = {};  // the file that a recording goes into beside; may be empty
  ExistingFile existing = ExistingFile::kRefuse;
  double speed = 1;  // of play
  bool step = false;
  std::string output = {};  // of plot
};

// The user has asked for something that there is not; the text says what is wrong.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

Options ParseOptions(int argc, char** argv);

}  // namespace norvik::qel::monitor
