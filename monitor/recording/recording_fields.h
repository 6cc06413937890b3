// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The fields of one object of a recording, each of which has to be what it should be.
#pragma once

#include <limits>
#include <memory>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "clients/value.h"

namespace norvik::qel::monitor {

// Limits of a field that takes any int.
inline constexpr int kLowestInt = std::numeric_limits<int>::lowest();
inline constexpr int kHighestInt = std::numeric_limits<int>::max();

// What is wrong with a line, for whoever wrote it.
class LineError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// Takes fields by their keys and complains of those that nobody has taken. Whatever is wrong is
// thrown as a LineError.
//
// Threads: the main thread.
class RecordingFields {
 public:
  // `where` precedes the keys in complaints: "battery.", or nothing. The object stays where it is.
  RecordingFields(const nlohmann::ordered_json& object, std::string where);

  bool Has(const std::string& key) const;
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
  // Whatever has not been taken by now is not known.
  void CheckAllTaken() const;

 private:
  const nlohmann::ordered_json& Take(const std::string& key);
  // What has been taken by that key, or an element of it.
  double Number(const nlohmann::ordered_json& field, const std::string& key, double lowest,
                double highest) const;
  std::optional<float> MaybeNumber(const nlohmann::ordered_json& field,
                                   const std::string& key) const;
  Severity ReadSeverity(const nlohmann::ordered_json& field, const std::string& key) const;
  [[noreturn]] void Complain(const std::string& key, const std::string& what) const;

  const nlohmann::ordered_json& object_;
  const std::string where_;
  std::set<std::string> taken_;
};

// A line of a recording. Throws LineError when it is no JSON, or has a key twice.
class RecordingLine {
 public:
  explicit RecordingLine(const std::string& text);
  ~RecordingLine();
  RecordingLine(const RecordingLine&) = delete;
  RecordingLine& operator=(const RecordingLine&) = delete;

  // Throws LineError when it is no object.
  RecordingFields fields() const;
  bool IsObject() const;

 private:
  const std::unique_ptr<const nlohmann::ordered_json> json_;
};

}  // namespace norvik::qel::monitor
