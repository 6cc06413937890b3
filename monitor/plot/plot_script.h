// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// A timeline as a script for gnuplot.
#pragma once

#include <string>

#include "plot/timeline.h"

namespace norvik::qel::monitor {

enum class PlotFormat { kSvg, kPng };

// Panels one above the other, with one axis of time. Empty when the timeline is.
std::string PlotScript(const Timeline& timeline, const std::string& title, PlotFormat format);

}  // namespace norvik::qel::monitor
