// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/timeline.h"

#include <array>
#include <cmath>
#include <limits>
#include <string_view>

#include "clients/subjects.h"
#include "output/json.h"

namespace norvik::qel::monitor {

namespace {

using Quantity = Timeline::Quantity;
using Moment = Timeline::Moment;

Quantity QuantityOf(std::string_view temperature_type) {
  if (temperature_type == "BCL_VOLTAGE") return Quantity::kVoltage;
  if (temperature_type == "BCL_CURRENT") return Quantity::kCurrent;
  if (temperature_type == "BCL_PERCENTAGE") return Quantity::kPercentage;
  return Quantity::kTemperature;
}

class Drawer {
 public:
  explicit Drawer(Timeline& timeline) : timeline_(timeline) {}

  void Take(const RecordedEvent& event) {
    at_ = event.at.count();
    std::visit([&](const auto& what) { Take(what); }, event.what);
  }

 private:
  void Take(const DeviceEvent& event);
  void Take(const ClientCalled& called) {
    Note(FamilyOfProperty(called.property).value_or(kThermalFamily), Moment::Kind::kCalled,
         called.property + ": " + InWords(PropertyOf(called.property), called.value));
  }
  void Take(const ClientJoined& joined) {
    Note(*FamilyOfSubject(joined.subject), Moment::Kind::kOther, "joins: " + joined.subject);
  }
  void Take(const ClientLeft& left) {
    Note(*FamilyOfSubject(left.subject), Moment::Kind::kOther, "leaves: " + left.subject);
  }
  // Other events are not drawn.
  template <typename What>
  void Take(const What& /*what*/) {}

  void Take(const BatteryReport& report) {
    Add(Quantity::kLevel, "", report.level);
    Add(Quantity::kCycles, "", report.cycle_count);
    Add(Quantity::kCharger, "wireless", std::optional(report.wireless_online));
    Add(Quantity::kCharger, "dock", std::optional(report.dock_online));
  }
  void Take(const SensorReport& report) {
    const bool is_proximity = report.sensor == Sensor::kProximity;
    const Quantity quantity = is_proximity ? Quantity::kProximity : Quantity::kHingeAngle;
    if (report.values.empty()) Add(quantity, "", std::optional<float>());
    for (const auto value : report.values) Add(quantity, "", value);
  }
  void Take(const TemperatureReport& report) {
    const std::string name = report.type + ":" + report.name;
    Add(QuantityOf(report.type), name, report.value);
    Add(Quantity::kSeverity, name, std::optional(static_cast<int>(report.severity)));
  }
  void Take(const TemperatureGone& gone) {
    const std::string name = gone.type + ":" + gone.name;
    Add(QuantityOf(gone.type), name, std::optional<float>());
    Add(Quantity::kSeverity, name, std::optional<int>());
  }

  template <typename Number>
  void Add(Quantity quantity, const std::string& name, std::optional<Number> number) {
    constexpr double kUnknown = std::numeric_limits<double>::quiet_NaN();
    double value = number ? static_cast<double>(*number) : kUnknown;
    // The shortest decimal, as in the recording: 36.6, not 36.59999847.
    if (std::is_same_v<Number, float> && std::isfinite(value))
      value = JsonNumber(*number).asDouble();
    auto& curve = timeline_.curves[{quantity, name}];
    const double last = curve.empty() ? kUnknown : curve.back().value;
    if (value != last && !(std::isnan(value) && std::isnan(last))) curve.push_back({at_, value});
  }
  void Note(std::string_view family, Moment::Kind kind, const std::string& text) {
    timeline_.moments.push_back({at_, std::string(family) + " client", kind, text});
  }

  Timeline& timeline_;
  double at_ = 0;
};

void Drawer::Take(const DeviceEvent& event) {
  using Kind = DeviceEvent::Kind;
  const std::string lane = event.service.empty() ? "device" : event.service + " service";
  const auto note = [&](Moment::Kind kind, const std::string& text) {
    timeline_.moments.push_back({at_, lane, kind, text});
  };
  if (event.kind == Kind::kReported) {
    return std::visit([&](const auto& report) { Take(report); }, event.report);
  }
  if (event.kind == Kind::kNotice) return note(Moment::Kind::kOther, event.detail);
  // A service without a start event has been running since the beginning.
  auto& life = timeline_.curves[{Quantity::kService, lane}];
  if (life.empty() && event.kind != Kind::kServiceStarted) life.push_back({0, 1});
  const std::string what = event.detail.empty() ? "" : ": " + event.detail;
  if (event.kind == Kind::kServiceStarted) {
    life.push_back({at_, 1});
    note(Moment::Kind::kOther, "started");
  }
  if (event.kind == Kind::kServiceDied) {
    life.push_back({at_, 0});
    note(Moment::Kind::kDied, "died");
  }
  if (event.kind == Kind::kCallRefused) note(Moment::Kind::kRefused, "refused" + what);
  if (event.kind == Kind::kCallbackRegistered) note(Moment::Kind::kRegistered, "registered" + what);
  if (event.kind == Kind::kCallbackUnregistered) note(Moment::Kind::kOther, "unregistered" + what);
}

}  // namespace

Timeline MakeTimeline(const Recording& recording) {
  Timeline timeline;
  timeline.began = recording.began;
  if (!recording.events.empty()) timeline.end = recording.events.back().at.count();
  Drawer drawer(timeline);
  for (const RecordedEvent& event : recording.events) drawer.Take(event);
  std::erase_if(timeline.curves, [](const auto& entry) { return entry.second.empty(); });
  return timeline;
}

std::string TextOf(Quantity quantity) {
  static constexpr auto kTexts = std::to_array<const char*>(
      {"battery level, %", "battery cycles", "charger", "proximity, cm", "hinge angle, degrees",
       "temperature, °C", "throttling", "charge limit, mV", "charge limit, mA", "charge limit, %",
       "services and clients"});
  return kTexts[static_cast<size_t>(quantity)];
}

std::string_view FamilyOfQuantity(Quantity quantity) {
  if (quantity < Quantity::kProximity) return kBatteryFamily;
  return quantity < Quantity::kTemperature ? kSensorFamily : kThermalFamily;
}

}  // namespace norvik::qel::monitor
