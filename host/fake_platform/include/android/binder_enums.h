// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the platform header at this path: iteration over an AIDL enum.
#pragma once

#include <array>
#include <iterator>

namespace ndk {

namespace internal {
// Specialised in the header of each enum with the list of its values.
template <typename Enum>
constexpr inline std::array<Enum, 0> enum_values = {};
}  // namespace internal

// for (auto value : ndk::enum_range<E>()) visits the values of E in the order of its definition.
template <typename Enum>
struct enum_range {
  constexpr auto begin() const { return std::begin(internal::enum_values<Enum>); }
  constexpr auto end() const { return std::end(internal::enum_values<Enum>); }
};

}  // namespace ndk
