// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// What it takes to play a recording.
#pragma once

#include <vector>

#include "clients/device.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

struct PlayPlan {
  Equipment equipment;
  std::vector<RecordedEvent> steps;  // without a line what the recording takes for granted
  Seconds length{};                  // up to the last line, also when that is not to be played
};

// Services that the recording does not start run from the beginning, and clients that do not join
// in it join when their service starts first. What is at the time 0 has happened before. Throws
// std::runtime_error, with the line, for what cannot work.
PlayPlan MakePlayPlan(const Recording& recording);

// Throws the same for the first step that cannot be taken or the first expectation that could never
// be met.
void CheckPlan(const Recording& recording, const PlayPlan& plan);

}  // namespace norvik::qel::monitor
