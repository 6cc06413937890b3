// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Observes the library's waits at the platform's looper, and ends them.
#pragma once

#include <android/sensor.h>

#include <cstdint>
#include <vector>

namespace norvik::qel::bench {

// When a poll of the process last returned.
int64_t LastPollReturnNs();

// The number of polls started so far. A thread that starts its next poll has finished the events of
// the last one.
int64_t PollsBegun();

// Consumes a wake that an earlier user may have left.
void DrainLooper();

// One reading, as the platform delivers it.
std::vector<ASensorEvent> Reading(int32_t type, float value);

}  // namespace norvik::qel::bench
