// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Typed access to the fields of one JSON object of a recording.
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

// "a, b, c"
template <typename Names>
std::string Listed(const Names& names) {
  std::string list;
  for (const std::string_view name : names) list += (list.empty() ? "" : ", ") + std::string(name);
  return list;
}

// Reads fields by their keys and checks their types. CheckAllTaken() refuses unknown keys. All
// methods throw LineError, with the value and what is accepted.
//
// Threads: the main thread.
class RecordingFields {
 public:
  // `where` is the prefix of keys in messages: "battery.", or empty. `object` must outlive this.
  RecordingFields(const Json::Value& object, std::string where);

  // Whether the object has an optional field.
  bool Has(const std::string& key);
  // Whether the object has the field that says what the object is about.
  bool IsAbout(std::string_view key);
  // Throws an error: the object has none of the keys that IsAbout() was asked for.
  [[noreturn]] void ComplainAboutKeys() const;
  // The keys in the order of the file.
  std::vector<std::string> Keys() const;
  // This and the methods below throw if the field is missing.
  std::string Text(const std::string& key);
  // A text that is one of the choices.
  std::string Choice(const std::string& key, std::span<const std::string_view> choices);
  bool Flag(const std::string& key);
  int Integer(const std::string& key, int lowest, int highest);
  double Number(const std::string& key, double lowest, double highest);
  // nullopt for null.
  std::optional<int> MaybeInteger(const std::string& key, int lowest, int highest);
  std::optional<float> MaybeNumber(const std::string& key);
  // A number, or a list of at least one.
  std::vector<std::optional<float>> Numbers(const std::string& key);
  Severity ReadSeverity(const std::string& key);
  Severities ReadSeverities(const std::string& key);
  // A number, true, false, null or the name of a severity.
  Value AnyValue(const std::string& key);
  RecordingFields Object(const std::string& key);
  // Throws if the object has a key that was not read.
  void CheckAllTaken() const;
  // Throws an error about the last field that was read: it is not `accepted`.
  [[noreturn]] void Complain(const std::string& accepted) const {
    Complain(object_[last_], accepted);
  }

 private:
  const Json::Value& Take(const std::string& key);
  // "the line" or "'battery'"
  std::string Name() const;
  // `field`: the last field that was read, or an element of it.
  [[noreturn]] void Complain(const Json::Value& field, const std::string& accepted) const;
  // These convert the last field that was read, or an element of it.
  double ToNumber(const Json::Value& field, double lowest, double highest) const;
  std::optional<float> ToFloat(const Json::Value& field) const;
  Severity ToSeverity(const Json::Value& field) const;
  const Json::Value& object_;
  const std::string where_;
  std::set<std::string> taken_;
  std::vector<std::string_view> subjects_;  // the arguments of IsAbout()
  std::vector<std::string> accepted_;       // keys
  std::string last_;
};

}  // namespace norvik::qel::monitor
