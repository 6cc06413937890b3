// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// JSON as the monitor writes and reads it.
#pragma once

#include <json/value.h>

#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "clients/value.h"

namespace norvik::qel::monitor {

inline Json::Value JsonText(std::string_view text) {
  return {text.data(), text.data() + text.size()};
}
// The shortest number that is read as the same float again: as a double, 36.6F is 36.59999847.
// Null when it is unknown or not finite.
Json::Value JsonNumber(std::optional<float> number);
// Of a number or a state. Null for what is unknown or absent; how severities look the caller says.
Json::Value JsonOf(const Value& value);

// On one line, in ASCII. Bytes that are not UTF-8 are replaced.
std::string ToLine(const Json::Value& value);

// An object on one line. Json::Value sorts keys; here they stay in the order of Add().
class JsonLine {
 public:
  JsonLine& Add(std::string_view key, const Json::Value& value);
  // The members of another one.
  JsonLine& Add(const JsonLine& other);
  bool empty() const { return members_.empty(); }
  std::string text() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

// What is wrong with a line that is read.
class LineError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// Exactly one value as RFC 8259 defines it, in UTF-8 and no key twice in an object. Throws
// LineError.
Json::Value ParseJson(std::string_view line);

}  // namespace norvik::qel::monitor
