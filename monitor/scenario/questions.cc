// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/questions.h"

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

using Reading = std::pair<Property, Value>;

// Each of the following: in the order of the question; nothing when the service cannot be asked.
using Readings = std::optional<std::vector<Reading>>;

Readings ReadBattery(const Question& question, Client& client) {
  std::vector<Reading> readings;
  for (const auto& [key, expected] : question.answers) {
    const BatteryProperty& property = *BatteryPropertyOf(key);
    std::optional<Value> value = client.Read(property);
    if (!value) return std::nullopt;
    readings.emplace_back(property, std::move(*value));
  }
  return readings;
}

// All of them in one question.
Readings ReadTemperatures(const Question& question, Client& client) {
  std::vector<std::string> names;
  for (const auto& [name, expected] : question.answers) names.push_back(name);
  const auto values = client.ReadTemperatures(names);
  if (!values) return std::nullopt;
  std::vector<Reading> readings;
  for (size_t i = 0; i < values->size(); ++i) {
    const std::string& name = question.answers[i].first;
    readings.emplace_back(Property{.key = name, .name = name, .unit = kCelsius}, (*values)[i]);
  }
  return readings;
}

Readings ReadLimits(const Question& question, Client& client) {
  const auto limits = client.ReadLimits();
  if (!limits) return std::nullopt;
  std::vector<Reading> readings;
  for (const auto& [key, expected] : question.answers) {
    for (size_t i = 0; i < limits->size(); ++i) {
      const ChargeLimitProperty& property = *kChargeLimitProperties[i];
      if (property.key == key) readings.emplace_back(property, (*limits)[i]);
    }
  }
  return readings;
}

Readings Read(const Question& question, Client& client) {
  if (question.family == kBatteryQuestion) return ReadBattery(question, client);
  if (question.family == kLimitsQuestion) return ReadLimits(question, client);
  return ReadTemperatures(question, client);
}

std::string InWords(const std::vector<Reading>& readings) {
  std::string text = "It reads: ";
  for (const Reading& reading : readings) {
    const auto& [property, value] = reading;
    text += (&reading == readings.data() ? "" : ", ") + std::string(property.name) + " " +
            monitor::InWords(property, value);
  }
  return text + ".";
}

// What is not there is not known, either.
bool Matches(const Value& value, const Value& expected) {
  return value == expected || (expected == Value() && value == Value(Absent()));
}

}  // namespace

Answer Ask(const Question& question, Client& client) {
  const Readings readings = Read(question, client);
  if (!readings) return {.text = "", .fault = "the service cannot be asked: " + question.family};
  Answer answer = {.text = InWords(*readings), .fault = ""};
  for (size_t i = 0; i < readings->size(); ++i) {
    const auto& [property, value] = (*readings)[i];
    const Value& expected = question.answers[i].second;
    if (Matches(value, expected)) continue;
    answer.fault = "the client reads " + std::string(property.name) + " " +
                   monitor::InWords(property, value) + ", not " +
                   monitor::InWords(property, expected);
    break;
  }
  return answer;
}

}  // namespace norvik::qel::monitor
