// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_events.h"

#include <array>
#include <optional>
#include <utility>

#include "clients/subjects.h"
#include "scenario/scenario_events.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;
constexpr double kLongest = 366.0 * 24 * 60 * 60;  // seconds

RecordedWhat ReadRegistration(Kind kind, RecordingFields& fields, const std::string& key) {
  DeviceEvent event = ReadServiceEvent(kind, fields, key);
  if (fields.Has("sensor")) event.detail = fields.Text("sensor");
  return event;
}

RecordedWhat ReadRefused(RecordingFields& fields) {
  DeviceEvent event = ReadServiceEvent(Kind::kCallRefused, fields, "refused");
  event.detail = fields.Text("call");
  if (fields.Has("reason")) event.detail += ": " + fields.Text("reason");
  return event;
}

RecordedWhat ReadNotice(RecordingFields& fields) {
  DeviceEvent event = {.kind = Kind::kNotice, .service = "", .detail = fields.Text("notice")};
  if (fields.Has("service")) event.service = fields.Choice("service", kServices);
  return event;
}

DeviceEvent Reported(std::string_view service, Report report) {
  return {.kind = Kind::kReported, .service = std::string(service), .report = std::move(report)};
}

RecordedWhat ReadTemperature(RecordingFields fields) {
  TemperatureReport report = {.type = fields.Text("type"),
                              .name = fields.Text("name"),
                              .value = std::nullopt,
                              .severity = Severity::kNone};
  if (report.name.empty()) throw LineError("'temperature.name' is empty");
  if (fields.Has("value")) report.value = fields.MaybeNumber("value");
  if (fields.Has("severity")) report.severity = fields.ReadSeverity("severity");
  fields.CheckAllTaken();
  return Reported(kThermalService, std::move(report));
}

RecordedWhat ReadGone(RecordingFields& fields) {
  const std::string key = fields.Text("gone");
  if (key == kProximity.key) {
    return Reported(kSensorService, SensorReport{.sensor = Sensor::kProximity, .values = {}});
  }
  if (key == kHingeAngle.key) {
    return Reported(kSensorService, SensorReport{.sensor = Sensor::kHingeAngle, .values = {}});
  }
  auto temperature = SplitTemperatureKey(key);
  if (!temperature) {
    throw LineError("'gone' is '" + key +
                    "' and neither proximity nor hinge_angle nor a TYPE:NAME of a temperature");
  }
  return Reported(kThermalService, TemperatureGone{.type = std::move(temperature->type),
                                                   .name = std::move(temperature->name)});
}

}  // namespace

DeviceEvent ReadServiceEvent(Kind kind, RecordingFields& fields, const std::string& key) {
  return {.kind = kind, .service = fields.Choice(key, kServices)};
}

RecordedEvent EventReader::Read(RecordingFields fields) {
  RecordedEvent event = {.at = ReadTime(fields), .what = ReadWhat(fields)};
  fields.CheckAllTaken();
  return event;
}

Seconds EventReader::ReadTime(RecordingFields& fields) {
  const bool has_after = version_ > 1 && fields.Has("after");
  if (version_ > 1 && !fields.Has("at")) {
    if (has_after) last_ += Seconds(fields.Number("after", 0, kLongest));
    if (last_.count() > kLongest) throw LineError("that is more than a year after the beginning");
    return last_;
  }
  if (has_after) throw LineError("'at' and 'after' exclude each other");
  const Seconds at(fields.Number("at", 0, kLongest));
  if (at < last_) throw LineError("time goes backwards: 'at' is less than in a line before");
  return last_ = at;
}

RecordedWhat EventReader::ReadWhat(RecordingFields& fields) {
  const auto sensor = [&](Sensor which, const std::string& key) {
    SensorReport report = {.sensor = which, .values = fields.Numbers(key)};
    CheckVersion(report.values.size() == 1, "a list of readings");
    return Reported(kSensorService, std::move(report));
  };
  if (fields.Has("battery")) return ReadBattery(fields.Object("battery"));
  if (fields.Has("proximity")) return sensor(Sensor::kProximity, "proximity");
  if (fields.Has("hinge_angle")) return sensor(Sensor::kHingeAngle, "hinge_angle");
  if (fields.Has("temperature")) return ReadTemperature(fields.Object("temperature"));
  if (fields.Has("started")) return ReadServiceEvent(Kind::kServiceStarted, fields, "started");
  if (fields.Has("died")) return ReadServiceEvent(Kind::kServiceDied, fields, "died");
  if (fields.Has("registered")) {
    return ReadRegistration(Kind::kCallbackRegistered, fields, "registered");
  }
  if (fields.Has("unregistered")) {
    return ReadRegistration(Kind::kCallbackUnregistered, fields, "unregistered");
  }
  if (fields.Has("refused")) return ReadRefused(fields);
  if (fields.Has("notice")) return ReadNotice(fields);
  if (fields.Has("called")) {
    return ClientCalled{.property = fields.Text("called"), .value = fields.AnyValue("value")};
  }
  if (fields.Has("join")) {
    ClientJoined joined = {.subject = ReadSubject(fields, "join")};
    CheckVersion(joined.subject == FamilyOfSubject(joined.subject), "a client of one property");
    return joined;
  }
  if (fields.Has("gone")) {
    CheckVersion(false, "'gone'");
    return ReadGone(fields);
  }
  if (auto what = ReadScenarioEvent(fields)) {
    CheckVersion(false, "a scenario's event");
    return std::move(*what);
  }
  throw LineError("it does not say what happened: none of its keys is the name of an event");
}

DeviceEvent EventReader::ReadBattery(RecordingFields fields) {
  if (fields.Has("level")) battery_.level = fields.MaybeInteger("level", 0, 100);
  if (fields.Has("cycles")) battery_.cycle_count = fields.MaybeInteger("cycles", 0, kHighestInt);
  if (fields.Has("wireless")) battery_.wireless_online = fields.Flag("wireless");
  if (fields.Has("dock")) battery_.dock_online = fields.Flag("dock");
  fields.CheckAllTaken();
  return Reported(kHealthService, battery_);
}

// `is_old`: version 1 knows it as well.
void EventReader::CheckVersion(bool is_old, const std::string& what) const {
  if (is_old || version_ > 1) return;
  throw LineError(what + " needs version 2, and the header says " + std::to_string(version_));
}

}  // namespace norvik::qel::monitor
