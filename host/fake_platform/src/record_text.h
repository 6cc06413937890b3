// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Builds the text of a record for its toString(): "Name{field: value, ...}".
#pragma once

#include <android/binder_enums.h>

#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
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

// The name of a value, or its number if it has no name. The names are in the order of the enum.
template <typename Enum, size_t kSize>
std::string EnumText(Enum value, const char* const (&names)[kSize]) {
  constexpr auto kValues = ndk::internal::enum_values<Enum>;
  static_assert(kValues.size() == kSize);
  for (size_t i = 0; i < kSize; ++i) {
    if (kValues[i] == value) return names[i];
  }
  return std::to_string(static_cast<int32_t>(value));
}

class RecordText {
 public:
  explicit RecordText(const char* name) : text_(std::string(name) + "{") {}
  template <typename T>
  RecordText& Add(const char* field, const T& value) {
    if (text_.back() != '{') text_ += ", ";
    text_ += std::string(field) + ": " + ValueText(value);
    return *this;
  }
  std::string End() const { return text_ + "}"; }

 private:
  std::string text_;
};

}  // namespace norvik::qel::fake
