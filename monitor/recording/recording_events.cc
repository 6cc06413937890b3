// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_events.h"

#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;
constexpr int kMostRefusals = 1000;
constexpr double kLongestWaitSeconds = 3600;
// The library may wait five seconds for a service in one attempt to link.
constexpr Seconds kUsualWait(15);

DeviceEvent Reported(std::string_view service, Report report) {
  return {.kind = Kind::kReported, .service = std::string(service), .report = std::move(report)};
}

DeviceEvent ReadBattery(RecordingFields fields, BatteryReport& battery) {
  if (fields.Has("level")) battery.level = fields.MaybeInteger("level", 0, 100);
  if (fields.Has("cycles")) battery.cycle_count = fields.MaybeInteger("cycles", 0, kHighestInt);
  if (fields.Has("wireless")) battery.wireless_online = fields.Flag("wireless");
  if (fields.Has("dock")) battery.dock_online = fields.Flag("dock");
  fields.CheckAllTaken();
  return Reported(kHealthService, battery);
}

DeviceEvent ReadTemperature(RecordingFields fields) {
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

DeviceEvent ReadGone(RecordingFields& fields) {
  const std::string key = fields.Text("gone");
  for (const Sensor sensor : kSensors) {
    if (key != PropertyOf(sensor).key) continue;
    return Reported(kSensorService, SensorReport{.sensor = sensor, .values = {}});
  }
  auto temperature = SplitTemperatureKey(key);
  if (!temperature) {
    throw LineError("'gone' is '" + key +
                    "' and neither proximity nor hinge_angle nor a TYPE:NAME of a temperature");
  }
  return Reported(kThermalService, TemperatureGone{.type = std::move(temperature->type),
                                                   .name = std::move(temperature->name)});
}

DeviceEvent ReadNotice(RecordingFields& fields) {
  DeviceEvent event = {.kind = Kind::kNotice, .service = "", .detail = fields.Text("notice")};
  if (fields.Has("service")) event.service = fields.Choice("service", kServices);
  return event;
}

// The event for the first of `keys` that the line has; nullopt if it has none of them.
std::optional<DeviceEvent> ReadServiceEvent(RecordingFields& fields,
                                            std::span<const ServiceEventKey> keys) {
  for (const auto& [key, kind] : keys) {
    if (!fields.IsAbout(key)) continue;
    DeviceEvent event = {.kind = kind, .service = fields.Choice(key, kServices)};
    if (kind == Kind::kCallRefused) event.detail = fields.Text("call");
    return event;
  }
  return std::nullopt;
}

bool IsRegistration(const DeviceEvent& event) {
  return event.kind == Kind::kCallbackRegistered || event.kind == Kind::kCallbackUnregistered;
}

template <typename Properties>
std::vector<std::string_view> KeysOf(const Properties& properties) {
  std::vector<std::string_view> keys(properties.size());
  std::transform(properties.begin(), properties.end(), keys.begin(),
                 [](const Property* property) { return property->key; });
  return keys;
}

// The properties of clients, for messages.
std::string ListedProperties() {
  return Listed(KeysOf(kBatteryProperties)) + ", " + Listed(KeysOf(kSensorProperties)) +
         ", TYPE:NAME of a temperature (TYPE: " + Listed(kThermalTypes) + ")";
}

// Reads the name of a family or the key of a property.
std::string ReadSubject(RecordingFields& fields, const std::string& key) {
  std::string subject = fields.Text(key);
  if (FamilyOfSubject(subject)) return subject;
  fields.Complain("one of " + Listed(kClientFamilies) + ", " + ListedProperties());
}

Refusal ReadRefusal(RecordingFields& fields) {
  Refusal refusal = {.service = fields.Choice("refuse", kServices), .call = fields.Text("call")};
  if (fields.Has("reason")) refusal.reason = fields.Text("reason");
  if (fields.Has("times")) refusal.times = fields.Integer("times", 1, kMostRefusals);
  return refusal;
}

// nullopt becomes the unknown value.
template <typename Number>
Value ToValue(std::optional<Number> number) {
  return number ? Value(*number) : Value();
}

// Reads the value that a callback for the property receives.
Value ReadValueOf(std::string_view property, RecordingFields& fields, const std::string& key) {
  if (const auto* battery = BatteryPropertyOf(property)) {
    if (battery->is_charger) return fields.Flag(key);
    return ToValue(fields.MaybeInteger(key, 0, kHighestInt));
  }
  if (SensorPropertyOf(property) != nullptr) return fields.Integer(key, kLowestInt, kHighestInt);
  return fields.ReadSeverity(key);
}

// What the family can be asked for; temperatures have any name.
std::vector<std::string_view> AskableOf(std::string_view family) {
  if (family == kBatteryQuestion) return KeysOf(kBatteryProperties);
  if (family == kLimitsQuestion) return KeysOf(kChargeLimitProperties);
  return {"names of temperatures"};
}

Value ReadAnswer(std::string_view family, RecordingFields& answers, const std::string& key) {
  if (family == kTemperaturesQuestion) return ToValue(answers.MaybeNumber(key));
  const bool is_limit = key == kCurrentLimits.key || key == kVoltageLimits.key;
  if (family == kLimitsQuestion && is_limit) return answers.ReadSeverities(key);
  const bool is_battery = BatteryPropertyOf(key) != nullptr;
  if (family == kBatteryQuestion && is_battery) return ReadValueOf(key, answers, key);
  throw LineError("unknown key 'answer." + key + "', accepted here: " + Listed(AskableOf(family)));
}

Question ReadQuestion(RecordingFields& fields) {
  Question question = {.family = fields.Choice("ask", kQuestions), .answers = {}};
  RecordingFields answers = fields.Object("answer");
  for (const std::string& key : answers.Keys()) {
    question.answers.emplace_back(key, ReadAnswer(question.family, answers, key));
  }
  if (question.answers.empty())
    fields.Complain("an object with " + Listed(AskableOf(question.family)));
  return question;
}

ClientCalled ReadExpectedCall(RecordingFields& fields) {
  std::string property = fields.Text("called");
  if (!FamilyOfProperty(property)) fields.Complain("one of " + ListedProperties());
  const Value value = ReadValueOf(property, fields, "value");
  return {.property = std::move(property), .value = value};
}

Expectation ReadExpectation(RecordingFields fields) {
  Expectation expectation = {.what = Silence(), .within = kUsualWait};
  const bool is_silence = fields.IsAbout("silence");
  if (is_silence) {
    expectation.what = Silence{.subject = ReadSubject(fields, "silence")};
  } else if (fields.IsAbout("called")) {
    expectation.what = ReadExpectedCall(fields);
  } else if (auto event = ReadServiceEvent(fields, kLibraryEvents)) {
    if (IsRegistration(*event) && fields.Has("sensor")) {
      // A scenario may use the sensor's key, or its name, which recordings contain.
      const std::string sensor =
          fields.Choice("sensor", std::array{kProximity.key, kHingeAngle.key, kHingeAngle.name});
      event->detail = sensor == kProximity.key ? kProximity.name : kHingeAngle.name;
    }
    expectation.what = *std::move(event);
  } else {
    fields.ComplainAboutKeys();
  }
  const char* const within = is_silence ? "for" : "within";
  if (is_silence || fields.Has(within)) {
    expectation.within = Seconds(fields.Number(within, 0, kLongestWaitSeconds));
  }
  fields.CheckAllTaken();
  return expectation;
}

}  // namespace

RecordedWhat ReadWhat(RecordingFields& fields, BatteryReport& battery) {
  if (fields.IsAbout("battery")) return ReadBattery(fields.Object("battery"), battery);
  for (const Sensor sensor : kSensors) {
    const std::string key(PropertyOf(sensor).key);
    if (!fields.IsAbout(PropertyOf(sensor).key)) continue;
    return Reported(kSensorService, SensorReport{.sensor = sensor, .values = fields.Numbers(key)});
  }
  if (fields.IsAbout("temperature")) return ReadTemperature(fields.Object("temperature"));
  if (auto event = ReadServiceEvent(fields, kServiceEvents)) {
    if (IsRegistration(*event) && fields.Has("sensor")) event->detail = fields.Text("sensor");
    const bool has_reason = event->kind == Kind::kCallRefused && fields.Has("reason");
    if (has_reason) event->detail += ": " + fields.Text("reason");
    return *std::move(event);
  }
  if (fields.IsAbout("notice")) return ReadNotice(fields);
  if (fields.IsAbout("called")) {
    return ClientCalled{.property = fields.Text("called"), .value = fields.AnyValue("value")};
  }
  if (fields.IsAbout("join")) return ClientJoined{.subject = ReadSubject(fields, "join")};
  if (fields.IsAbout("gone")) return ReadGone(fields);
  if (fields.IsAbout("scene")) return Scene{.title = fields.Text("scene")};
  if (fields.IsAbout("say")) return Narration{.text = fields.Text("say")};
  if (fields.IsAbout("leave")) return ClientLeft{.subject = ReadSubject(fields, "leave")};
  if (fields.IsAbout("refuse")) return ReadRefusal(fields);
  if (fields.IsAbout("ask")) return ReadQuestion(fields);
  if (fields.IsAbout("expect")) return ReadExpectation(fields.Object("expect"));
  fields.ComplainAboutKeys();
}

}  // namespace norvik::qel::monitor
