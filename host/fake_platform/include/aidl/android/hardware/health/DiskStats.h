// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Fake version of the generated header at this path: a record of the health interface.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::health {

class DiskStats {
 public:
  static inline const char* descriptor = "android.hardware.health.DiskStats";
  int64_t reads = 0;
  int64_t readMerges = 0;
  int64_t readSectors = 0;
  int64_t readTicks = 0;
  int64_t writes = 0;
  int64_t writeMerges = 0;
  int64_t writeSectors = 0;
  int64_t writeTicks = 0;
  int64_t ioInFlight = 0;
  int64_t ioTicks = 0;
  int64_t ioInQueue = 0;

  std::string toString() const;

  // NOLINTNEXTLINE(modernize-use-nullptr): clang-tidy 14 takes the default for a literal 0
  std::partial_ordering operator<=>(const DiskStats& other) const = default;
};

}  // namespace aidl::android::hardware::health
