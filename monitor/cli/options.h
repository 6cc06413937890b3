// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The command line, parsed.
#pragma once

#include <chrono>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "clients/device.h"

namespace norvik::qel::monitor {

struct Command;

// What to do if the file to write exists already.
enum class ExistingFile { kRefuse, kOverwrite };

struct Options {
  const Command* command = nullptr;
  std::vector<std::string> operands = {};  // what follows the command
  const DeviceType* device = nullptr;
  bool help = false;
  bool version = false;
  bool json = false;
  bool verbose = false;
  std::optional<std::chrono::milliseconds> duration = {};
  std::string record = {};  // the file for a recording beside the output; empty: none
  ExistingFile existing = ExistingFile::kRefuse;
  std::optional<double> speed = {};
  bool step = false;
  bool names = false;
  bool follow = false;
  std::string output = {};
  std::string to = {};  // the format of export
};

// The command line is wrong. The text says what is wrong and what is accepted.
class UsageError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// The device that QUORVEL_DEVICE names, or the first one. Throws UsageError.
const DeviceType& DefaultDevice();

// Throws UsageError. With --help or --version no command is needed.
Options ParseOptions(int argc, char** argv);

}  // namespace norvik::qel::monitor
