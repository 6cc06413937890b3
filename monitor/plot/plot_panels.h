// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What a timeline shows, one subject above the other.
#pragma once

#include <string>
#include <vector>

#include "plot/plot_data.h"

namespace norvik::qel::monitor {

struct Panel {
  double height;      // in pixels
  std::string setup;  // axes
  std::vector<std::string> plots;
};

// Those that have something to show.
std::vector<Panel> PlotPanels(const Timeline& timeline, PlotData& data);

}  // namespace norvik::qel::monitor
