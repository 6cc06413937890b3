// SPDX-FileCopyrightText: 2026 The quorvel developers
// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <aidl/android/hardware/health/BnHealthInfoCallback.h>

#include "common/back_pointer.h"

namespace norvik::qel::audio {

class BatteryInfo;

// The callback that a BatteryInfo registers with the health service. The service may keep it longer
// than the BatteryInfo lives; from then on it does nothing.
//
// Threads: reports arrive on binder threads, perhaps before the registration has returned.
// Locks: the back pointer's, then the BatteryInfo's.
class AudioHealthInfoCallback : public aidl::android::hardware::health::BnHealthInfoCallback {
 public:
  ~AudioHealthInfoCallback() override;

  // The receiver of reports; null for none. Waits for a report that is being handled.
  void SetBatteryInfo(BatteryInfo* battery_info);

  ndk::ScopedAStatus healthInfoChanged(
      const aidl::android::hardware::health::HealthInfo& info) override;

 private:
  BackPointer<BatteryInfo> battery_info_;
};

}  // namespace norvik::qel::audio
