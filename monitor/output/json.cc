// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#include "output/json.h"

#include <json/reader.h>
#include <json/writer.h>

#include <array>
#include <charconv>
#include <cmath>
#include <memory>

#include "cli/decimal.h"
#include "output/printable.h"

namespace norvik::qel::monitor {

namespace {

[[noreturn]] void Refuse(size_t offset, const std::string& what) {
  throw LineError("not JSON (at byte " + std::to_string(offset + 1) + "): " + what);
}

size_t TakeDigits(std::string_view& text) {
  const size_t count = std::min(text.find_first_not_of("0123456789"), text.size());
  text.remove_prefix(count);
  return count;
}

bool IsNumber(std::string_view text) {
  if (text.starts_with('-')) text.remove_prefix(1);
  const bool is_zero = text.starts_with('0');
  const size_t digits = TakeDigits(text);
  if (digits == 0 || (is_zero && digits > 1)) return false;
  if (text.starts_with('.')) {
    text.remove_prefix(1);
    if (TakeDigits(text) == 0) return false;
  }
  if (text.starts_with('e') || text.starts_with('E')) {
    text.remove_prefix(1);
    if (text.starts_with('+') || text.starts_with('-')) text.remove_prefix(1);
    if (TakeDigits(text) == 0) return false;
  }
  return text.empty();
}

// Refuses what JsonCpp accepts although it is not JSON, and deep nesting: a JsonCpp built without
// exceptions, as on a phone, ends the program there.
class StrictScan {
 public:
  explicit StrictScan(std::string_view line) : line_(line) {
    while (at_ < line_.size()) {
      const char c = line_[at_];
      if (c == '"') {
        SkipText();
      } else if (c == '-' || (c >= '0' && c <= '9')) {
        SkipNumber();
      } else {
        constexpr int kDeepest = 100;
        if (c == '[' || c == '{') ++depth_;
        if (c == ']' || c == '}') --depth_;
        if (depth_ > kDeepest) Refuse(at_, "nested too deeply");
        ++at_;
      }
    }
  }

 private:
  void SkipText() {
    for (++at_; at_ < line_.size() && line_[at_] != '"';) {
      const size_t size = CharacterSize(line_.substr(at_));
      if (size == 0) Refuse(at_, "not UTF-8");
      if (static_cast<unsigned char>(line_[at_]) < ' ')
        Refuse(at_, "a control character in a text");
      at_ += line_[at_] == '\\' ? 2 : size;
    }
    ++at_;
  }

  void SkipNumber() {
    const size_t end = std::min(line_.find_first_not_of("+-.0123456789eE", at_), line_.size());
    const std::string_view number = line_.substr(at_, end - at_);
    if (!IsNumber(number)) Refuse(at_, "'" + std::string(number) + "' is not a number");
    if (!ParseDecimal(number)) Refuse(at_, std::string(number) + " is too large");
    at_ = end;
  }

  const std::string_view line_;
  size_t at_ = 0;
  int depth_ = 0;
};

// JsonCpp reports errors as "* Line 1, Column 9\n  What is wrong.\n...".
[[noreturn]] void RefuseAs(const std::string& errors) {
  const size_t column = errors.find("Column ");
  const size_t begin = errors.find("\n  ");
  if (column == std::string::npos || begin == std::string::npos) throw LineError("not JSON");
  const size_t end = errors.find('\n', begin + 1);
  std::string what = errors.substr(begin + 3, end - begin - 3);
  constexpr std::string_view kDuplicate = "Duplicate key: ";
  if (what.starts_with(kDuplicate)) {
    throw LineError("the key " + what.substr(kDuplicate.size()) + " comes twice");
  }
  if (what.ends_with('.')) what.pop_back();
  const size_t number = column + std::string_view("Column ").size();
  throw LineError("not JSON (at byte " +
                  errors.substr(number, errors.find_first_not_of("0123456789", number) - number) +
                  "): " + what);
}

}  // namespace

Json::Value JsonNumber(std::optional<float> number) {
  if (!number || !std::isfinite(*number)) return {};
  std::array<char, 64> text;
  const auto end = std::to_chars(text.data(), text.data() + text.size(), *number).ptr;
  const std::string_view shortest(text.data(), static_cast<size_t>(end - text.data()));
  return ParseDecimal(shortest).value_or(*number);
}

Json::Value JsonOf(const Value& value) {
  if (const int* number = std::get_if<int>(&value)) return *number;
  if (const bool* online = std::get_if<bool>(&value)) return *online;
  if (const float* number = std::get_if<float>(&value)) return JsonNumber(*number);
  return {};
}

std::string ToLine(const Json::Value& value) {
  static const Json::StreamWriterBuilder kBuilder = [] {
    Json::StreamWriterBuilder builder;
    builder["indentation"] = "";
    builder["precision"] = 15;  // more would show the difference between binary and decimal
    return builder;
  }();
  return Json::writeString(kBuilder, value);
}

JsonLine& JsonLine::Add(std::string_view key, const Json::Value& value) {
  members_ += (members_.empty() ? "" : ",") + ToLine(JsonText(key)) + ":" + ToLine(value);
  return *this;
}

JsonLine& JsonLine::Add(const JsonLine& other) {
  members_ += (members_.empty() || other.empty() ? "" : ",") + other.members_;
  return *this;
}

Json::Value ParseJson(std::string_view line) {
  StrictScan scan(line);
  Json::CharReaderBuilder builder;
  Json::CharReaderBuilder::strictMode(&builder.settings_);
  builder["strictRoot"] = false;  // the caller checks the type
  builder["skipBom"] = false;
  const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
  Json::Value value;
  std::string errors;
  if (!reader->parse(line.data(), line.data() + line.size(), &value, &errors)) RefuseAs(errors);
  return value;
}

}  // namespace norvik::qel::monitor
