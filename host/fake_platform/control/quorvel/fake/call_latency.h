// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Simulated latency of calls between processes. Without it a call costs less than on a phone.
#pragma once

#include <chrono>

namespace norvik::qel::fake {

// Sets how long every synchronous call between processes, AIDL or HIDL, busy-waits in its caller
// before it is made; 0 by default. One-way calls, look-ups and calls to an object that is known to
// be dead have no latency. A call that races with a change may use the old latency.
//
// Threads: any.
void SetCallLatency(std::chrono::nanoseconds latency);

// Sets the latency for its own lifetime.
class CallLatency {
 public:
  explicit CallLatency(std::chrono::nanoseconds latency) { SetCallLatency(latency); }
  ~CallLatency() { SetCallLatency({}); }
  CallLatency(const CallLatency&) = delete;
  CallLatency& operator=(const CallLatency&) = delete;
};

}  // namespace norvik::qel::fake
