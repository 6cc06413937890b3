// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Whether what is to be played can work.
#pragma once

#include "scenario/play_plan.h"

namespace norvik::qel::monitor {

// Throws std::runtime_error, with the line and the reason, for the first step that cannot be taken
// or the first expectation that could never be met.
void CheckPlan(const Recording& recording, const PlayPlan& plan);

}  // namespace norvik::qel::monitor
