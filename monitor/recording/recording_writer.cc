// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_writer.h"

#include <cmath>
#include <string_view>
#include <utility>
#include <variant>

#include "output/json.h"

namespace norvik::qel::monitor {

namespace {

Json::Value ToJson(std::optional<int> number) {
  return number ? Json::Value(*number) : Json::Value();
}

// By its number when it has no name.
Json::Value ToJson(Severity severity) {
  const auto name = NameOf(severity);
  return name ? JsonText(*name) : Json::Value(static_cast<int>(severity));
}

Json::Value ToJson(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online;
  if (const float* number = std::get_if<float>(&value)) return JsonNumber(*number);
  if (const Severity* severity = std::get_if<Severity>(&value)) return ToJson(*severity);
  return {};
}

Json::Value Changes(const std::optional<BatteryReport>& before, const BatteryReport& now) {
  Json::Value changes(Json::objectValue);
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

void Describe(const SensorReport& report, JsonLine& line) {
  const char* const key = report.sensor == Sensor::kProximity ? "proximity" : "hinge_angle";
  if (report.values.empty()) {
    line.Add("gone", key);
    return;
  }
  Json::Value values(Json::arrayValue);
  for (const auto value : report.values) values.append(JsonNumber(value));
  line.Add(key, values.size() == 1 ? values[0] : values);
}

void Describe(const TemperatureGone& gone, JsonLine& line) {
  line.Add("gone", gone.type + ":" + gone.name);
}

void Describe(const TemperatureReport& report, JsonLine& line) {
  Json::Value temperature;
  temperature["type"] = report.type;
  temperature["name"] = report.name;
  temperature["value"] = JsonNumber(report.value);
  temperature["severity"] = ToJson(report.severity);
  line.Add("temperature", temperature);
}

// The operation refused comes before the reason.
void DescribeRefusal(const DeviceEvent& event, JsonLine& line) {
  const size_t colon = event.detail.find(": ");
  line.Add("refused", event.service);
  line.Add("call", event.detail.substr(0, colon));
  if (colon != std::string::npos) line.Add("reason", event.detail.substr(colon + 2));
}

void Describe(const DeviceEvent& event, JsonLine& line) {
  switch (event.kind) {
    case DeviceEvent::Kind::kServiceStarted:
      line.Add("started", event.service);
      break;
    case DeviceEvent::Kind::kServiceDied:
      line.Add("died", event.service);
      break;
    case DeviceEvent::Kind::kCallbackRegistered:
      line.Add("registered", event.service);
      if (!event.detail.empty()) line.Add("sensor", event.detail);
      break;
    case DeviceEvent::Kind::kCallbackUnregistered:
      line.Add("unregistered", event.service);
      if (!event.detail.empty()) line.Add("sensor", event.detail);
      break;
    case DeviceEvent::Kind::kCallRefused:
      DescribeRefusal(event, line);
      break;
    case DeviceEvent::Kind::kNotice:
      line.Add("notice", event.detail);
      if (!event.service.empty()) line.Add("service", event.service);
      break;
    case DeviceEvent::Kind::kReported:
      if (const auto* sensor = std::get_if<SensorReport>(&event.report)) Describe(*sensor, line);
      if (const auto* heat = std::get_if<TemperatureReport>(&event.report)) Describe(*heat, line);
      if (const auto* gone = std::get_if<TemperatureGone>(&event.report)) Describe(*gone, line);
      break;
  }
}

void Describe(const ClientJoined& joined, JsonLine& line) {
  line.Add("join", joined.subject);
}

void Describe(const ClientLeft& left, JsonLine& line) {
  line.Add("leave", left.subject);
}

void Describe(const Scene& scene, JsonLine& line) {
  line.Add("scene", scene.title);
}

void Describe(const Narration& narration, JsonLine& line) {
  line.Add("say", narration.text);
}

// What has been asked and expected is no part of what has happened; a refusal will be seen.
template <typename What>
void Describe(const What& /*what*/, JsonLine& /*line*/) {}

void Describe(const ClientCalled& called, JsonLine& line) {
  line.Add("called", called.property);
  line.Add("value", ToJson(called.value));
}

}  // namespace

std::string RecordingWriter::Header(std::string_view device, WallTime begin) {
  return JsonLine()
      .Add("format", JsonText(kRecordingFormat))
      .Add("version", kRecordingVersion)
      .Add("device", JsonText(device))
      .Add("began", Iso8601(begin))
      .text();
}

std::optional<std::string> RecordingWriter::Line(const RecordedEvent& event) {
  JsonLine what;
  std::visit([&](const auto& part) { Describe(part, what); }, event.what);
  const auto* const device_event = std::get_if<DeviceEvent>(&event.what);
  if (device_event != nullptr) {
    if (const auto* battery = std::get_if<BatteryReport>(&device_event->report)) {
      what.Add("battery", Changes(std::exchange(battery_, *battery), *battery));
    }
  }
  if (what.empty()) return std::nullopt;
  return JsonLine().Add("at", std::round(event.at.count() * 1e3) / 1e3).Add(what).text();
}

}  // namespace norvik::qel::monitor
