// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: iteration over an AIDL enum.
//
// The real header of each enum lists its values and names a second time. Here the compiler is asked
// for them.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

namespace ndk {
namespace internal {

// The name of an enumerator. Empty if no enumerator has that value.
template <auto kValue>
constexpr std::string_view EnumeratorName() {
  // "... [with auto kValue = ns::Enum::NAME; ...]" or "... [kValue = ns::Enum::NAME]"; a value
  // without a name is "(ns::Enum)5".
  std::string_view text = __PRETTY_FUNCTION__;
  text.remove_prefix(text.find("kValue = ") + 9);
  text = text.substr(0, text.find_first_of(";]"));
  return text.front() == '(' ? std::string_view() : text.substr(text.rfind(':') + 1);
}

// The numbers that are tried: no enum here goes beyond them.
constexpr int32_t kFirstNumber = -1;
using Numbers = std::make_integer_sequence<int32_t, 32>;

// Calls `visit` with the value and the name of each enumerator, in the order of the values.
template <typename Enum, typename Visit, int32_t... kIndexes>
constexpr void ForEachEnumerator(Visit visit, std::integer_sequence<int32_t, kIndexes...>) {
  const auto visit_named = [&](Enum value, std::string_view name) {
    if (!name.empty()) visit(value, name);
  };
  (visit_named(static_cast<Enum>(kFirstNumber + kIndexes),
               EnumeratorName<static_cast<Enum>(kFirstNumber + kIndexes)>()),
   ...);
}

template <typename Enum>
constexpr inline auto enum_values = [] {
  constexpr size_t kCount = [] {
    size_t count = 0;
    ForEachEnumerator<Enum>([&](Enum, std::string_view) { ++count; }, Numbers());
    return count;
  }();
  std::array<Enum, kCount> values{};
  size_t next = 0;
  ForEachEnumerator<Enum>([&](Enum value, std::string_view) { values[next++] = value; }, Numbers());
  return values;
}();

// The name of a value. Empty if it has none.
template <typename Enum>
std::string NameOf(Enum value) {
  std::string found;
  ForEachEnumerator<Enum>(
      [&](Enum known, std::string_view name) {
        if (known == value) found = name;
      },
      Numbers());
  return found;
}

// toString() of each enum: the name of the value, or its number if it has no name.
template <typename Enum>
std::string toString(Enum value) {
  const std::string name = NameOf(value);
  return name.empty() ? std::to_string(static_cast<int32_t>(value)) : name;
}

}  // namespace internal

// for (auto value : ndk::enum_range<E>()) visits the values of E in the order of its definition.
template <typename Enum>
struct enum_range {
  constexpr auto begin() const { return internal::enum_values<Enum>.begin(); }
  constexpr auto end() const { return internal::enum_values<Enum>.end(); }
};

}  // namespace ndk
