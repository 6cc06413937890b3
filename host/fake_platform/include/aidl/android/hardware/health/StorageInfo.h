// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the health interface.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

class StorageInfo {
 public:
  static inline const char* descriptor = "android.hardware.health.StorageInfo";
  int32_t eol = 0;
  int32_t lifetimeA = 0;
  int32_t lifetimeB = 0;
  std::string version = {};

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const StorageInfo& other) const = default;
};

}  // namespace aidl::android::hardware::health
