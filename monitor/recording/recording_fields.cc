// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_fields.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "cli/decimal.h"

namespace norvik::qel::monitor {

namespace {

// 5.0 is not an integer.
bool IsInteger(const Json::Value& field) {
  return field.type() == Json::intValue || field.type() == Json::uintValue;
}

// The value for messages: a text in quotes, or JSON.
std::string InWords(const Json::Value& field) {
  constexpr size_t kLongest = 60;  // bytes
  std::string text = field.isString() ? field.asString() : ToLine(field);
  if (text.size() > kLongest) {
    size_t size = kLongest;
    while ((static_cast<unsigned char>(text[size]) & 0xc0) == 0x80) --size;  // inside a character
    text = text.substr(0, size) + "...";
  }
  return field.isString() ? "'" + text + "'" : text;
}

}  // namespace

RecordingFields::RecordingFields(const Json::Value& object, std::string where)
    : object_(object), where_(std::move(where)) {
  if (object.isObject()) return;
  throw LineError(Name() + " is " + InWords(object) + ", not an object");
}

bool RecordingFields::Has(const std::string& key) {
  if (std::find(accepted_.begin(), accepted_.end(), key) == accepted_.end()) {
    accepted_.push_back(key);
  }
  return object_.isMember(key);
}

bool RecordingFields::IsAbout(std::string_view key) {
  subjects_.push_back(key);
  return object_.isMember(key.data(), key.data() + key.size());
}

void RecordingFields::ComplainAboutKeys() const {
  const std::string keys = Listed(Keys());
  throw LineError(Name() + " does not say what happens: " +
                  (keys.empty() ? "it is empty, use " : "none of its keys (" + keys + ") is ") +
                  "one of " + Listed(subjects_));
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
  if (!field.isString()) Complain("a text");
  return field.asString();
}

std::string RecordingFields::Choice(const std::string& key,
                                    std::span<const std::string_view> choices) {
  std::string text = Text(key);
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return text;
  Complain((choices.size() > 1 ? "one of " : "") + Listed(choices));
}

bool RecordingFields::Flag(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isBool()) Complain("true or false");
  return field.asBool();
}

int RecordingFields::Integer(const std::string& key, int lowest, int highest) {
  const Json::Value& field = Take(key);
  if (!IsInteger(field) || field.asDouble() < lowest || field.asDouble() > highest) {
    Complain("a whole number from " + std::to_string(lowest) + " to " + std::to_string(highest));
  }
  return field.asInt();
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
  if (field.empty()) Complain("a number or a list of at least one");
  std::vector<std::optional<float>> numbers;
  for (const Json::Value& element : field) numbers.push_back(ToFloat(element));
  return numbers;
}

Severity RecordingFields::ReadSeverity(const std::string& key) {
  return ToSeverity(Take(key));
}

Severities RecordingFields::ReadSeverities(const std::string& key) {
  const Json::Value& field = Take(key);
  if (!field.isArray()) Complain("a list of severities");
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
    if (taken_.contains(key)) continue;
    throw LineError("unknown key '" + where_ + key + "', accepted here: " + Listed(accepted_));
  }
}

const Json::Value& RecordingFields::Take(const std::string& key) {
  if (!Has(key)) throw LineError("'" + where_ + key + "' is missing");
  taken_.insert(key);
  last_ = key;
  return object_[key];
}

double RecordingFields::ToNumber(const Json::Value& field, double lowest, double highest) const {
  const double number = field.isNumeric() ? field.asDouble() : NAN;
  if (number >= lowest && number <= highest) return number;
  Complain(field, "a number from " + DecimalText(lowest) + " to " + DecimalText(highest));
}

std::optional<float> RecordingFields::ToFloat(const Json::Value& field) const {
  constexpr double kHighest = std::numeric_limits<float>::max();
  if (field.isNull()) return std::nullopt;
  if (!field.isNumeric()) Complain(field, "a number");
  return static_cast<float>(ToNumber(field, -kHighest, kHighest));
}

Severity RecordingFields::ToSeverity(const Json::Value& field) const {
  if (IsInteger(field) && field.isInt()) return static_cast<Severity>(field.asInt());
  if (const auto severity = SeverityNamed(field.isString() ? field.asString() : "")) {
    return *severity;
  }
  std::string names;
  for (int i = 0; NameOf(Severity{i}); ++i) names += std::string(*NameOf(Severity{i})) + ", ";
  Complain(field, "one of " + names + "or a whole number of 32 bits");
}

std::string RecordingFields::Name() const {
  return where_.empty() ? "the line" : "'" + where_.substr(0, where_.size() - 1) + "'";
}

void RecordingFields::Complain(const Json::Value& field, const std::string& accepted) const {
  const char* const verb = &field == &object_[last_] ? "' is " : "' contains ";
  throw LineError("'" + where_ + last_ + verb + InWords(field) + ", not " + accepted);
}

}  // namespace norvik::qel::monitor
