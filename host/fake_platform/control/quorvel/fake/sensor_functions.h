// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Control of the sensor and looper functions: faults of calls, arriving events.
#pragma once

#include <android/sensor.h>

#include <cstddef>
#include <vector>

#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

// The functions that can be scripted. An outcome means, by kind of function:
//   returns a pointer       not STATUS_OK: null, and nothing is done
//   returns a number        negative: the result, and nothing is done
//   register and disable    also, positive: the result of a call that succeeds
//   destroy queue and wake  the status has no effect
// Every function counts its calls and waits at the gate of its outcome.
enum class SensorFunction {
  kGetInstance,  // ASensorManager_getInstance()
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
// Drops all outcomes and resets all counts.
void ResetSensorScripts();

// Delivers the events to every queue of the process, whether or not their sensors are enabled. The
// calling thread acts as the binder thread that delivers the service's events.
void BringSensorEvents(const std::vector<ASensorEvent>& events);

// The number of threads that are waiting in ALooper_pollOnce().
int LooperWaiters();

}  // namespace norvik::qel::fake
