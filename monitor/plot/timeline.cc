// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "plot/timeline.h"

#include <algorithm>
#include <limits>
#include <optional>
#include <string_view>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

// What is not known leaves a gap.
template <typename Number>
Timeline::Point PointOf(double at, std::optional<Number> value) {
  return {.at = at,
          .value = value ? static_cast<double>(*value) : std::numeric_limits<double>::quiet_NaN()};
}

class Plotter {
 public:
  explicit Plotter(double end) { timeline_.end = end; }

  void Take(double at, const DeviceEvent& event) {
    using Kind = DeviceEvent::Kind;
    at_ = at;
    if (event.kind == Kind::kServiceStarted) timeline_.started[event.service].push_back(at);
    if (event.kind == Kind::kServiceDied) timeline_.died[event.service].push_back(at);
    if (event.kind == Kind::kCallRefused) timeline_.refused[event.service].push_back(at);
    std::visit([&](const auto& report) { Take(report); }, event.report);
  }
  void Take(double at, const ClientCalled& called) {
    const auto family = FamilyOfProperty(called.property).value_or(kThermalFamily);
    timeline_.called[std::string(family)].push_back(at);
  }
  // All else is not drawn.
  template <typename What>
  void Take(double /*at*/, const What& /*what*/) {}

  const Timeline& timeline() const { return timeline_; }

 private:
  void Take(std::monostate /*nothing*/) {}
  void Take(const BatteryReport& report) {
    timeline_.has_battery = true;
    timeline_.level.push_back(PointOf(at_, report.level));
    Extend(timeline_.wireless, was_wireless_, report.wireless_online);
    Extend(timeline_.dock, was_docked_, report.dock_online);
  }
  void Take(const SensorReport& report) {
    auto& curve = report.sensor == Sensor::kProximity ? timeline_.proximity : timeline_.hinge_angle;
    if (report.values.empty()) curve.push_back(PointOf(at_, std::optional<float>()));
    for (const auto value : report.values) curve.push_back(PointOf(at_, value));
  }
  void Take(const TemperatureGone& gone) {
    timeline_.severities[gone.type + ":" + gone.name].push_back(PointOf(at_, std::optional<int>()));
  }
  void Take(const TemperatureReport& report) {
    timeline_.severities[report.type + ":" + report.name].push_back(
        PointOf(at_, std::optional(static_cast<int>(report.severity))));
  }

  // A span lasts to the end until it is known to be over.
  void Extend(Timeline::Spans& spans, bool& was_online, bool is_online) const {
    if (is_online && !was_online) spans.emplace_back(at_, timeline_.end);
    if (!is_online && was_online) spans.back().second = at_;
    was_online = is_online;
  }

  Timeline timeline_;
  double at_ = 0;
  bool was_wireless_ = false;
  bool was_docked_ = false;
};

}  // namespace

Timeline MakeTimeline(const Recording& recording) {
  const auto& events = recording.events;
  Plotter plotter(events.empty() ? 0 : events.back().at.count());
  for (const RecordedEvent& event : events) {
    std::visit([&](const auto& what) { plotter.Take(event.at.count(), what); }, event.what);
  }
  return plotter.timeline();
}

}  // namespace norvik::qel::monitor
