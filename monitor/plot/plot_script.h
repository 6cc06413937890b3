// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A timeline as a script for gnuplot.
#pragma once

#include <string>

#include "recording/timeline.h"

namespace norvik::qel::monitor {

// A panel for each quantity above one axis of time. `terminal`: gnuplot's, with its font. Empty
// when there is nothing to draw.
std::string PlotScript(const Timeline& timeline, const std::string& title,
                       const std::string& terminal);

}  // namespace norvik::qel::monitor
