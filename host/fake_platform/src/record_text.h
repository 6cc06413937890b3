// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The text of a record for its toString().
#pragma once

#include <hidl/HidlSupport.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <limits>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <vector>

namespace norvik::qel::fake {

inline std::string ValueText(const std::string& value) {
  return value;
}

template <typename T>
std::string ValueText(const T& value) {
  if constexpr (std::is_same_v<T, bool>) {
    return value ? "true" : "false";
  } else if constexpr (std::is_floating_point_v<T>) {
    // Like std::to_string(), but independent of the locale.
    std::array<char, std::numeric_limits<T>::max_exponent10 + 10> text;
    return {text.data(), std::to_chars(text.data(), text.data() + text.size(), value,
                                       std::chars_format::fixed, /*precision=*/6)
                             .ptr};
  } else if constexpr (std::is_arithmetic_v<T>) {
    return std::to_string(value);
  } else if constexpr (std::is_enum_v<T>) {
    return toString(value);
  } else {
    return value.toString();
  }
}

template <typename T>
std::string ValueText(const std::optional<T>& value) {
  return value ? ValueText(*value) : "(null)";
}

template <typename T>
std::string ValueText(const std::vector<T>& values) {
  std::string text = "[";
  for (const T& value : values) text += (text.size() > 1 ? ", " : "") + ValueText(value);
  return text + "]";
}

inline std::string ValueText(const ::android::hardware::hidl_string& value) {
  return std::string("\"") + value.c_str() + "\"";
}

template <size_t kSize>
std::string ValueText(const ::android::hardware::hidl_array<float, kSize>& values) {
  std::string text;
  for (size_t i = 0; i < kSize; ++i) text += (i > 0 ? ", " : "") + ValueText(values[i]);
  return "[" + std::to_string(kSize) + "]{" + text + "}";
}

// The arguments that describe fields, here variables or members `record.name`.
#define QUORVEL_FAKE_FIELDS(...) #__VA_ARGS__, __VA_ARGS__

// The texts of all fields: `before`, the name, `after` and the value of each.
template <typename... Fields>
std::string FieldsText(const char* before, const char* after, std::string_view names,
                       const Fields&... fields) {
  std::string text;
  const auto add = [&](const auto& value) {
    const size_t end = std::min(names.find(", "), names.size());
    const std::string_view member = names.substr(0, end);
    if (!text.empty()) text += ", ";
    text.append(before).append(member.substr(member.rfind('.') + 1)).append(after);
    text += ValueText(value);
    names.remove_prefix(std::min(end + 2, names.size()));
  };
  (add(fields), ...);
  return text;
}

// "Name{field: value, ...}", as AIDL writes a record.
template <typename... Fields>
std::string RecordText(const char* name, const Fields&... fields) {
  return name + ("{" + FieldsText("", ": ", fields...) + "}");
}

// "{.field = value, ...}", as HIDL does.
template <typename... Fields>
std::string HidlRecordText(const Fields&... fields) {
  return "{" + FieldsText(".", " = ", fields...) + "}";
}

}  // namespace norvik::qel::fake
