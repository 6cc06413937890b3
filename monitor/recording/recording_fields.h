// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The fields of one object of a recording, each of which has to be what it should be.
#pragma once

#include <limits>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "clients/value.h"
#include "output/json.h"

namespace norvik::qel::monitor {

// Limits of a field that takes any int.
inline constexpr int kLowestInt = std::numeric_limits<int>::lowest();
inline constexpr int kHighestInt = std::numeric_limits<int>::max();

// Takes fields by their keys and refuses those that were not taken. Throws LineError.
//
// Threads: the main thread.
class RecordingFields {
 public:
  // `where` precedes the keys in messages: "battery.", or nothing. The object outlives the fields.
  RecordingFields(const Json::Value& object, std::string where);

  bool Has(const std::string& key) const { return object_.isMember(key); }
  // In the order of the file.
  std::vector<std::string> Keys() const;
  // The field has to be there.
  std::string Text(const std::string& key);
  // One of those.
  std::string Choice(const std::string& key, std::span<const std::string_view> choices);
  bool Flag(const std::string& key);
  int Integer(const std::string& key, int lowest, int highest);
  double Number(const std::string& key, double lowest, double highest);
  // Nothing for null.
  std::optional<int> MaybeInteger(const std::string& key, int lowest, int highest);
  std::optional<float> MaybeNumber(const std::string& key);
  // One, or a list of one or more.
  std::vector<std::optional<float>> Numbers(const std::string& key);
  Severity ReadSeverity(const std::string& key);
  Severities ReadSeverities(const std::string& key);
  // A number, true, false, null or the name of a severity.
  Value AnyValue(const std::string& key);
  RecordingFields Object(const std::string& key);
  // What has not been taken by now is unknown.
  void CheckAllTaken() const;

 private:
  const Json::Value& Take(const std::string& key);
  // What has been taken, or an element of it.
  double ToNumber(const Json::Value& field, double lowest, double highest) const;
  std::optional<float> ToFloat(const Json::Value& field) const;
  Severity ToSeverity(const Json::Value& field) const;
  // About what has been taken last.
  [[noreturn]] void Complain(const std::string& what) const;

  const Json::Value& object_;
  const std::string where_;
  std::set<std::string> taken_;
  std::string last_;
};

}  // namespace norvik::qel::monitor
