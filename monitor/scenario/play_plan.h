// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What it takes to play a recording.
#pragma once

#include <vector>

#include "clients/device.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

struct PlayPlan {
  struct Step {
    RecordedEvent event;  // without a line when the recording takes it for granted
    int refusals = 0;     // of registrations that the health service which starts begins with
  };

  Equipment equipment;
  std::vector<Step> steps;
  Seconds length{};  // up to the last line, also when that is not to be played
};

// Services that the recording does not start run from the beginning, and clients that do not join
// in it join when their service starts first. What is at the time 0 has happened before. Throws
// std::runtime_error, with the line, for what cannot work.
PlayPlan MakePlayPlan(const Recording& recording);

}  // namespace norvik::qel::monitor
