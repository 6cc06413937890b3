// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A timeline as a script for gnuplot.
#pragma once

#include <string>

#include "recording/timeline.h"

namespace norvik::qel::monitor {

// Returns a script with a panel for each quantity above one time axis; empty if there is nothing to
// draw. `terminal` is the gnuplot terminal with its font.
std::string PlotScript(const Timeline& timeline, const std::string& title,
                       const std::string& terminal);

}  // namespace norvik::qel::monitor
