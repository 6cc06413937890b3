// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The families of values that the monitor knows.
#pragma once

#include <span>
#include <string>
#include <string_view>

namespace norvik::qel::monitor {

struct Options;
class Output;

// As one of the commands takes it.
struct Family {
  std::string_view name;
  std::string_view service;  // whose events belong to it
  std::string_view operand;  // what has to follow the name, once or more; empty: nothing
  int (*run)(const Options& options, Output& output);  // returns the program's exit code
};

// Those of watch, and those of get.
std::span<const Family> WatchedFamilies();
std::span<const Family> AskedFamilies();

}  // namespace norvik::qel::monitor
