// Control of the sensor and looper functions: how calls fare, what arrives.
#pragma once

#include <android/sensor.h>

#include <cstddef>
#include <vector>

#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

// For a function that returns a pointer, any outcome but STATUS_OK means null, nothing done. For
// the others a negative status is the result, nothing done, and for registering and disabling a
// positive one is the result of a call that works. Destroying a queue and waking always work; like
// all of them they count their calls and wait at the gate of an outcome.
enum class SensorFunction {
  kGetInstance,  // of the manager
  kGetDefaultSensor,
  kCreateEventQueue,
  kDestroyEventQueue,
  kRegisterSensor,
  kDisableSensor,
  kGetEvents,
  kForThread,
  kPrepare,
  kPollOnce,
  kWake,
  kCount,
};

Script& ScriptOf(SensorFunction function);
// Forgets all outcomes and counts.
void ResetSensorScripts();

// Has the events arrive at every queue of the process, as if its sensors had been enabled; the
// calling thread plays the binder thread that brings what the service sends.
void BringSensorEvents(const std::vector<ASensorEvent>& events);

// How many threads wait in ALooper_pollOnce() now.
int LooperWaiters();

}  // namespace norvik::qel::fake
