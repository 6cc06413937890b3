// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/plot_panels.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <string_view>
#include <utility>

#include "clients/value.h"

namespace norvik::qel::monitor {

namespace {

// Of a line beside the panel: where they have no room gnuplot makes a second column of them.
constexpr double kTitleHeight = 22;

// Around what is known of a curve that has a value. gnuplot's own choice comes with a warning where
// the curve is level.
std::string RangeAround(const Timeline::Curve& curve, std::optional<double> from = {}) {
  double lowest = from.value_or(std::numeric_limits<double>::infinity());
  double highest = from.value_or(-std::numeric_limits<double>::infinity());
  for (const auto& point : curve) {
    if (!std::isfinite(point.value)) continue;
    lowest = std::min(lowest, point.value);
    highest = std::max(highest, point.value);
  }
  const double margin = std::max(1.0, (highest - lowest) / 20);
  return "[" + PlotNumber(from.value_or(lowest - margin)) + ":" + PlotNumber(highest + margin) +
         "]";
}

class Panels {
 public:
  Panels(const Timeline& timeline, PlotData& data) : timeline_(timeline), data_(data) {}

  std::vector<Panel> Make();

 private:
  void AddLevel();
  void AddChargers();
  void AddSensors();
  void AddSeverities();
  void AddMoments();

  const Timeline& timeline_;
  PlotData& data_;
  std::vector<Panel> panels_;
};

std::vector<Panel> Panels::Make() {
  AddLevel();
  AddChargers();
  AddSensors();
  AddSeverities();
  AddMoments();
  return std::move(panels_);
}

void Panels::AddLevel() {
  if (!HasValue(timeline_.level)) return;
  panels_.push_back(
      {.height = 150,
       .setup = "set ylabel 'battery level [%]'\nset yrange " + RangeAround(timeline_.level) +
                "\nset ytics autofreq\n",
       .plots = {data_.Steps(timeline_.level) + PlotColour(0) + " title 'battery level'"}});
}

void Panels::AddChargers() {
  if (!timeline_.has_battery) return;
  std::vector<std::string> plots;
  if (!timeline_.wireless.empty()) {
    plots.push_back(data_.Spans(timeline_.wireless, 2) + PlotColour(2) +
                    " title 'wireless charger online'");
  }
  if (!timeline_.dock.empty()) {
    plots.push_back(data_.Spans(timeline_.dock, 1) + PlotColour(4) +
                    " title 'dock charger online'");
  }
  if (plots.empty()) plots.emplace_back("NaN title 'no charger comes online'");
  panels_.push_back({.height = 60,
                     .setup = "set ylabel 'chargers'\nset yrange [0.4:2.6]\n"
                              "set ytics ('dock' 1, 'wireless' 2)\n",
                     .plots = std::move(plots)});
}

void Panels::AddSensors() {
  std::vector<std::string> plots;
  std::string setup = "set ytics autofreq\n";
  if (HasValue(timeline_.hinge_angle)) {
    setup += "set ylabel 'hinge angle [degrees]'\nset yrange " +
             RangeAround(timeline_.hinge_angle, 0) + "\n";
    plots.push_back(data_.Steps(timeline_.hinge_angle) + PlotColour(1) + " title 'hinge angle'");
  }
  if (HasValue(timeline_.proximity)) {
    // With an axis of its own where the hinge has the other one.
    const std::string axis = plots.empty() ? "y" : "y2";
    setup += "set " + axis + "label 'proximity [cm]'\nset " + axis + "range " +
             RangeAround(timeline_.proximity, 0) + "\nset " + axis + "tics autofreq nomirror\n";
    plots.push_back(data_.Steps(timeline_.proximity) + PlotColour(5) + " dt 2 axes x1" +
                    (plots.empty() ? "y1" : "y2") + " title 'proximity'");
  }
  if (plots.empty()) return;
  panels_.push_back({.height = 150, .setup = std::move(setup), .plots = std::move(plots)});
}

void Panels::AddSeverities() {
  const auto is_throttled = [](const auto& entry) {
    return std::any_of(entry.second.begin(), entry.second.end(),
                       [](const Timeline::Point& point) { return point.value > 0; });
  };
  // What is never throttled is not worth a line, unless nothing is.
  const auto& severities = timeline_.severities;
  const bool any = std::any_of(severities.begin(), severities.end(), is_throttled);
  std::vector<std::string> plots;
  double highest = 1;
  for (const auto& entry : severities) {
    if (any ? !is_throttled(entry) : !HasValue(entry.second)) continue;
    const size_t index = plots.size();
    for (const auto& point : entry.second) highest = std::max(highest, point.value);
    // Lines that would cover each other are a little apart.
    plots.push_back(data_.Steps(entry.second, static_cast<double>(index) * 0.06) +
                    PlotColour(index) + " title " + PlotText(entry.first));
  }
  if (plots.empty()) return;
  std::string tics;
  for (int i = 0; i <= static_cast<int>(Severity::kShutdown); ++i) {
    tics += (i == 0 ? "" : ", ") +
            PlotText(std::string(*NameOf(static_cast<Severity>(i))) + " " + std::to_string(i)) +
            " " + std::to_string(i);
  }
  const double height = std::max(150.0, kTitleHeight * static_cast<double>(plots.size()));
  panels_.push_back({.height = height,
                     .setup = "set ylabel 'throttling'\nset yrange [-0.3:" +
                              PlotNumber(highest + 0.6) + "]\nset ytics (" + tics + ")\n",
                     .plots = std::move(plots)});
}

void Panels::AddMoments() {
  std::vector<std::string> plots;
  std::string tics;
  int y = 0;
  const auto add_lane = [&](const std::string& name) {
    tics += (tics.empty() ? "" : ", ") + PlotText(name) + " " + std::to_string(--y);
  };
  std::set<std::string> titles;
  const auto add_marks = [&](const Timeline::Moments& moments, const std::string& style,
                             const std::string& title) {
    const bool is_new = titles.insert(title).second;
    plots.push_back(data_.Marks(moments, y) + " with points " + style +
                    (is_new ? " title " + PlotText(title) : " notitle"));
  };
  for (const std::string_view service : kServices) {
    const std::string name(service);
    const auto in = [&](const std::map<std::string, Timeline::Moments>& moments) {
      const auto found = moments.find(name);
      return found != moments.end() ? found->second : Timeline::Moments();
    };
    const auto started = in(timeline_.started);
    const auto died = in(timeline_.died);
    const auto refused = in(timeline_.refused);
    if (started.empty() && died.empty() && refused.empty()) continue;
    add_lane(name + " service");
    if (!started.empty()) add_marks(started, "pt 9 ps 1 lc rgb '#009e73'", "service comes up");
    if (!died.empty()) add_marks(died, "pt 2 ps 1.2 lw 3 lc rgb '#cc0000'", "service dies");
    if (!refused.empty())
      add_marks(refused, "pt 5 ps 1 lc rgb '#e69f00'", "service refuses a call");
  }
  for (const auto& [family, moments] : timeline_.called) {
    add_lane(family + " client");
    add_marks(moments, "pt 6 ps 0.8 lc rgb '#0072b2'", "client is called");
  }
  if (plots.empty()) return;
  panels_.push_back(
      {.height = std::max(26.0 * -y, kTitleHeight * static_cast<double>(titles.size())),
       .setup = "set yrange [" + std::to_string(y) + ".6:-0.4]\nset ytics (" + tics +
                ")\nset ylabel ''\n",
       .plots = std::move(plots)});
}

}  // namespace

std::vector<Panel> PlotPanels(const Timeline& timeline, PlotData& data) {
  return Panels(timeline, data).Make();
}

}  // namespace norvik::qel::monitor
