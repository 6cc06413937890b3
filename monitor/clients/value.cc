// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "clients/value.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>

namespace norvik::qel::monitor {

namespace {

constexpr std::array<std::string_view, 7> kSeverityNames = {
    "NONE", "LIGHT", "MODERATE", "SEVERE", "CRITICAL", "EMERGENCY", "SHUTDOWN"};

std::string InWords(Severity severity) {
  if (const auto name = NameOf(severity)) return std::string(*name);
  return "severity " + std::to_string(static_cast<int>(severity));
}

std::string InWords(const Severities& severities) {
  std::string text;
  for (const Severity severity : severities) text += (text.empty() ? "" : ", ") + InWords(severity);
  return text.empty() ? "none reported" : text;
}

// One decimal: thermistors are no more precise. std::to_chars() ignores the locale.
std::string InWords(float number) {
  std::array<char, std::numeric_limits<float>::max_exponent10 + 8> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), number,
                                 std::chars_format::fixed, /*precision=*/1)
                       .ptr;
  return {text.data(), end};
}

}  // namespace

std::optional<std::string_view> NameOf(Severity severity) {
  const auto number = static_cast<size_t>(severity);
  if (number >= kSeverityNames.size()) return std::nullopt;
  return kSeverityNames[number];
}

std::optional<Severity> SeverityNamed(std::string_view name) {
  const auto* const found = std::find(kSeverityNames.begin(), kSeverityNames.end(), name);
  if (found == kSeverityNames.end()) return std::nullopt;
  return static_cast<Severity>(found - kSeverityNames.begin());
}

Severity WorstOf(const Value& value) {
  if (const auto* severity = std::get_if<Severity>(&value)) return *severity;
  const auto* const several = std::get_if<Severities>(&value);
  if (several == nullptr || several->empty()) return Severity::kNone;
  return *std::max_element(several->begin(), several->end());
}

std::string InWords(const Property& property, const Value& value) {
  if (const int* number = std::get_if<int>(&value)) {
    return std::to_string(*number) + std::string(property.unit);
  }
  if (const float* number = std::get_if<float>(&value)) {
    return InWords(*number) + std::string(property.unit);
  }
  if (const bool* online = std::get_if<bool>(&value)) return *online ? "online" : "offline";
  if (const Severity* severity = std::get_if<Severity>(&value)) return InWords(*severity);
  if (const Severities* several = std::get_if<Severities>(&value)) return InWords(*several);
  return std::holds_alternative<Absent>(value) ? "not present" : "unknown";
}

}  // namespace norvik::qel::monitor
