// The fields of one object of a recording, each of which has to be what it should be.
#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "tools/value.h"

namespace norvik::qel::tool {

// What is wrong with a line, for whoever wrote it.
class LineError : public std::runtime_error {
 public:
  using runtime_error::runtime_error;
};

// One line as JSON. Throws LineError when it is none, or has a key twice.
nlohmann::json ParseLine(const std::string& line);

// Takes fields by their keys and complains of those that nobody has taken. Whatever is wrong is
// thrown as a LineError.
//
// Threads: the main thread.
class RecordingFields {
 public:
  // `where` precedes the keys in complaints: "battery.", or nothing.
  RecordingFields(const nlohmann::json& object, std::string where);

  bool Has(const std::string& key) const { return object_.contains(key); }
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
  Severity ReadSeverity(const std::string& key);
  // A number, true, false, null or the name of a severity.
  Value AnyValue(const std::string& key);
  RecordingFields Object(const std::string& key);
  // Whatever has not been taken by now is not known.
  void CheckAllTaken() const;

 private:
  const nlohmann::json& Take(const std::string& key);
  [[noreturn]] void Complain(const std::string& key, const std::string& what) const;

  const nlohmann::json& object_;
  const std::string where_;
  std::set<std::string> taken_;
};

}  // namespace norvik::qel::tool
