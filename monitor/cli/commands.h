// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The monitor's commands. Each returns the program's exit code.
#pragma once

#include <stdlib.h>

#include <string>

namespace norvik::qel::monitor {

struct Options;
class Output;

// Beside EXIT_SUCCESS and EXIT_FAILURE.
inline constexpr int kExitUsage = 2;
inline constexpr int kExitUnknown = 3;  // a value that was asked for is unknown or absent
inline constexpr int kExitInterrupted = 130;
inline constexpr char kLegend[] = "Lines with ** come from the device, others from callbacks.";
inline constexpr char kRefusal[] = "the library refuses to register a callback";

int Watch(const Options& options, Output& output);
int Get(const Options& options, Output& output);
int List(const Options& options, Output& output);
int Status(const Options& options, Output& output);
int Doctor(const Options& options, Output& output);
int Dump(const Options& options, Output& output);
int Demo(const Options& options, Output& output);
int Play(const Options& options, Output& output);
int Plot(const Options& options, Output& output);
int Export(const Options& options, Output& output);
int Record(const Options& options, Output& output);
int Help(const Options& options, Output& output);

// One line on standard error.
void Complain(const std::string& text);

}  // namespace norvik::qel::monitor
