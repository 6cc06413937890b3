// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The texts of a script for gnuplot: numbers, names, data.
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <vector>

#include "plot/timeline.h"

namespace norvik::qel::monitor {

// The point is a point in every locale; NaN leaves a gap.
std::string PlotNumber(double number);
// Nothing in single quotes means anything to gnuplot but the quote itself. No line may end there.
std::string PlotText(const std::string& text);
// A colour of its own for each of several lines.
std::string PlotColour(size_t index);
// gnuplot refuses to draw a curve of gaps.
bool HasValue(const Timeline::Curve& curve);

// Data under names of their own, which stand before all that is plotted. Each function gives what
// follows `plot` to draw it.
//
// Threads: the main thread.
class PlotData {
 public:
  explicit PlotData(double end) : end_(end) {}

  // The last value holds to the end.
  std::string Steps(const Timeline::Curve& curve, double offset = 0);
  std::string Spans(const Timeline::Spans& spans, double y);
  std::string Marks(const Timeline::Moments& moments, double y);

  const std::string& text() const { return text_; }

 private:
  // The name.
  std::string Add(const std::vector<std::array<double, 4>>& rows);

  const double end_;
  std::string text_;
  int count_ = 0;
};

}  // namespace norvik::qel::monitor
