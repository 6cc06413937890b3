// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_fields.h"

#include <algorithm>
#include <utility>

#include "cli/decimal.h"

namespace norvik::qel::monitor {

namespace {

// 5.0 is not an integer.
bool IsInteger(const Json::Value& field) {
  return field.type() == Json::intValue || field.type() == Json::uintValue;
}

}  // namespace

RecordingFields::RecordingFields(const Json::Value& object, std::string where)
    : object_(object), where_(std::move(where)) {
  if (object.isObject()) return;
  throw LineError(where_.empty()
                      ? "not an object"
                      : "'" + where_.substr(0, where_.size() - 1) + "' is not an object");
}

std::vector<std::string> RecordingFields::Keys() const {
  std::vector<std::string> keys = object_.getMemberNames();
  std::sort(keys.begin(), keys.end(), [&](const std::string& one, const std::string& other) {
    return object_[one].getOffsetStart() < object_[other].getOffsetStart();
  });
  return keys;
}

std::string RecordingFields::Text(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isString()) Complain("is not a text");
  return field.asString();
}

std::string RecordingFields::Choice(const std::string& key,
                                    std::span<const std::string_view> choices) {
  std::string text = Text(key);
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return text;
  std::string names;
  for (const std::string_view choice : choices) {
    names += (names.empty() ? "" : ", ") + std::string(choice);
  }
  Complain("is '" + text + "' and not one of " + names);
}

bool RecordingFields::Flag(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isBool()) Complain("is neither true nor false");
  return field.asBool();
}

int RecordingFields::Integer(const std::string& key, int lowest, int highest) {
  if (!IsInteger(Take(key))) Complain("is not a whole number");
  return static_cast<int>(Number(key, lowest, highest));
}

double RecordingFields::Number(const std::string& key, double lowest, double highest) {
  return ToNumber(Take(key), lowest, highest);
}

std::optional<int> RecordingFields::MaybeInteger(const std::string& key, int lowest, int highest) {
  if (Take(key).isNull()) return std::nullopt;
  return Integer(key, lowest, highest);
}

std::optional<float> RecordingFields::MaybeNumber(const std::string& key) {
  return ToFloat(Take(key));
}

std::vector<std::optional<float>> RecordingFields::Numbers(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isArray()) return {ToFloat(field)};
  if (field.empty()) Complain("is an empty list");
  std::vector<std::optional<float>> numbers;
  for (const Json::Value& element : field) numbers.push_back(ToFloat(element));
  return numbers;
}

Severity RecordingFields::ReadSeverity(const std::string& key) {
  return ToSeverity(Take(key));
}

Severities RecordingFields::ReadSeverities(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isArray()) Complain("is not a list");
  Severities severities;
  for (const Json::Value& element : field) severities.push_back(ToSeverity(element));
  return severities;
}

Value RecordingFields::AnyValue(const std::string& key) {
  const Json::Value& field = Take(key);
  if (field.isNull()) return {};
  if (field.isBool()) return field.asBool();
  if (field.isString()) return ToSeverity(field);
  return Integer(key, kLowestInt, kHighestInt);
}

RecordingFields RecordingFields::Object(const std::string& key) {
  return {Take(key), where_ + key + "."};
}

void RecordingFields::CheckAllTaken() const {
  for (const std::string& key : Keys()) {
    if (!taken_.contains(key)) throw LineError("unknown key '" + where_ + key + "'");
  }
}

const Json::Value& RecordingFields::Take(const std::string& key) {
  if (!Has(key)) throw LineError("'" + where_ + key + "' is missing");
  taken_.insert(key);
  last_ = key;
  return object_[key];
}

double RecordingFields::ToNumber(const Json::Value& field, double lowest, double highest) const {
  if (!field.isNumeric()) Complain("is not a number");
  const auto number = field.asDouble();
  if (number >= lowest && number <= highest) return number;
  Complain("is " + ToLine(field) + ", out of the range from " + DecimalText(lowest) + " to " +
           DecimalText(highest));
}

std::optional<float> RecordingFields::ToFloat(const Json::Value& field) const {
  constexpr double kHighest = std::numeric_limits<float>::max();
  if (field.isNull()) return std::nullopt;
  return static_cast<float>(ToNumber(field, -kHighest, kHighest));
}

Severity RecordingFields::ToSeverity(const Json::Value& field) const {
  if (IsInteger(field)) {
    return static_cast<Severity>(static_cast<int>(ToNumber(field, kLowestInt, kHighestInt)));
  }
  if (!field.isString()) Complain("is neither the name nor the number of a severity");
  const auto name = field.asString();
  const auto severity = SeverityNamed(name);
  if (!severity) Complain("is '" + name + "', which is no severity");
  return *severity;
}

void RecordingFields::Complain(const std::string& what) const {
  throw LineError("'" + where_ + last_ + "' " + what);
}

}  // namespace norvik::qel::monitor
