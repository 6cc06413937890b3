// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// The library's waits at the platform's looper, seen from outside, and what it waits for.
#pragma once

#include <android/sensor.h>

#include <cstdint>
#include <vector>

namespace norvik::qel::bench {

// When a poll of the process has returned last.
int64_t LastPollReturnNs();

// How many polls have begun so far. A thread that begins its next one is done with what the last
// one has brought.
int64_t PollsBegun();

// Takes the wake that an earlier user may have left.
void DrainLooper();

// One reading, as it arrives.
std::vector<ASensorEvent> Reading(int32_t type, float value);

}  // namespace norvik::qel::bench
