// The latency of a call from one process to another: a phone has it, the fake platform does not.
#pragma once

#include <chrono>

namespace norvik::qel::fake {

// How long every synchronous call between processes, AIDL and HIDL, keeps its caller busy before it
// is made; 0 by default. One-way calls, look-ups and calls to an object that is known to be dead
// have no latency. A call may have the latency set a moment before.
//
// Threads: any.
void SetCallLatency(std::chrono::nanoseconds latency);

// Calls have the latency for as long as this lives.
class CallLatency {
 public:
  explicit CallLatency(std::chrono::nanoseconds latency) { SetCallLatency(latency); }
  ~CallLatency() { SetCallLatency({}); }
  CallLatency(const CallLatency&) = delete;
  CallLatency& operator=(const CallLatency&) = delete;
};

}  // namespace norvik::qel::fake
