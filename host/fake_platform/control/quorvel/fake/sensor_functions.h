// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of the sensor and looper functions: arriving events, waiting polls.
#pragma once

#include <android/sensor.h>

#include <vector>

namespace norvik::qel::fake {

// Delivers the events to every queue of the process, whether or not their sensors are enabled. The
// calling thread acts as the binder thread that delivers the service's events.
void BringSensorEvents(const std::vector<ASensorEvent>& events);

// The number of threads that are waiting in ALooper_pollOnce().
int LooperWaiters();
// Drops a wake that no poll has reported.
void DropWake();

}  // namespace norvik::qel::fake
