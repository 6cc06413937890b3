// What a call from one process to another costs on a device, and does not cost here.
#pragma once

#include <chrono>

namespace norvik::qel::standin {

// How long every synchronous call between processes, AIDL and HIDL, keeps its caller busy before it
// is made; nothing at first. One-way calls, look-ups and calls to an object that is known to be
// dead stay free. A call may be charged what was set a moment before.
//
// Threads: any.
void SetCallCharge(std::chrono::nanoseconds charge);

// Charges calls for as long as it lives; afterwards they are free.
class CallCharge {
 public:
  explicit CallCharge(std::chrono::nanoseconds charge) { SetCallCharge(charge); }
  ~CallCharge() { SetCallCharge({}); }
  CallCharge(const CallCharge&) = delete;
  CallCharge& operator=(const CallCharge&) = delete;
};

}  // namespace norvik::qel::standin
