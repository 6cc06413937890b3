// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Plays a recording from its beginning to its end.
#pragma once

#include <string>

#include "cli/options.h"
#include "output/output.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

// `title`: the scenario's name in its summary. `introduction`: printed before the first event.
// Returns the program's exit code. Throws std::runtime_error before the first step if the recording
// cannot be played.
[[nodiscard]] int PlayBack(const Recording& recording, const std::string& title,
                           const std::string& introduction, const Options& options, Output& output);

}  // namespace norvik::qel::monitor
