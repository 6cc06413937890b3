// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "scenario/questions.h"

#include <optional>
#include <utility>
#include <vector>

#include "clients/subjects.h"

namespace norvik::qel::monitor {

namespace {

// The values in the order of the question; nullopt if the service cannot be queried.
std::optional<std::vector<Value>> Read(const Question& question, Client& client) {
  if (question.family == kTemperaturesQuestion) {
    std::vector<std::string> names;
    for (const auto& [name, expected] : question.answers) names.push_back(name);
    return client.ReadTemperatures(names);  // all of them in one call
  }
  std::optional<std::vector<Severities>> limits;
  if (question.family == kLimitsQuestion && !(limits = client.ReadLimits())) return {};
  std::vector<Value> values;
  for (const auto& [key, expected] : question.answers) {
    if (limits) {
      values.emplace_back((*limits)[key == kChargeLimitProperties[0]->key ? 0 : 1]);
      continue;
    }
    std::optional<Value> value = client.Read(*BatteryPropertyOf(key));
    if (!value) return std::nullopt;
    values.push_back(*std::move(value));
  }
  return values;
}

// An absent value also matches an expected "unknown".
bool Matches(const Value& value, const Value& expected) {
  return value == expected || (expected == Value() && value == Value(Absent()));
}

}  // namespace

Answer Ask(const Question& question, Client& client) {
  const auto values = Read(question, client);
  if (!values) return {.text = "", .fault = "the service cannot be asked: " + question.family};
  Answer answer;
  for (size_t i = 0; i < values->size(); ++i) {
    const auto& [key, expected] = question.answers[i];
    const Property property = question.family == kTemperaturesQuestion
                                  ? Property{.key = key, .unit = kCelsius}
                                  : PropertyOf(key);
    const std::string read = key + " " + InWords(property, (*values)[i]);
    answer.text += (i == 0 ? "It reads: " : ", ") + read;
    if (!answer.fault.empty() || Matches((*values)[i], expected)) continue;
    answer.fault = "the client reads " + read + ", not " + InWords(property, expected);
  }
  answer.text += ".";
  return answer;
}

}  // namespace norvik::qel::monitor
