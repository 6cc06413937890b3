// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The plan for playing a recording: the phone's equipment and the steps to take.
#pragma once

#include <vector>

#include "clients/device.h"
#include "recording/recording.h"

namespace norvik::qel::monitor {

struct PlayPlan {
  Equipment equipment;
  std::vector<RecordedEvent> steps;  // line 0: implied by the recording
  Seconds length{};                  // up to the last line, even if that is not a step
};

// Services that the recording does not start run from the beginning; reports and joins at time 0
// precede their start. A family without a join in the recording joins when its service first
// starts. Throws std::runtime_error, with the line, for a step that cannot work.
PlayPlan MakePlayPlan(const Recording& recording);

// Throws the same for the first step that cannot be taken, or the first expectation that can never
// be met.
void CheckPlan(const Recording& recording, const PlayPlan& plan);

}  // namespace norvik::qel::monitor
