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
// The shortest decimal that parses to the same float: as a double, 36.6F is 36.59999847. Null if
// the number is unknown or not finite.
Json::Value JsonNumber(std::optional<float> number);
// The JSON value of a number or a flag. Null if it is unknown, and for severities, whose format the
// caller chooses.
Json::Value JsonOf(const Value& value);

// The value as one line of ASCII. Bytes that are not UTF-8 are replaced.
std::string ToLine(const Json::Value& value);

// An object on one line. Json::Value sorts keys; here they stay in the order of Add().
class JsonLine {
 public:
  JsonLine& Add(std::string_view key, const Json::Value& value);
  // Appends the members of another object.
  JsonLine& Add(const JsonLine& other);
  bool empty() const { return members_.empty(); }
  std::string text() const { return "{" + members_ + "}"; }

 private:
  std::string members_;
};

// An error in an input line. The message does not name the line.
class LineError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// Parses exactly one value as defined by RFC 8259, in UTF-8. Duplicate keys are refused. Throws
// LineError.
Json::Value ParseJson(std::string_view line);

}  // namespace norvik::qel::monitor
