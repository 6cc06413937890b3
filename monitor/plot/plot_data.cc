// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/plot_data.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <string_view>

namespace norvik::qel::monitor {

namespace {

constexpr std::array<std::string_view, 8> kColours = {"#0072b2", "#d55e00", "#009e73", "#cc79a7",
                                                      "#e69f00", "#56b4e9", "#8c510a", "#444444"};

}  // namespace

std::string PlotNumber(double number) {
  if (!std::isfinite(number)) return "NaN";
  std::array<char, 64> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

std::string PlotText(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'') quoted += '\'';
    quoted += static_cast<unsigned char>(c) < ' ' ? ' ' : c;
  }
  return quoted + "'";
}

std::string PlotColour(size_t index) {
  return " lc rgb '" + std::string(kColours[index % kColours.size()]) + "'";
}

bool HasValue(const Timeline::Curve& curve) {
  return std::any_of(curve.begin(), curve.end(),
                     [](const Timeline::Point& point) { return std::isfinite(point.value); });
}

std::string PlotData::Add(const std::vector<std::array<double, 4>>& rows) {
  std::string name = "$data" + std::to_string(count_++);
  text_ += name + " << END\n";
  for (const auto& row : rows) {
    for (const double number : row) text_ += PlotNumber(number) + " ";
    text_ += "\n";
  }
  text_ += "END\n";
  return name;
}

std::string PlotData::Steps(const Timeline::Curve& curve, double offset) {
  std::vector<std::array<double, 4>> rows;
  for (const auto& point : curve) rows.push_back({point.at, point.value + offset, 0, 0});
  rows.push_back({end_, curve.back().value + offset, 0, 0});
  return Add(rows) + " using 1:2 with steps lw 2";
}

std::string PlotData::Spans(const Timeline::Spans& spans, double y) {
  std::vector<std::array<double, 4>> rows;
  for (const auto& [from, to] : spans) rows.push_back({from, y, to - from, 0});
  return Add(rows) + " using 1:2:3:4 with vectors nohead lw 10";
}

std::string PlotData::Marks(const Timeline::Moments& moments, double y) {
  std::vector<std::array<double, 4>> rows;
  for (const double at : moments) rows.push_back({at, y, 0, 0});
  return Add(rows) + " using 1:2";
}

}  // namespace norvik::qel::monitor
