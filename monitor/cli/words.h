// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The command line as it stands there, before anybody asks whether it makes sense.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace norvik::qel::monitor {

// For whoever has to be told.
inline constexpr char kCommandNames[] = "watch, get, dump, demo, record, play or plot";

struct Words {
  bool help = false;
  bool version = false;
  bool json = false;
  bool verbose = false;
  bool force = false;
  bool step = false;
  // What has been given; it may be empty.
  std::optional<std::string> record = {};
  std::optional<std::string> output = {};
  std::optional<std::string> speed = {};
  std::optional<std::string> device = {};
  std::optional<std::string> duration = {};
  std::string command = {};  // empty when there is none
  std::string family = {};
  std::vector<std::string> operands = {};
};

// Throws UsageError for what cannot be told apart.
Words ParseWords(int argc, char** argv);

}  // namespace norvik::qel::monitor
