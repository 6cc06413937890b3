// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What happens, as the lines of a recording.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "recording/recording.h"

namespace norvik::qel::monitor {

// Threads: the main thread.
class RecordingWriter {
 public:
  static std::string Header(std::string_view device, WallTime begin);
  // Nothing for what no recording holds: the report of a sensor that the library has no use for,
  // what a scenario expects.
  [[nodiscard]] std::optional<std::string> Line(const RecordedEvent& event);

 private:
  std::optional<BatteryReport> battery_;  // as it was written last: a line holds what has changed
};

}  // namespace norvik::qel::monitor
