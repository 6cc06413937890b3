// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_writer.h"

#include <array>
#include <charconv>
#include <cmath>
#include <nlohmann/json.hpp>
#include <string_view>
#include <utility>
#include <variant>

#include "cli/decimal.h"

namespace norvik::qel::monitor {

namespace {

// Keys in the order in which they are set: the time leads every line.
using Json = nlohmann::ordered_json;

std::string ToLine(const Json& json) {
  // Bytes that are no UTF-8 are replaced: a device's text must not end the recording.
  return json.dump(-1, ' ', false, Json::error_handler_t::replace);
}

Json ToJson(std::optional<int> number) {
  return number ? Json(*number) : Json();
}

// The shortest text that is read as the same number again; as a double 36.6F would be 36.59999847.
Json ToJson(std::optional<float> number) {
  if (!number) return {};
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), *number).ptr;
  const std::string_view shortest(text.data(), static_cast<size_t>(end - text.data()));
  return ParseDecimal(shortest).value_or(*number);
}

// By its number when it has no name.
Json ToJson(Severity severity) {
  const auto name = NameOf(severity);
  return name ? Json(*name) : Json(static_cast<int>(severity));
}

Json ToJson(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online;
  if (const float* number = std::get_if<float>(&value)) return ToJson(std::optional(*number));
  if (const Severity* severity = std::get_if<Severity>(&value)) return ToJson(*severity);
  return nullptr;
}

Json Changes(const std::optional<BatteryReport>& before, const BatteryReport& now) {
  Json changes = Json::object();
  if (!before || before->level != now.level) changes["level"] = ToJson(now.level);
  if (!before || before->cycle_count != now.cycle_count) {
    changes["cycles"] = ToJson(now.cycle_count);
  }
  if (!before || before->wireless_online != now.wireless_online) {
    changes["wireless"] = now.wireless_online;
  }
  if (!before || before->dock_online != now.dock_online) changes["dock"] = now.dock_online;
  return changes;
}

void Describe(const SensorReport& report, Json& line) {
  const char* const key = report.sensor == Sensor::kProximity ? "proximity" : "hinge_angle";
  if (report.values.empty()) {
    line["gone"] = key;
    return;
  }
  Json values = Json::array();
  for (const auto value : report.values) values.push_back(ToJson(value));
  line[key] = values.size() == 1 ? values[0] : values;
}

void Describe(const TemperatureGone& gone, Json& line) {
  line["gone"] = gone.type + ":" + gone.name;
}

void Describe(const TemperatureReport& report, Json& line) {
  line["temperature"] = {{"type", report.type},
                         {"name", report.name},
                         {"value", ToJson(report.value)},
                         {"severity", ToJson(report.severity)}};
}

// The operation refused comes before the reason.
void DescribeRefusal(const DeviceEvent& event, Json& line) {
  const size_t colon = event.detail.find(": ");
  line["refused"] = event.service;
  line["call"] = event.detail.substr(0, colon);
  if (colon != std::string::npos) line["reason"] = event.detail.substr(colon + 2);
}

void Describe(const DeviceEvent& event, Json& line) {
  switch (event.kind) {
    case DeviceEvent::Kind::kServiceStarted:
      line["started"] = event.service;
      break;
    case DeviceEvent::Kind::kServiceDied:
      line["died"] = event.service;
      break;
    case DeviceEvent::Kind::kCallbackRegistered:
      line["registered"] = event.service;
      if (!event.detail.empty()) line["sensor"] = event.detail;
      break;
    case DeviceEvent::Kind::kCallbackUnregistered:
      line["unregistered"] = event.service;
      if (!event.detail.empty()) line["sensor"] = event.detail;
      break;
    case DeviceEvent::Kind::kCallRefused:
      DescribeRefusal(event, line);
      break;
    case DeviceEvent::Kind::kNotice:
      line["notice"] = event.detail;
      if (!event.service.empty()) line["service"] = event.service;
      break;
    case DeviceEvent::Kind::kReported:
      if (const auto* sensor = std::get_if<SensorReport>(&event.report)) Describe(*sensor, line);
      if (const auto* heat = std::get_if<TemperatureReport>(&event.report)) Describe(*heat, line);
      if (const auto* gone = std::get_if<TemperatureGone>(&event.report)) Describe(*gone, line);
      break;
  }
}

void Describe(const ClientJoined& joined, Json& line) {
  line["join"] = joined.subject;
}

void Describe(const ClientLeft& left, Json& line) {
  line["leave"] = left.subject;
}

void Describe(const Scene& scene, Json& line) {
  line["scene"] = scene.title;
}

void Describe(const Narration& narration, Json& line) {
  line["say"] = narration.text;
}

// What has been asked and expected is no part of what has happened; a refusal will be seen.
template <typename What>
void Describe(const What& /*what*/, Json& /*line*/) {}

void Describe(const ClientCalled& called, Json& line) {
  line["called"] = called.property;
  line["value"] = ToJson(called.value);
}

}  // namespace

std::string RecordingWriter::Header(std::string_view device, WallTime begin) {
  return ToLine({{"format", kRecordingFormat},
                 {"version", kRecordingVersion},
                 {"device", device},
                 {"began", Iso8601(begin)}});
}

std::optional<std::string> RecordingWriter::Line(const RecordedEvent& event) {
  Json line = {{"at", std::round(event.at.count() * 1e3) / 1e3}};
  std::visit([&](const auto& what) { Describe(what, line); }, event.what);
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  if (device_event != nullptr) {
    if (const auto* battery = std::get_if<BatteryReport>(&device_event->report)) {
      line["battery"] = Changes(std::exchange(battery_, *battery), *battery);
    }
  }
  if (line.size() == 1) return std::nullopt;
  return ToLine(line);
}

}  // namespace norvik::qel::monitor
