// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "recording/recording_fields.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <nlohmann/json.hpp>
#include <utility>
#include <vector>

namespace norvik::qel::monitor {

// Keys stay in the order in which somebody has written them.
using json = nlohmann::ordered_json;

namespace {

constexpr double kHighestFloat = std::numeric_limits<float>::max();

// As somebody writes it: 100, not 100.0.
std::string InWords(double number) {
  std::array<char, 64> text;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number).ptr};
}

// The parser itself would take the last of several values and say nothing.
class KeysOnce {
 public:
  bool operator()(int depth, json::parse_event_t event, const json& parsed) {
    const auto level = static_cast<size_t>(depth);
    if (event == json::parse_event_t::object_start) {
      keys_.resize(level + 1);
      keys_.emplace_back();
    }
    if (event == json::parse_event_t::key &&
        !keys_.at(level).insert(parsed.get<std::string>()).second) {
      throw LineError("the key '" + parsed.get<std::string>() + "' comes twice");
    }
    return true;
  }

 private:
  std::vector<std::set<std::string>> keys_;  // by depth
};

json ParseLine(const std::string& line) {
  try {
    return json::parse(line, KeysOnce());
  } catch (const json::parse_error& error) {
    const std::string at = " (at byte " + std::to_string(error.byte) + ")";
    const bool is_encoding = std::string_view(error.what()).find("UTF-8") != std::string_view::npos;
    throw LineError((is_encoding ? "not UTF-8" : "not JSON") + at);
  } catch (const json::out_of_range&) {
    throw LineError("a number is too large");
  }
}

}  // namespace

RecordingFields::RecordingFields(const json& object, std::string where)
    : object_(object), where_(std::move(where)) {
  if (object.is_object()) return;
  throw LineError(where_.empty()
                      ? "not an object"
                      : "'" + where_.substr(0, where_.size() - 1) + "' is not an object");
}

bool RecordingFields::Has(const std::string& key) const {
  return object_.contains(key);
}

std::vector<std::string> RecordingFields::Keys() const {
  std::vector<std::string> keys;
  for (const auto& [key, value] : object_.items()) keys.push_back(key);
  return keys;
}

std::string RecordingFields::Text(const std::string& key) {
  const json& field = Take(key);
  if (!field.is_string()) Complain(key, "is not a text");
  return field.get<std::string>();
}

std::string RecordingFields::Choice(const std::string& key,
                                    std::span<const std::string_view> choices) {
  std::string text = Text(key);
  if (std::find(choices.begin(), choices.end(), text) != choices.end()) return text;
  std::string names;
  for (const std::string_view choice : choices) {
    names += (names.empty() ? "" : ", ") + std::string(choice);
  }
  Complain(key, "is '" + text + "' and not one of " + names);
}

bool RecordingFields::Flag(const std::string& key) {
  const json& field = Take(key);
  if (!field.is_boolean()) Complain(key, "is neither true nor false");
  return field.get<bool>();
}

int RecordingFields::Integer(const std::string& key, int lowest, int highest) {
  if (!Take(key).is_number_integer()) Complain(key, "is not a whole number");
  return static_cast<int>(Number(key, lowest, highest));
}

double RecordingFields::Number(const std::string& key, double lowest, double highest) {
  return Number(Take(key), key, lowest, highest);
}

double RecordingFields::Number(const json& field, const std::string& key, double lowest,
                               double highest) const {
  if (!field.is_number()) Complain(key, "is not a number");
  const auto number = field.get<double>();
  if (number >= lowest && number <= highest) return number;
  Complain(key, "is " + field.dump() + ", out of the range from " + InWords(lowest) + " to " +
                    InWords(highest));
}

std::optional<int> RecordingFields::MaybeInteger(const std::string& key, int lowest, int highest) {
  if (Take(key).is_null()) return std::nullopt;
  return Integer(key, lowest, highest);
}

std::optional<float> RecordingFields::MaybeNumber(const std::string& key) {
  return MaybeNumber(Take(key), key);
}

std::optional<float> RecordingFields::MaybeNumber(const json& field, const std::string& key) const {
  if (field.is_null()) return std::nullopt;
  return static_cast<float>(Number(field, key, -kHighestFloat, kHighestFloat));
}

std::vector<std::optional<float>> RecordingFields::Numbers(const std::string& key) {
  const json& field = Take(key);
  if (!field.is_array()) return {MaybeNumber(field, key)};
  if (field.empty()) Complain(key, "is an empty list");
  std::vector<std::optional<float>> numbers;
  for (const json& element : field) numbers.push_back(MaybeNumber(element, key));
  return numbers;
}

Severity RecordingFields::ReadSeverity(const std::string& key) {
  return ReadSeverity(Take(key), key);
}

Severity RecordingFields::ReadSeverity(const json& field, const std::string& key) const {
  if (field.is_number_integer()) {
    return static_cast<Severity>(static_cast<int>(Number(field, key, kLowestInt, kHighestInt)));
  }
  if (!field.is_string()) Complain(key, "is neither the name nor the number of a severity");
  const auto name = field.get<std::string>();
  const auto severity = SeverityNamed(name);
  if (!severity) Complain(key, "is '" + name + "', which is no severity");
  return *severity;
}

Severities RecordingFields::ReadSeverities(const std::string& key) {
  const json& field = Take(key);
  if (!field.is_array()) Complain(key, "is not a list");
  Severities severities;
  for (const json& element : field) severities.push_back(ReadSeverity(element, key));
  return severities;
}

Value RecordingFields::AnyValue(const std::string& key) {
  const json& field = Take(key);
  if (field.is_null()) return {};
  if (field.is_boolean()) return field.get<bool>();
  if (field.is_string()) return ReadSeverity(key);
  return Integer(key, kLowestInt, kHighestInt);
}

RecordingFields RecordingFields::Object(const std::string& key) {
  return {Take(key), where_ + key + "."};
}

void RecordingFields::CheckAllTaken() const {
  for (const auto& [key, value] : object_.items()) {
    if (!taken_.contains(key)) throw LineError("unknown key '" + where_ + key + "'");
  }
}

const json& RecordingFields::Take(const std::string& key) {
  if (!Has(key)) throw LineError("'" + where_ + key + "' is missing");
  taken_.insert(key);
  return object_.at(key);
}

void RecordingFields::Complain(const std::string& key, const std::string& what) const {
  throw LineError("'" + where_ + key + "' " + what);
}

RecordingLine::RecordingLine(const std::string& text)
    : json_(std::make_unique<const json>(ParseLine(text))) {}

RecordingLine::~RecordingLine() = default;

RecordingFields RecordingLine::fields() const {
  return {*json_, ""};
}

bool RecordingLine::IsObject() const {
  return json_->is_object();
}

}  // namespace norvik::qel::monitor
