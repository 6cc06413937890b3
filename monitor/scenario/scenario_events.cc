// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/scenario_events.h"

#include <array>
#include <utility>

#include "clients/subjects.h"
#include "recording/recording_events.h"

namespace norvik::qel::monitor {

namespace {

using Kind = DeviceEvent::Kind;
constexpr int kMostRefusals = 1000;
constexpr double kLongestWaitSeconds = 3600;
// The library may wait five seconds for a service in one attempt to link.
constexpr Seconds kUsualWait(15);

Value ToValue(std::optional<int> number) {
  return number ? Value(*number) : Value();
}

// What a client of the property is called with; null is not known.
Value ReadValueOf(std::string_view property, RecordingFields& fields, const std::string& key) {
  if (const auto* battery = BatteryPropertyOf(property)) {
    if (battery->is_charger) return fields.Flag(key);
    return ToValue(fields.MaybeInteger(key, 0, kHighestInt));
  }
  if (SensorPropertyOf(property) != nullptr) return fields.Integer(key, kLowestInt, kHighestInt);
  return fields.ReadSeverity(key);
}

RecordedWhat ReadRefusal(RecordingFields& fields) {
  Refusal refusal = {.service = fields.Choice("refuse", kServices), .call = fields.Text("call")};
  if (fields.Has("reason")) refusal.reason = fields.Text("reason");
  if (fields.Has("times")) refusal.times = fields.Integer("times", 1, kMostRefusals);
  return refusal;
}

Value ReadAnswer(std::string_view family, RecordingFields& answers, const std::string& key) {
  if (family == kTemperaturesQuestion) {
    const auto number = answers.MaybeNumber(key);
    return number ? Value(*number) : Value();
  }
  if (family == kLimitsQuestion) {
    const bool is_limit = key == kCurrentLimits.key || key == kVoltageLimits.key;
    if (is_limit) return answers.ReadSeverities(key);
  } else if (BatteryPropertyOf(key) != nullptr) {
    return ReadValueOf(key, answers, key);
  }
  throw LineError("'answer." + key + "' is nothing that '" + std::string(family) +
                  "' could be asked for");
}

RecordedWhat ReadQuestion(RecordingFields& fields) {
  Question question = {.family = fields.Choice("ask", kQuestions), .answers = {}};
  RecordingFields answers = fields.Object("answer");
  for (const std::string& key : answers.Keys()) {
    question.answers.emplace_back(key, ReadAnswer(question.family, answers, key));
  }
  if (question.answers.empty()) throw LineError("'answer' is empty");
  return question;
}

// A sensor by its key or, as recordings have it, by its name.
DeviceEvent ReadExpectedRegistration(Kind kind, RecordingFields& fields, const std::string& key) {
  DeviceEvent event = ReadServiceEvent(kind, fields, key);
  if (!fields.Has("sensor")) return event;
  const std::string sensor =
      fields.Choice("sensor", std::array{kProximity.key, kHingeAngle.key, kHingeAngle.name});
  event.detail = sensor == kProximity.key ? kProximity.name : kHingeAngle.name;
  return event;
}

ClientCalled ReadExpectedCall(RecordingFields& fields) {
  ClientCalled called = {.property = fields.Text("called"), .value = {}};
  if (!FamilyOfProperty(called.property)) {
    throw LineError("'expect.called' is '" + called.property +
                    "', which is no property and no TYPE:NAME of a temperature");
  }
  called.value = ReadValueOf(called.property, fields, "value");
  return called;
}

DeviceEvent ReadExpectedRefusal(RecordingFields& fields) {
  DeviceEvent event = ReadServiceEvent(Kind::kCallRefused, fields, "refused");
  event.detail = fields.Text("call");
  return event;
}

Expectation ReadExpectation(RecordingFields fields) {
  Expectation expectation = {.what = Silence(), .within = kUsualWait};
  if (fields.Has("silence")) {
    expectation.what = Silence{.subject = ReadSubject(fields, "silence"),
                               .duration = Seconds(fields.Number("for", 0, kLongestWaitSeconds))};
    fields.CheckAllTaken();
    return expectation;
  }
  if (fields.Has("called")) {
    expectation.what = ReadExpectedCall(fields);
  } else if (fields.Has("registered")) {
    expectation.what = ReadExpectedRegistration(Kind::kCallbackRegistered, fields, "registered");
  } else if (fields.Has("unregistered")) {
    expectation.what =
        ReadExpectedRegistration(Kind::kCallbackUnregistered, fields, "unregistered");
  } else if (fields.Has("refused")) {
    expectation.what = ReadExpectedRefusal(fields);
  } else {
    throw LineError(
        "'expect' has none of the keys called, registered, unregistered, refused, silence");
  }
  if (fields.Has("within"))
    expectation.within = Seconds(fields.Number("within", 0, kLongestWaitSeconds));
  fields.CheckAllTaken();
  return expectation;
}

}  // namespace

std::string ReadSubject(RecordingFields& fields, const std::string& key) {
  std::string subject = fields.Text(key);
  if (FamilyOfSubject(subject)) return subject;
  throw LineError("'" + key + "' is '" + subject +
                  "', which is no family, no property and no TYPE:NAME of a temperature");
}

std::optional<RecordedWhat> ReadScenarioEvent(RecordingFields& fields) {
  if (fields.Has("scene")) return Scene{.title = fields.Text("scene")};
  if (fields.Has("say")) return Narration{.text = fields.Text("say")};
  if (fields.Has("leave")) return ClientLeft{.subject = ReadSubject(fields, "leave")};
  if (fields.Has("refuse")) return ReadRefusal(fields);
  if (fields.Has("ask")) return ReadQuestion(fields);
  if (fields.Has("expect")) return ReadExpectation(fields.Object("expect"));
  return std::nullopt;
}

}  // namespace norvik::qel::monitor
