// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

// Scripts of the platform's own functions: look-ups, death links, sensors and the looper.
#pragma once

#include <memory>

#include "quorvel/fake/script.h"

namespace norvik::qel::fake {

// Look-ups: an outcome other than STATUS_OK means "not declared" or null; getService() returns null
// after its full wait. Links: it is the result, for HIDL false. Such a link call links nothing;
// such an unlink call still ends the link.
enum class BinderFunction {
  kIsDeclared,  // AServiceManager_isDeclared()
  kCheckService,
  kGetService,
  kTryGetHidlService,  // tryGetService() of every HIDL interface
  kGetHidlService,
  kLinkToDeath,  // AIBinder_linkToDeath()
  kUnlinkToDeath,
  kHidlLinkToDeath,  // linkToDeath() of every HIDL proxy
  kHidlUnlinkToDeath,
  kCount,
};

// An outcome means, by kind of function:
//   returns a pointer       not STATUS_OK: null, and nothing is done
//   returns a number        negative: the result, and nothing is done
//   register and disable    also, positive: the result of a call that succeeds
//   destroy queue and wake  the status has no effect
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

// The scripts of all these functions. All objects that exist at the same time share them; they end
// with the last one. While there is none, the functions work normally and no calls are counted.
//
// Threads: any.
class PlatformScripts {
 public:
  PlatformScripts();
  Script& on(BinderFunction function) const { return tables_->binder.on(function); }
  Script& on(SensorFunction function) const { return tables_->sensor.on(function); }

  struct Tables {
    Scripts<BinderFunction> binder;
    Scripts<SensorFunction> sensor;
  };

 private:
  const std::shared_ptr<Tables> tables_;
};

}  // namespace norvik::qel::fake
